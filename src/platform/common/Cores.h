#pragma once

#include "platform/common/Export.h"

namespace vrk {

/// The cores of this machine, at least 1. Told once: the system answers by reading files, which costs more than what small
/// work could gain. Any thread.
VRK_EXPORT unsigned coreCount();

} // namespace vrk
