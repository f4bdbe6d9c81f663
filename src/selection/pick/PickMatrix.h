#pragma once

#include "scene/math/Vec.h"

#include <array>
#include <optional>

namespace vrk::selection {

/// A place in the cube of a camera before the division: what lies before the near plane has z + w < 0.
struct ClipPoint {
    double x, y, z, w;

    double beyondNear() const { return z + w; }
    ClipPoint towards(const ClipPoint& o, double part) const
    {
        return {x + (o.x - x) * part, y + (o.y - y) * part, z + (o.z - z) * part, w + (o.w - w) * part};
    }
};

/// Four rows of four numbers, applied to columns.
using PickMatrix = std::array<double, 16>;

PickMatrix product(const PickMatrix& a, const PickMatrix& b);
/// Empty for one that has no inverse, or numbers that are not finite.
std::optional<PickMatrix> inverseOf(const PickMatrix& m);

inline ClipPoint applied(const PickMatrix& m, const rob::Posd& p)
{
    return {m[0] * p.x + m[1] * p.y + m[2] * p.z + m[3], m[4] * p.x + m[5] * p.y + m[6] * p.z + m[7],
            m[8] * p.x + m[9] * p.y + m[10] * p.z + m[11], m[12] * p.x + m[13] * p.y + m[14] * p.z + m[15]};
}

} // namespace vrk::selection
