#pragma once

#include "platform/station/ExportCloud.h"

#include <string>

/// The writers of point clouds, into memory. Not installed.
namespace vrk::station {

/// Binary, little-endian.
std::string plyOf(const ExportedPoints& points);
/// A point a line, with its normal where there are any.
std::string xyzOf(const ExportedPoints& points);

} // namespace vrk::station
