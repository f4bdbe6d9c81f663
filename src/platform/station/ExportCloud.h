#pragma once

#include "platform/common/Export.h"
#include "platform/layout/PointCloud.h"

#include <filesystem>
#include <span>
#include <stdexcept>

namespace vrk::station {

/// A file of points that cannot be written. The text is one line that names the file and the cause.
class VRK_EXPORT ExportError : public std::runtime_error {
public:
    ExportError(const std::filesystem::path& file, const std::string& cause);
};

/// Points to be written, relative to whatever their reader is to take for the origin.
struct ExportedPoints {
    std::vector<rob::Posd> points;
    layout::PointCloud::Normals normals{}; ///< one for each point, or none at all
    layout::PointCloud::Colors colors{};   ///< one for each point, or none at all
};

/// Gathers points of a cloud as they lie in the world; those that are not finite are left out.
/// @param pose     of the cloud in the world.
/// @param numbers  of points of the cloud.
VRK_EXPORT ExportedPoints PointsInWorld(const layout::PointCloud& cloud, const rob::Posed& pose,
                                        std::span<const std::uint32_t> numbers);

/// Writes a PLY (binary, little-endian) or XYZ (text) file, by the name's ending in any case; a file of that name is
/// replaced as a whole or not at all. Any thread.
///
/// No digit is lost: numbers that single precision holds are written in it, else in double precision, all alike. Read
/// with `ImportPointCloud` the points are the same, but that this keeps those far out relative to a place near them. XYZ
/// tells normals from colours by their length of 1, and is written without colours where there are normals.
///
/// @throws ExportError  nothing is replaced then.
VRK_EXPORT void ExportPointCloud(const std::filesystem::path& file, const ExportedPoints& points);

} // namespace vrk::station
