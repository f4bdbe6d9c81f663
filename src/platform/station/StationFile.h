#pragma once

#include "platform/layout/Layout.h"
#include "platform/station/Import.h"

namespace vrk::station {

/// A station file that cannot be read or written. The text is one line: the file, where in it, and what was expected there.
class VRK_EXPORT StationFileError : public std::runtime_error {
public:
    /// @param where  a JSON path such as "/parts/0/id", "/" for the whole.
    StationFileError(const std::filesystem::path& file, const std::string& where, const std::string& expected);
};

/// Whether the file's name ends in ".station.json", in any case.
VRK_EXPORT bool isStationFile(const std::filesystem::path& file);

/// Reads a station with all its geometry, which is complete but not yet the station of the process. Each geometry file is
/// read once. Any thread.
/// @throws StationFileError
VRK_EXPORT layout::StationContent ReadStationFile(const std::filesystem::path& file, const Progress& progress = {});

/// The same, put in place of the station of the process, which stays as it was where the file is refused. Its folder
/// becomes the one of "station://" URIs. The application removes the visuals of the old station first.
/// @throws StationFileError
VRK_EXPORT void LoadStationFile(const std::filesystem::path& file, const Progress& progress = {});

/// Writes the station of the process; a file of that name is replaced as a whole or not at all.
///
/// Geometry files are referred to where they are. What has no file of its own, or one in the geometry cache, is written
/// into a folder beside the station: "cell.files" for "cell.station.json". A station that was read from a file is written
/// as the same bytes.
///
/// @throws StationFileError  nothing is replaced then.
VRK_EXPORT void SaveStationFile(const std::filesystem::path& file);

} // namespace vrk::station
