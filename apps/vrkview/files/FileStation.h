#pragma once

#include "files/Station.h"

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace vrkview {

/// Told of the steps of an import: the file's name, what is being done, and how much of that file is, from 0 to 1. What it
/// throws ends the import.
using ImportReport = std::function<void(const std::string& file, std::string_view step, double fraction)>;

/// What the files hold, together. Any thread.
/// @throws vrk::station::ImportError, vrk::station::StationFileError for the first file that cannot be taken in, and for a
///         second station file.
Station importFiles(const std::vector<std::filesystem::path>& files, const ImportReport& report);
/// The same as a station of its own, with progress on standard error: see `bringCloudsNear`.
Station importFiles(const std::vector<std::filesystem::path>& files);

/// A surveyed cloud lies far from the origin, where single precision has no room for its details: clouds that are all there
/// is are moved to around the first one's own origin. With anything else in the station nothing is done.
void bringCloudsNear(Station& station);

} // namespace vrkview
