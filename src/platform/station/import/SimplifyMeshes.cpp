#include "platform/station/SimplifyMeshes.h"

#include "platform/cam/Simplify.h"
#include "platform/cam/Tolerance.h"
#include "platform/common/Logger.h"
#include "platform/layout/Body.h"
#include "platform/layout/Part.h"
#include "platform/station/GeometryCache.h"
#include "platform/station/import/ImportFormats.h"
#include "platform/station/import/StlFile.h"

#include <fmt/format.h>

#include <algorithm>
#include <stdexcept>

namespace vrk::station {
namespace {

using cam::TriangleSurface;

TriangleSurface surfaceOf(const std::vector<StlFacet>& facets)
{
    TriangleSurface soup;
    soup.vertices.reserve(3 * facets.size());
    soup.triangles.reserve(facets.size());
    for (const StlFacet& facet : facets) {
        const auto first = static_cast<std::uint32_t>(soup.vertices.size());
        for (std::size_t i = 0; i < facet.corners.size(); i += 3)
            soup.vertices.emplace_back(facet.corners[i], facet.corners[i + 1], facet.corners[i + 2]);
        soup.triangles.push_back({first, first + 1, first + 2});
    }
    return cam::weld(soup);
}

std::vector<StlFacet> facetsOf(const TriangleSurface& surface)
{
    std::vector<StlFacet> facets(surface.triangles.size());
    for (std::size_t t = 0; t < facets.size(); ++t) {
        for (std::size_t i = 0; i < 3; ++i) {
            const rob::Posd& corner = surface.vertices[surface.triangles[t][i]];
            facets[t].corners[3 * i] = static_cast<float>(corner.x);
            facets[t].corners[3 * i + 1] = static_cast<float>(corner.y);
            facets[t].corners[3 * i + 2] = static_cast<float>(corner.z);
        }
        facets[t].computeNormal();
    }
    return facets;
}

double greatestExtent(const TriangleSurface& surface)
{
    if (surface.vertices.empty())
        return 0;
    rob::Posd low = surface.vertices.front(), high = low;
    for (const rob::Posd& place : surface.vertices) {
        low = {std::min(low.x, place.x), std::min(low.y, place.y), std::min(low.z, place.z)};
        high = {std::max(high.x, place.x), std::max(high.y, place.y), std::max(high.z, place.z)};
    }
    return std::max({high.x - low.x, high.y - low.y, high.z - low.z});
}

void checkTolerance(std::optional<double> tolerance)
{
    if (tolerance && !(*tolerance >= 0))
        throw std::invalid_argument("a tolerance is 0 or more");
}

} // namespace

std::vector<SimplifiedMesh> SimplifyMeshes(const Parts& parts, std::optional<double> tolerance,
                                           const Progress& progress)
{
    checkTolerance(tolerance);
    std::vector<SimplifiedMesh> told;
    for (const std::shared_ptr<layout::Part>& part : parts)
        for (const std::shared_ptr<layout::Body>& body : part->getBodies()) {
            if (body->getFileType() != "stl")
                continue;
            const CoarserMesh coarser = SimplifyMeshFile(body->getGeometryUri(), tolerance, progress);
            if (coarser.after < coarser.before)
                body->setGeometry(coarser.file.string(), "stl");
            told.push_back({body->getName(), coarser.before, coarser.after, coarser.tolerance});
        }
    return told;
}

CoarserMesh SimplifyMeshFile(const std::filesystem::path& file, std::optional<double> wanted, const Progress& progress)
{
    checkTolerance(wanted);
    checkReadable(file);
    report(progress, "reading", 0);
    const std::vector<StlFacet> facets = readStlFacets(file);
    CoarserMesh found{file, facets.size(), facets.size(), wanted.value_or(0)};
    if (facets.size() < cam::fewestToSimplify)
        return found;
    const TriangleSurface surface = surfaceOf(facets);
    found.tolerance = wanted.value_or(cam::usualTolerance(greatestExtent(surface)));

    // The file is there already where this was asked for before; its triangles are counted then.
    const std::string key = fmt::format("{}|simplified|{:.17g}", GeometryCache::KeyOf(file), found.tolerance);
    const std::filesystem::path simple = GeometryCache::Get(file.stem().string(), key, ".stl", [&] {
        cam::SimplifyOptions options;
        options.tolerance = found.tolerance;
        options.progress = [&progress](double fraction) { report(progress, "simplifying", fraction); };
        return binaryStl(facetsOf(cam::simplify(surface, options).value()));
    });
    const std::size_t left = (std::filesystem::file_size(simple) - geometry::stlHeaderSize) / geometry::stlRecordSize;
    if (left == 0 || left >= facets.size())
        return found;
    found.file = simple;
    found.after = left;
    FileLogger::inst()->trace(
        fmt::format("{}: {} triangles made {} within {:g}", file.string(), found.before, left, found.tolerance));
    return found;
}

} // namespace vrk::station
