#include "platform/common/Cores.h"

#include <algorithm>
#include <thread>

namespace vrk {

unsigned coreCount()
{
    static const unsigned count = std::max(1u, std::thread::hardware_concurrency());
    return count;
}

} // namespace vrk
