#pragma once

#include "platform/common/Export.h"

#include <cstddef>
#include <functional>

namespace vrk {

/// Calls `work(begin, end)` for chunks that together cover 0 to `count`, on this thread and as many others as there are
/// further cores, and waits for them all: no thread of it outlives the call. Chunks are handed out in ascending order, at
/// most 32 for each thread. With one core, or one item, there is one call, on this thread.
///
/// Each call starts its threads anew, which takes some tens of microseconds for each: work of less than that is done
/// sooner in a plain loop.
///
/// A failure ends the handing out; the first one is thrown again here when all threads have stopped.
VRK_EXPORT void parallelFor(std::size_t count, const std::function<void(std::size_t, std::size_t)>& work);

} // namespace vrk
