#include "platform/station/FileKinds.h"
#include "platform/station/GeometryCache.h"
#include "platform/station/clouds/PlyMesh.h"
#include "platform/station/import/CadChild.h"
#include "platform/station/import/ImportFormats.h"
#include "platform/station/import/StlFile.h"

#include "platform/common/Logger.h"
#include "platform/layout/Body.h"
#include "platform/layout/Part.h"
#include "platform/sdf/SdfManager.h"

#include <fmt/format.h>

#include <fstream>

namespace vrk::station {
namespace {

std::string keyOf(const std::filesystem::path& file, LengthUnit unit)
{
    return unit == LengthUnit::Millimetre ? GeometryCache::KeyOf(file)
                                          : fmt::format("{}|{}", GeometryCache::KeyOf(file), NameOf(unit));
}

/// The file that the view reads in place of `file`: it takes binary files and ascii ones in small letters, under the two
/// endings, and draws by the normals of the file.
std::filesystem::path readableStl(const std::filesystem::path& file, const Progress& progress, LengthUnit unit)
{
    const bool isReadable = checkStl(file);
    const std::string ending = file.extension().string();
    if (isReadable && unit == LengthUnit::Millimetre && (ending == ".stl" || ending == ".STL"))
        return file;
    report(progress, "converting", 0.25);
    if (!isReadable)
        FileLogger::inst()->trace(
            fmt::format("{}: the view does not read this form of STL; it shows a copy", file.string()));
    return GeometryCache::Get(file.stem().string(), keyOf(file, unit), ".stl", [&] {
        std::vector<StlFacet> facets = readStlFacets(file);
        const auto scale = static_cast<float>(MillimetresIn(unit));
        for (StlFacet& facet : facets)
            for (float& coordinate : facet.corners)
                coordinate *= scale;
        return binaryStl(facets);
    });
}

/// Told of what had to be left out.
PlyTriangles readPlyMesh(const std::filesystem::path& file, const Progress& progress, LengthUnit unit)
{
    try {
        PlyTriangles read = parsePlyMesh(readWhole(file), progress, MillimetresIn(unit));
        if (read.mesh.indices.empty())
            throw ImportError(file, "the file holds no triangle");
        if (read.leftOut > 0)
            AppLogger::inst()->warn(
                fmt::format("{}: {} of {} triangles have a corner that is nowhere and were left out", file.string(),
                            read.leftOut, read.leftOut + read.mesh.indices.size() / 3));
        return read;
    } catch (const CloudFault& fault) {
        throw ImportError(file, fault.what());
    }
}

/// Of the kinds that a package reads, which a damaged file may take down: in the program that reads CAD files.
PlyTriangles readSceneMesh(const std::filesystem::path& file, const Progress& progress, LengthUnit unit)
{
    PlyTriangles read = readTriangles(file, progress);
    if (hasUnitOfItsOwn(fileKindOf(file)))
        return read;
    const double scale = MillimetresIn(unit);
    for (rob::Posf& point : read.mesh.points)
        point = rob::Posf(rob::Posd(point.x * scale, point.y * scale, point.z * scale));
    read.origin = {read.origin.x * scale, read.origin.y * scale, read.origin.z * scale};
    return read;
}

/// The one part of a file, with one body, as it is called.
Parts partOf(const std::filesystem::path& file)
{
    const std::string name = file.stem().string();
    auto part = std::make_shared<layout::Part>(sdf::SdfManager::inst().generateId(), name);
    part->addBody(name);
    return {part};
}

} // namespace

bool isMeshFile(const std::filesystem::path& file)
{
    const FileKind kind = fileKindOf(file);
    if (kind != FileKind::Ply)
        return isMeshKind(kind);
    constexpr std::size_t longestHeader = 1 << 16;
    std::error_code error;
    if (!std::filesystem::is_regular_file(file, error)) // to open a pipe would wait for its writer
        return false;
    std::string bytes(longestHeader, '\0');
    std::ifstream stream(file, std::ios::binary);
    stream.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    bytes.resize(static_cast<std::size_t>(stream.gcount()));
    return holdsFaces(bytes);
}

Parts readStl(const std::filesystem::path& file, const Progress& progress, LengthUnit unit)
{
    report(progress, "reading", 0);
    const std::filesystem::path readable = readableStl(file, progress, unit);
    const Parts parts = partOf(file);
    layout::Body& body = *parts.front()->getBodies().front();
    body.setGeometry(readable.string(), "stl");
    if (unit != LengthUnit::Millimetre)
        body.setSource(file.string(), unit);
    return parts;
}

Parts readMesh(const std::filesystem::path& file, const Progress& progress, LengthUnit unit)
{
    report(progress, "reading", 0);
    const PlyTriangles read =
        fileKindOf(file) == FileKind::Ply ? readPlyMesh(file, progress, unit) : readSceneMesh(file, progress, unit);
    const std::filesystem::path readable = GeometryCache::Get(file.stem().string(), keyOf(file, unit) + "|mesh", ".ply",
                                                              [&read] { return plyOf(read.mesh); });
    const Parts parts = partOf(file);
    parts.front()->setPose(rob::Posed(read.origin));
    layout::Body& body = *parts.front()->getBodies().front();
    body.setGeometry(readable.string(), "mesh");
    body.setSource(file.string(), unit);
    if (!read.mesh.colors.empty())
        body.setMaterialName("Body"); // it takes the colours of the points
    return parts;
}

} // namespace vrk::station
