#pragma once

#include <cstdint>

namespace vrk {

/// The colour of a point as scanners store it.
struct PointColor {
    std::uint8_t r = 0, g = 0, b = 0;

    bool operator==(const PointColor&) const = default;
};

} // namespace vrk
