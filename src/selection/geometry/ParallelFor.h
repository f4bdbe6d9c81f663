#pragma once

#include "platform/common/Export.h"

#include <cstddef>
#include <functional>

namespace vrk::selection {

/// Calls `work(begin, end)` for chunks that together cover 0 to `count`, on this thread and as many others as there are
/// further cores. Chunks are handed out in ascending order, at most 32 for each thread. With one core, or one item, there
/// is one call, on this thread.
///
/// A failure ends the handing out; the first one leaves when all threads have stopped.
VRK_EXPORT void parallelFor(std::size_t count, const std::function<void(std::size_t, std::size_t)>& work);

} // namespace vrk::selection
