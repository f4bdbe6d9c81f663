// Between our meshes and those of the operations on machined surfaces: made coarser, made even for paint, and shown.

#include "mesh/MeshManager.h"
#include "mesh/paint/PaintSkin.h"
#include "platform/cam/GeodesicMeshUtils.h"
#include "platform/cam/MeshDecimator.h"
#include "platform/cam/TMesh.h"
#include "platform/cam/Tolerance.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace vrk::visual {
namespace {

using CamMesh = cadcam::TMesh<double>;
using Point = CamMesh::Point;
using Triangle = CamMesh::Triangle;

rob::Posf toPosf(const Point& p)
{
    return {static_cast<float>(p.x), static_cast<float>(p.y), static_cast<float>(p.z)};
}

rob::Vec3d toVec(const Point& p)
{
    return {p.x, p.y, p.z};
}

std::vector<rob::Posf> verticesOf(const CamMesh& mesh)
{
    std::vector<rob::Posf> vertices;
    vertices.reserve(mesh.vertices()->size());
    for (const Point& p : *mesh.vertices())
        vertices.push_back(toPosf(p));
    return vertices;
}

std::vector<unsigned> indicesOf(const CamMesh& mesh)
{
    std::vector<unsigned> indices;
    indices.reserve(3 * mesh.triangles()->size());
    for (const Triangle& triangle : *mesh.triangles())
        indices.insert(indices.end(), triangle.vertices.begin(), triangle.vertices.end());
    return indices;
}

double greatestExtent(const Box& box)
{
    return std::max({box.getExtent(0), box.getExtent(1), box.getExtent(2)});
}

/// Unnormalised; that of a triangle with an index past the vertices stays as it is.
void computeTriangleNormals(CamMesh& mesh)
{
    const std::vector<Point>& points = *mesh.vertices();
    for (Triangle& triangle : *mesh.triangles()) {
        const auto [i, j, k] = triangle.vertices;
        if (std::max({i, j, k}) >= points.size())
            continue;
        const rob::Vec3d a = toVec(points[i]), b = toVec(points[j]), c = toVec(points[k]);
        const rob::Vec3d normal = (c - b).cross(a - b);
        triangle.normal = {normal.x, normal.y, normal.z};
    }
}

} // namespace

cadcam::TMesh<double> MeshManager::toCadcamMesh(const Mesh& mesh)
{
    std::vector<Point> vertices;
    vertices.reserve(mesh.vertices.size());
    for (const rob::Posf& p : mesh.vertices)
        vertices.push_back({p.x, p.y, p.z});
    std::vector<Triangle> triangles(mesh.indices.size() / 3);
    for (std::size_t i = 0; i < triangles.size(); ++i) {
        std::copy_n(mesh.indices.begin() + static_cast<std::ptrdiff_t>(3 * i), 3, triangles[i].vertices.begin());
        triangles[i].normal = {0, 0, 1};
    }
    return {std::move(vertices), std::move(triangles)};
}

bool MeshManager::simplifyMesh(const Mesh& mesh, std::vector<rob::PosTemplate<float>>& vertices,
                               std::vector<unsigned>& indices)
{
    const std::size_t count = mesh.indices.size() / 3;
    if (count < cam::fewestToSimplify)
        return false;
    const CamMesh source = toCadcamMesh(mesh);
    Box bounds; // the mesh keeps its own from the first time on, and this one is not to be changed
    for (const rob::Posf& vertex : mesh.vertices)
        bounds.addPoint(vertex);
    if (!bounds.isValid())
        return false;
    const double tolerance = cam::usualTolerance(greatestExtent(bounds));
    const CamMesh simple = OpenMeshUtils::MeshDecimator::DecimateMesh<double>(source, tolerance, true);
    constexpr std::size_t fewestVertices = 4;
    const std::size_t left = simple.triangles()->size();
    if (simple.vertices()->size() < fewestVertices || left == 0 || left >= count)
        return false;
    vertices = verticesOf(simple);
    indices = indicesOf(simple);
    return true;
}

Mesh* MeshManager::loadCamMesh(cadcam::TMesh<double>* mesh)
{
    // The first upload of a name wins: there is one such mesh at a time, by its name.
    auto made = std::make_unique<Mesh>("__UNIQUE_PREVIEW_CAM_MESH__");
    made->vertices = verticesOf(*mesh);
    made->indices = indicesOf(*mesh);
    if (mesh->normals()->size() == mesh->vertices()->size())
        for (const Point& normal : *mesh->normals())
            made->normals.emplace_back(toPosf(normal));
    loadToGpu(made.get());
    return made.release();
}

PaintMesh* MeshManager::createPaintMeshFromMesh(Mesh* mesh)
{
    const auto source = std::make_shared<CamMesh>(toCadcamMesh(*mesh));
    computeTriangleNormals(*source);
    std::shared_ptr<CamMesh> even;
    camcore::GeodesicMeshUtils::RemeshByEdgeLength(paintEdgeLength(greatestExtent(mesh->getBounds())), source, even);
    return makePaintSkin(mesh->name + "_paint", *even).release();
}

} // namespace vrk::visual
