#pragma once

#include "platform/common/Export.h"

#include <cstdint>
#include <vector>

namespace vrk::visual {

/// Heights above the ground, in rows; what has nothing above it has 1 or more. Of all else the length is that of `span`.
struct HeightMap {
    unsigned width = 0;
    unsigned height = 0;
    double texel = 1; ///< length of one side
    double span = 1;  ///< of the heights 0 to 1
    double reach = 1; ///< what is this high throws nothing any more; shadows are as soft as this is long
    std::vector<float> heights;
};

/// How dark the ground is at each place, 0 to 255: darkest and sharpest where something stands on it, lighter and softer below
/// what is higher. The shadow of a sky that is equally bright all over, roughly: some layers of what lies below some height,
/// each blurred as much. A blur is three means over a square, as P. Kovesi: "Fast Almost-Gaussian Filtering" (2010) has it.
///
/// Any thread; time and memory go with the number of places.
VRK_EXPORT std::vector<std::uint8_t> softShadow(const HeightMap& map);

} // namespace vrk::visual
