#pragma once

#include <cstdlib>

namespace vrk::bench {

/// Whether the work is tiny: VRK_BENCH_SMALL stands in the environment. Such a run takes seconds and shows that each
/// benchmark runs and that its answers are right; its figures say nothing. What only the full work has, as the checksum of
/// its answers, is not checked then.
inline bool isSmall()
{
    static const bool small = std::getenv("VRK_BENCH_SMALL") != nullptr;
    return small;
}

/// `full`, and `small` where the work is tiny.
template <typename T>
T sized(T full, T small)
{
    return isSmall() ? small : full;
}

} // namespace vrk::bench
