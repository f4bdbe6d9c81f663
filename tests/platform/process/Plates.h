#pragma once

#include "scene/math/Vec.h"

#include <vector>

namespace vrk::test {

/// A square plate about the origin that faces up, of `cells` by `cells` squares.
struct Plate {
    Plate(float side, unsigned cells)
    {
        const float step = side / static_cast<float>(cells);
        for (unsigned j = 0; j <= cells; ++j)
            for (unsigned i = 0; i <= cells; ++i) {
                vertices.emplace_back(static_cast<float>(i) * step - side / 2, static_cast<float>(j) * step - side / 2,
                                      0.0f);
                normals.emplace_back(0.0f, 0.0f, 1.0f);
            }
        const unsigned row = cells + 1;
        for (unsigned j = 0; j < cells; ++j)
            for (unsigned i = 0; i < cells; ++i) {
                const unsigned a = j * row + i;
                indices.insert(indices.end(), {a, a + 1, a + row + 1, a, a + row + 1, a + row});
            }
    }

    std::vector<rob::Posf> vertices;
    std::vector<rob::Vec3f> normals;
    std::vector<unsigned> indices;
};

} // namespace vrk::test
