#include "platform/process/ThicknessMap.h"

#include "platform/station/FileKinds.h"
#include "platform/station/GeometryCache.h"
#include "platform/station/clouds/CloudFormats.h"
#include "platform/station/clouds/CloudWriters.h"
#include "platform/station/import/ImportFormats.h"

#include <fmt/format.h>

#include <cmath>
#include <utility>

namespace vrk::process {
namespace {

constexpr const char* property = "thickness";

std::filesystem::path absoluteOf(const std::filesystem::path& file)
{
    return std::filesystem::absolute(file).lexically_normal();
}

station::Cloud read(const std::filesystem::path& file)
{
    try {
        return station::parsePlyWithValues(station::readWhole(file), property);
    } catch (const station::ImportError&) {
        throw ThicknessMapError(file, "cannot be read");
    } catch (const station::CloudFault& fault) {
        throw ThicknessMapError(file, fault.what());
    }
}

} // namespace

ThicknessMapError::ThicknessMapError(const std::filesystem::path& file, const std::string& cause)
    : std::runtime_error(fmt::format("{}: {}", file.string(), cause))
{
}

void saveThicknessMap(const std::filesystem::path& file, const ThicknessMap& map)
{
    const std::filesystem::path absolute = absoluteOf(file);
    if (station::fileKindOf(absolute) != station::FileKind::Ply)
        throw ThicknessMapError(absolute, "not a kind of map that can be written (.ply)");
    if (map.vertices.empty() || map.thickness.size() != map.vertices.size())
        throw ThicknessMapError(absolute, "there is no thickness to write");
    station::ExportedPoints points;
    points.points.reserve(map.vertices.size());
    for (const rob::Posf& vertex : map.vertices)
        points.points.emplace_back(vertex);
    try {
        station::writeWhole(absolute, station::plyOf(points, {property, map.thickness, map.indices}));
    } catch (const std::runtime_error&) {
        throw ThicknessMapError(absolute, "cannot be written");
    }
}

std::vector<float> loadThicknessMap(const std::filesystem::path& file, const std::vector<rob::Posf>& vertices,
                                    float tolerance)
{
    const std::filesystem::path absolute = absoluteOf(file);
    station::Cloud cloud = read(absolute);
    if (cloud.points.size() != vertices.size())
        throw ThicknessMapError(absolute, fmt::format("a map of {} vertices, and the body's skin has {}",
                                                      cloud.points.size(), vertices.size()));
    for (std::size_t i = 0; i < vertices.size(); ++i) {
        const rob::Posd place = rob::Posd(cloud.points[i]) + rob::Vec3d(cloud.origin);
        if (!((place - rob::Posd(vertices[i])).length() <= tolerance))
            throw ThicknessMapError(absolute, fmt::format("a map of another body: vertex {} lies elsewhere", i + 1));
        if (!(cloud.values[i] >= 0) || !std::isfinite(cloud.values[i]))
            throw ThicknessMapError(absolute, fmt::format("vertex {}: {} is no thickness", i + 1, cloud.values[i]));
    }
    return std::move(cloud.values);
}

} // namespace vrk::process
