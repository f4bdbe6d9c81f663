#include "platform/station/ExportCloud.h"

#include "platform/station/FileKinds.h"
#include "platform/station/GeometryCache.h"
#include "platform/station/clouds/CloudWriters.h"

#include <fmt/format.h>

namespace vrk::station {

ExportError::ExportError(const std::filesystem::path& file, const std::string& cause)
    : std::runtime_error(fmt::format("{}: {}", file.string(), cause))
{
}

ExportedPoints PointsInWorld(const layout::PointCloud& cloud, const rob::Posed& pose,
                             std::span<const std::uint32_t> numbers)
{
    const auto& points = cloud.getPoints();
    const auto& normals = cloud.getNormals();
    const bool withNormals = cloud.hasNormals();
    const bool withColors = cloud.hasColors();
    const bool isMoved = pose != rob::Posed();
    ExportedPoints gathered;
    gathered.points.reserve(numbers.size());
    if (withNormals)
        gathered.normals.reserve(numbers.size());
    if (withColors)
        gathered.colors.reserve(numbers.size());
    for (const std::uint32_t number : numbers) {
        if (number >= points.size() || !points[number].isFinite())
            continue;
        const rob::Posd point(points[number]);
        gathered.points.push_back(isMoved ? pose * point : point);
        if (withColors)
            gathered.colors.push_back(cloud.getColors()[number]);
        if (withNormals) {
            const rob::Vec3d normal(normals[number]);
            gathered.normals.push_back(isMoved ? rob::Vec3f(pose.rotation() * normal) : normals[number]);
        }
    }
    return gathered;
}

void ExportPointCloud(const std::filesystem::path& file, const ExportedPoints& points)
{
    const std::filesystem::path absolute = std::filesystem::absolute(file).lexically_normal();
    const FileKind kind = fileKindOf(absolute);
    if (kind != FileKind::Ply && kind != FileKind::Xyz)
        throw ExportError(absolute, "not a kind of point cloud that can be written (.ply, .xyz)");
    if (points.points.empty())
        throw ExportError(absolute, "there is no point to write");
    const std::string bytes = kind == FileKind::Ply ? plyOf(points) : xyzOf(points);
    try {
        writeWhole(absolute, bytes);
    } catch (const std::runtime_error&) {
        throw ExportError(absolute, "cannot be written");
    }
}

} // namespace vrk::station
