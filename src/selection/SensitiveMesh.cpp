#include "selection/SensitiveMesh.h"

#include "mesh/Mesh.h"
#include "platform/common/ParallelFor.h"

namespace vrk::selection {

SensitiveMesh::SensitiveMesh(visual::Mesh* mesh, visual::Visual* visual, const rob::PoseTemplate<float>& pose)
    : mesh(mesh), visual(visual)
{
    takePose(pose);
    if (const Box& bounds = mesh->getBounds(); bounds.isValid()) // one of no vertices would come out boundless
        box = bounds.transformed(pose);
    const std::size_t count = mesh->indices.size() / 3;
    SensitiveIndexedTriangle* const triangles = makeTriangles(count);
    parallelFor(count, [&](std::size_t begin, std::size_t end) {
        for (std::size_t i = begin; i < end; ++i) {
            SensitiveIndexedTriangle& triangle = triangles[i];
            triangle.index = static_cast<unsigned>(i);
            for (std::size_t k = 0; k < 3; ++k)
                triangle.box.addPoint(corner(3 * i + k));
            triangle.box.expand();
            triangle.box.updateCenter();
        }
    });
    buildHierarchy();
}

rob::PosTemplate<float> SensitiveMesh::corner(std::size_t at) const
{
    return mesh->vertices[mesh->indices[at]];
}

void SensitiveMesh::getTriangle(rob::TriangleTemplate<float>& triangle, const SensitiveIndexedTriangle& primitive) const
{
    getTriangles(&triangle, &primitive.index, 1);
}

void SensitiveMesh::getTriangles(rob::TriangleTemplate<float>* triangles, const unsigned* indices, unsigned count) const
{
    const rob::PosTemplate<float>* const vertices = mesh->vertices.data();
    for (unsigned i = 0; i < count; ++i) {
        const unsigned* const corners = mesh->indices.data() + 3 * static_cast<std::size_t>(indices[i]);
        triangles[i].a = vertices[corners[2]];
        triangles[i].b = vertices[corners[1]];
        triangles[i].c = vertices[corners[0]];
    }
}

// The set's queries have mapped the position through the pose already, and here it goes through once more. It does no
// harm: the only pose that is ever passed in is the identity.

void SensitiveMesh::intersectLine(Result& result, const rob::LineTemplate<float>& line) const
{
    nearestOfLine(result, line.transformed(inversePose));
    if (result.hit)
        result.position = pose * result.position;
}

void SensitiveMesh::intersectTriangle(Result& result, const rob::TriangleTemplate<float>& triangle) const
{
    anyOfTriangle(result, triangle.transformed(inversePose));
    if (result.hit)
        result.position = pose * result.position;
}

void SensitiveMesh::intersectRay(Result& result, const visual::Ray& ray) const
{
    nearestOfRay(result, ray.transformed(inversePose));
    if (!result.hit)
        return;
    result.position = pose * result.position;
    result.visual = visual;
}

void SensitiveMesh::forEachInBox(const visual::Box& question, std::function<void(unsigned)> callback) const
{
    std::vector<BVHPrimitive*> found;
    queryBox(question.transformed(inversePose), found);
    parallelFor(found.size(), [&](std::size_t begin, std::size_t end) {
        for (std::size_t i = begin; i < end; ++i)
            callback(static_cast<const SensitiveIndexedTriangle*>(found[i])->index);
    });
}

} // namespace vrk::selection
