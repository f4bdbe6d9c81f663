#pragma once

#include "platform/layout/Layout.h"
#include "platform/station/file/StationGeometry.h"

/// The two directions of a station file, without the file. Not installed.
namespace vrk::station {

/// @param file  the one that the text is of: for failures, and to find geometry from.
/// @throws StationFileError
VRK_EXPORT layout::StationContent parseStation(const std::string& text, const std::filesystem::path& file,
                                               GeometryUse use, const Progress& progress = {});

/// The text of a station; `geometry` gathers what must be written beside it. Call it under the manager's lock.
/// @throws StationFileError  where a geometry is nowhere.
std::string writeStation(const layout::StationContent& content, GeometryWriter& geometry);

} // namespace vrk::station
