#pragma once

#include "scene/math/Vec.h"
#include "selection/geometry/Ray.h"

#include <cstddef>
#include <memory>
#include <span>

namespace vrk::bench {

/// CGAL's AABB tree over triangles, in double precision.
class CgalTree {
public:
    static constexpr std::size_t none = static_cast<std::size_t>(-1);

    CgalTree(std::span<const rob::Posf> vertices, std::span<const unsigned> indices);
    ~CgalTree();

    /// The number of the nearest triangle, or `none`.
    std::size_t nearest(const visual::Ray& ray) const;

private:
    struct Tree;
    std::unique_ptr<Tree> tree;
};

} // namespace vrk::bench
