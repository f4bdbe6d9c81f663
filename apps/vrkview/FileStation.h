#pragma once

#include "Station.h"

#include <filesystem>
#include <vector>

namespace vrkview {

/// What the files hold, together. Progress goes to standard error.
/// @throws vrk::station::ImportError, vrk::station::StationFileError for the first file that cannot be taken in, and for a
///         second station file.
Station importFiles(const std::vector<std::filesystem::path>& files);

} // namespace vrkview
