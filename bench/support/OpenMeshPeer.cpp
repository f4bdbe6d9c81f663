#include "bench/support/SurfacePeers.h"

#include <OpenMesh/Core/Mesh/TriMesh_ArrayKernelT.hh>
#include <OpenMesh/Tools/Decimater/DecimaterT.hh>
#include <OpenMesh/Tools/Decimater/ModQuadricT.hh>

#include <memory>
#include <vector>

namespace vrk::bench {
namespace {

struct Traits : OpenMesh::DefaultTraits {
    using Point = OpenMesh::Vec3d;
    using Normal = OpenMesh::Vec3d;
};
using Mesh = OpenMesh::TriMesh_ArrayKernelT<Traits>;

} // namespace

SurfaceWork openMeshDecimate(const cam::TriangleSurface& surface, std::size_t triangles)
{
    const auto mesh = std::make_shared<Mesh>();
    // What is gone is known by these, which a decimater takes with it unless they were asked for.
    mesh->request_vertex_status();
    mesh->request_halfedge_status();
    mesh->request_edge_status();
    mesh->request_face_status();
    std::vector<Mesh::VertexHandle> handles;
    for (const rob::Posd& p : surface.vertices)
        handles.push_back(mesh->add_vertex({p.x, p.y, p.z}));
    for (const auto& [a, b, c] : surface.triangles)
        mesh->add_face(handles[a], handles[b], handles[c]);
    return [mesh, triangles] {
        OpenMesh::Decimater::DecimaterT<Mesh> decimater(*mesh);
        OpenMesh::Decimater::ModQuadricT<Mesh>::Handle quadrics;
        decimater.add(quadrics);
        decimater.module(quadrics).unset_max_err();
        decimater.initialize();
        decimater.decimate_to_faces(0, triangles);
        return [mesh] {
            mesh->garbage_collection();
            cam::TriangleSurface result;
            for (const auto vertex : mesh->vertices()) {
                const auto& p = mesh->point(vertex);
                result.vertices.emplace_back(p[0], p[1], p[2]);
            }
            for (const auto face : mesh->faces()) {
                cam::TriangleSurface::Triangle triangle{};
                std::size_t i = 0;
                for (const auto vertex : face.vertices())
                    triangle[i++] = static_cast<std::uint32_t>(vertex.idx());
                result.triangles.push_back(triangle);
            }
            return result;
        };
    };
}

} // namespace vrk::bench
