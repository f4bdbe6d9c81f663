#include "bench/support/SurfacePeers.h"

#include <meshoptimizer.h>

#include <limits>
#include <memory>
#include <vector>

namespace vrk::bench {

SurfaceWork meshoptimizerDecimate(const cam::TriangleSurface& surface, std::size_t triangles)
{
    struct Mesh {
        std::vector<float> places;
        std::vector<unsigned> indices, result;
    };
    const auto mesh = std::make_shared<Mesh>();
    for (const rob::Posd& p : surface.vertices)
        for (const double part : {p.x, p.y, p.z})
            mesh->places.push_back(static_cast<float>(part));
    for (const auto& triangle : surface.triangles)
        mesh->indices.insert(mesh->indices.end(), triangle.begin(), triangle.end());
    mesh->result.resize(mesh->indices.size());
    return [mesh, triangles] {
        mesh->result.resize(meshopt_simplify(mesh->result.data(), mesh->indices.data(), mesh->indices.size(),
                                             mesh->places.data(), mesh->places.size() / 3, 3 * sizeof(float),
                                             3 * triangles, std::numeric_limits<float>::max(), 0, nullptr));
        return [mesh] {
            cam::TriangleSurface result;
            for (std::size_t i = 0; i < mesh->places.size(); i += 3)
                result.vertices.emplace_back(mesh->places[i], mesh->places[i + 1], mesh->places[i + 2]);
            for (std::size_t i = 0; i < mesh->result.size(); i += 3)
                result.triangles.push_back({mesh->result[i], mesh->result[i + 1], mesh->result[i + 2]});
            return result;
        };
    };
}

} // namespace vrk::bench
