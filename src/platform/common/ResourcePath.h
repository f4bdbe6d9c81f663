#pragma once

#include "platform/common/Export.h"

#include <filesystem>

namespace vrk::common {

/// The zip file with the materials and programs: the one given to `SetResourcePath`, else "vrkvisual-resources.zip"
/// beside this library, else in ../share/vrkvisual seen from there. The file may be absent. Any thread.
VRK_EXPORT std::filesystem::path GetResourcePath();

/// Puts another zip file in place of the installed one; an empty path takes that back. Call it before start-up.
VRK_EXPORT void SetResourcePath(const std::filesystem::path& zip);

} // namespace vrk::common
