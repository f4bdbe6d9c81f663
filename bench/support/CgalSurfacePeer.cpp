#include "bench/support/SurfacePeers.h"

#include <CGAL/Exact_predicates_inexact_constructions_kernel.h>
#include <CGAL/Polygon_mesh_processing/remesh.h>
#include <CGAL/Surface_mesh.h>

#include <memory>
#include <vector>

namespace vrk::bench {

SurfaceWork cgalRemesh(const cam::TriangleSurface& surface, double edgeLength, unsigned iterations)
{
    using Kernel = CGAL::Exact_predicates_inexact_constructions_kernel;
    using Mesh = CGAL::Surface_mesh<Kernel::Point_3>;
    const auto mesh = std::make_shared<Mesh>();
    std::vector<Mesh::Vertex_index> numbers;
    for (const rob::Posd& p : surface.vertices)
        numbers.push_back(mesh->add_vertex(Kernel::Point_3(p.x, p.y, p.z)));
    for (const auto& [a, b, c] : surface.triangles)
        mesh->add_face(numbers[a], numbers[b], numbers[c]);
    return [mesh, edgeLength, iterations] {
        CGAL::Polygon_mesh_processing::isotropic_remeshing(
            faces(*mesh), edgeLength, *mesh,
            CGAL::Polygon_mesh_processing::parameters::number_of_iterations(iterations));
        return [mesh] {
            mesh->collect_garbage();
            cam::TriangleSurface result;
            for (const auto vertex : mesh->vertices()) {
                const auto& p = mesh->point(vertex);
                result.vertices.emplace_back(p.x(), p.y(), p.z());
            }
            for (const auto face : mesh->faces()) {
                cam::TriangleSurface::Triangle triangle{};
                std::size_t i = 0;
                for (const auto vertex : mesh->vertices_around_face(mesh->halfedge(face)))
                    triangle[i++] = static_cast<std::uint32_t>(vertex.idx());
                result.triangles.push_back(triangle);
            }
            return result;
        };
    };
}

} // namespace vrk::bench
