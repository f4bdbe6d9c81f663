#pragma once

#include <cstdint>

namespace vrk::visual {
class Visual;
}

namespace vrkview {

/// How much there is below one visual.
struct Contents {
    unsigned bodies = 0;
    unsigned faces = 0;
    unsigned curves = 0;
    std::uint64_t triangles = 0;
    std::uint64_t points = 0; // of clouds, and single ones

    Contents& operator+=(const Contents& more);
};

/// Render thread.
Contents contentsOf(vrk::visual::Visual& visual);

} // namespace vrkview
