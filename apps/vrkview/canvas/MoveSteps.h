#pragma once

#include <array>

namespace vrkview {

/// By which things go that are moved by hand in steps.
struct MoveSteps {
    static constexpr std::array lengths = {1.0, 5.0, 10.0}; ///< to choose from
    static constexpr std::array angles = {1.0, 5.0, 15.0};

    double length = 5; ///< millimetres
    double angle = 5;  ///< degrees

    bool operator==(const MoveSteps&) const = default;
};

} // namespace vrkview
