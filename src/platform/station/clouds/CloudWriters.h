#pragma once

#include "platform/station/ExportCloud.h"

#include <span>
#include <string>

/// The writers of point clouds, into memory. Not installed.
namespace vrk::station {

/// What may stand beside the points of a PLY file.
struct PlyExtras {
    std::string property;                   ///< of the vertices; without a blank, empty for none
    std::span<const float> values = {};     ///< of it, one for each point
    std::span<const unsigned> indices = {}; ///< of triangles, three for each; none without
};

/// Binary, little-endian.
std::string plyOf(const ExportedPoints& points, const PlyExtras& extras = {});
/// A point a line, with its normal where there are any, else with its colour.
std::string xyzOf(const ExportedPoints& points);

} // namespace vrk::station
