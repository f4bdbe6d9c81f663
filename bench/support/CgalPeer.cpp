#include "bench/support/CgalPeer.h"

#include <CGAL/AABB_traits.h>
#include <CGAL/AABB_tree.h>
#include <CGAL/AABB_triangle_primitive.h>
#include <CGAL/Simple_cartesian.h>

#include <vector>

namespace vrk::bench {

using Kernel = CGAL::Simple_cartesian<double>;
using Triangles = std::vector<Kernel::Triangle_3>;
using Primitive = CGAL::AABB_triangle_primitive<Kernel, Triangles::const_iterator>;

struct CgalTree::Tree {
    Triangles triangles;
    CGAL::AABB_tree<CGAL::AABB_traits<Kernel, Primitive>> hierarchy;
};

CgalTree::CgalTree(std::span<const rob::Posf> vertices, std::span<const unsigned> indices)
    : tree(std::make_unique<Tree>())
{
    const auto corner = [&](std::size_t at) {
        const rob::Posf& p = vertices[indices[at]];
        return Kernel::Point_3(p.x, p.y, p.z);
    };
    tree->triangles.reserve(indices.size() / 3);
    for (std::size_t i = 0; i < indices.size(); i += 3)
        tree->triangles.emplace_back(corner(i), corner(i + 1), corner(i + 2));
    tree->hierarchy.insert(tree->triangles.cbegin(), tree->triangles.cend());
    tree->hierarchy.build();
}

CgalTree::~CgalTree() = default;

std::size_t CgalTree::nearest(const visual::Ray& ray) const
{
    const Kernel::Ray_3 query(Kernel::Point_3(ray.origin.x, ray.origin.y, ray.origin.z),
                              Kernel::Vector_3(ray.direction.x, ray.direction.y, ray.direction.z));
    const auto found = tree->hierarchy.first_intersected_primitive(query);
    return found ? static_cast<std::size_t>(*found - tree->triangles.cbegin()) : none;
}

} // namespace vrk::bench
