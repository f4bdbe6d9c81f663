#pragma once

#include <time.h>

namespace vrk::test {

/// Seconds that the calling thread has used of a processor: what a limit is set on, for a busy machine lengthens the time
/// by the clock on the wall and not this.
inline double threadSeconds()
{
    timespec used{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &used);
    return static_cast<double>(used.tv_sec) + 1e-9 * static_cast<double>(used.tv_nsec);
}

/// Seconds of processor that the calling thread uses for `call`.
template <typename Call>
double threadSecondsOf(const Call& call)
{
    const double before = threadSeconds();
    call();
    return threadSeconds() - before;
}

} // namespace vrk::test
