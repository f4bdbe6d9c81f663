#include "platform/station/SmoothMeshes.h"

#include "platform/geometry/TriangleMesh.h"
#include "platform/geometry/WeldPoints.h"
#include "platform/layout/Body.h"
#include "platform/layout/Part.h"
#include "platform/station/FileKinds.h"
#include "platform/station/GeometryCache.h"
#include "platform/station/clouds/PlyMesh.h"
#include "platform/station/import/ImportFormats.h"
#include "platform/station/import/StlFile.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <numbers>
#include <stdexcept>

namespace vrk::station {
namespace {

/// What several triangles share is one point again, and what is not finite is left out with its triangles.
void weld(geometry::TriangleMesh& mesh)
{
    geometry::WeldedPoints welded = geometry::weldPoints(mesh.points, 0);
    std::size_t kept = 0;
    for (std::size_t i = 0; i + 2 < mesh.indices.size(); i += 3) {
        const auto numberOf = [&](std::size_t corner) { return welded.numbers[mesh.indices[i + corner]]; };
        const std::array numbers{numberOf(0), numberOf(1), numberOf(2)};
        if (std::ranges::find(numbers, geometry::WeldedPoints::none) != numbers.end())
            continue;
        for (const unsigned number : numbers)
            mesh.indices[kept++] = number;
    }
    mesh.indices.resize(kept);
    mesh.points = std::move(welded.points);
}

geometry::TriangleMesh readStlMesh(const std::filesystem::path& file)
{
    geometry::TriangleMesh mesh;
    for (const StlFacet& facet : readStlFacets(file))
        for (std::size_t i = 0; i < facet.corners.size(); i += 3) {
            mesh.indices.push_back(static_cast<unsigned>(mesh.points.size()));
            mesh.points.emplace_back(facet.corners[i], facet.corners[i + 1], facet.corners[i + 2]);
        }
    return mesh;
}

geometry::TriangleMesh readMeshOf(const std::filesystem::path& file, const Progress& progress)
{
    if (fileKindOf(file) != FileKind::Ply)
        return readStlMesh(file);
    try {
        return parsePlyMesh(readWhole(file), progress).mesh;
    } catch (const CloudFault& fault) {
        throw ImportError(file, fault.what());
    }
}

} // namespace

std::filesystem::path SmoothMeshFile(const std::filesystem::path& file, double angle, const Progress& progress)
{
    if (!(angle >= 0 && angle <= std::numbers::pi))
        throw std::invalid_argument("an angle of smoothing is one from 0 to pi");
    checkReadable(file);
    report(progress, "reading", 0);
    const std::string key = fmt::format("{}|smooth|{:.17g}", GeometryCache::KeyOf(file), angle);
    return GeometryCache::Get(file.stem().string(), key, ".ply", [&] {
        geometry::TriangleMesh mesh = readMeshOf(file, progress);
        mesh.normals.clear();
        if (mesh.colors.empty()) // else points of one place may differ
            weld(mesh);
        report(progress, "smoothing", 0.5);
        geometry::addCreaseNormals(mesh, angle);
        // Where a point has none a reader takes none of the file.
        for (rob::Vec3f& normal : mesh.normals)
            if (normal.squaredLength() == 0)
                normal = {0, 0, 1};
        return plyOf(mesh);
    });
}

void SmoothMeshes(const Parts& parts, double angle, const Progress& progress)
{
    for (const std::shared_ptr<layout::Part>& part : parts)
        for (const std::shared_ptr<layout::Body>& body : part->getBodies())
            if (body->isMesh())
                body->setGeometry(SmoothMeshFile(body->getGeometryUri(), angle, progress).string(), "mesh");
}

} // namespace vrk::station
