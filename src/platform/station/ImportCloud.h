#pragma once

#include "platform/geometry/LengthUnit.h"
#include "platform/station/Import.h"

namespace vrk::layout {
class PointCloud;
}

namespace vrk::station {

/// Whether the file's ending is that of a point cloud: .ply, .pcd or .xyz, in any case.
VRK_EXPORT bool isPointCloudFile(const std::filesystem::path& file);

/// Reads a PLY, PCD or XYZ file. Any thread.
///
/// Normals and colours are kept where the file has all three of each; whatever else it holds is passed over, the faces of a
/// PLY file too. Points that are not finite are dropped, and `AppLogger` is told how many. These formats carry no unit. Where they lie too far out for single precision, as surveyed ones do,
/// the points are relative to a place near them, which is the cloud's pose.
///
/// The cloud is complete but not yet in the station.
///
/// @param unit  of the file's numbers.
/// @throws ImportError  naming the line, or in binary data the byte.
VRK_EXPORT std::shared_ptr<layout::PointCloud> ImportPointCloud(const std::filesystem::path& file,
                                                                const Progress& progress = {},
                                                                LengthUnit unit = LengthUnit::Millimetre);

} // namespace vrk::station
