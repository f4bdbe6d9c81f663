#include "mesh/paint/PaintSkin.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace vrk::visual {

double paintEdgeLength(double extent)
{
    constexpr double edgesAlongBody = 50;
    constexpr double shortest = 2; // model units
    constexpr double longest = 10;
    return std::min(std::max(shortest, extent / edgesAlongBody), longest);
}

std::unique_ptr<PaintMesh> makePaintSkin(std::string name, const cadcam::TMesh<double>& even)
{
    struct Sum {
        rob::Vec3d normal;
        std::size_t count = 0;
    };
    std::vector<Sum> sums(even.vertices()->size());
    auto skin = std::make_unique<PaintMesh>(std::move(name));
    skin->indices.reserve(3 * even.triangles()->size());
    for (const auto& triangle : *even.triangles())
        for (const unsigned vertex : triangle.vertices) {
            Sum& sum = sums.at(vertex);
            sum.normal += rob::Vec3d(triangle.normal.x, triangle.normal.y, triangle.normal.z);
            ++sum.count;
            skin->indices.push_back(vertex);
        }
    skin->vertices.reserve(sums.size());
    skin->normals.reserve(sums.size());
    skin->colorTable.reserve(sums.size());
    for (const auto& p : *even.vertices())
        skin->vertices.emplace_back(static_cast<float>(p.x), static_cast<float>(p.y), static_cast<float>(p.z));
    for (const Sum& sum : sums) {
        rob::Vec3d normal(0, 0, 1); // of a vertex of no triangle
        if (sum.count > 0) {
            normal = sum.normal / static_cast<double>(sum.count);
            if (const double length = normal.length(); length > 0)
                normal = normal / length;
        }
        skin->normals.emplace_back(static_cast<float>(normal.x), static_cast<float>(normal.y),
                                   static_cast<float>(normal.z));
        skin->addColor(0, 0, 1);
    }
    return skin;
}

} // namespace vrk::visual
