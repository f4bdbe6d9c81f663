#pragma once

#include "files/Station.h"

#include <string>
#include <vector>

namespace vrkview {

/// A line for each of these scans that is tiny beside bodies as large as a robot: whoever wrote it counted in metres. Call it
/// when all is shown, on the render thread.
/// @param advice  what to do about it: "--unit m".
std::vector<std::string> unitAdvice(const Station& station, const std::string& advice);

} // namespace vrkview
