#pragma once

#include <cstddef>
#include <ostream>

namespace vrk::test {

/// What a call allocated with `new` on the thread that made it. For programs that Allocations.cpp is a source of: there
/// every allocation of the process, those of the libraries too, is counted.
struct Cost {
    std::size_t allocations = 0;
    std::ptrdiff_t kept = 0; ///< bytes that live on

    bool operator==(const Cost&) const = default;
};

inline std::ostream& operator<<(std::ostream& stream, const Cost& cost)
{
    return stream << cost.allocations << " allocations, " << cost.kept << " bytes kept";
}

/// Of the calling thread since it began.
Cost allocatedSoFar();

template <typename Call>
Cost costOf(const Call& call)
{
    const Cost before = allocatedSoFar();
    call();
    const Cost after = allocatedSoFar();
    return {after.allocations - before.allocations, after.kept - before.kept};
}

} // namespace vrk::test
