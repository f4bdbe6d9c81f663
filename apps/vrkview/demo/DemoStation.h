#pragma once

#include "files/Station.h"

namespace vrkview {

/// The station that is shown when no file is named: a cell in which an arm welds a bracket that a positioner holds, with
/// its fence, its controller, a pallet of parts, and a bench with the scan of a bracket and a gear unit.
///
/// The fence and the scan lie in the geometry cache. Thread: any one thread.
/// @throws std::runtime_error if they cannot be written there.
Station demoStation();

} // namespace vrkview
