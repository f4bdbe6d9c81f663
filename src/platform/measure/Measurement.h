#pragma once

#include "platform/common/Export.h"
#include "scene/math/Pose.h"

#include <optional>
#include <string>
#include <vector>

namespace vrk::measure {

/// What a measured number is.
enum class Quantity {
    Place,    ///< no number: where a point is
    Distance, ///< model units
    Angle,    ///< degrees
    Diameter, ///< model units
    Length,   ///< model units
    Area,     ///< square model units
};

/// A measured value, and what shows in the view how it was measured. Places are in the world.
struct VRK_EXPORT Measurement {
    Quantity quantity = Quantity::Distance;
    double value = 0;
    /// Of a distance: from its end on the first thing to its end on the second.
    std::optional<rob::Vec3d> way;
    /// Degrees: of two lines that pass each other, beside their distance.
    std::optional<double> angle;
    std::vector<std::vector<rob::Posd>> lines; ///< to be drawn, each a strip
    rob::Posd textPlace;                       ///< of the number
    std::string note;                          ///< how it was measured, where that is not plain: "nearest places"
};

// For the user. Lengths are millimetres, with two decimals.

/// The number alone: "100.03 mm", "45.00°", "Ø 40.00 mm", "12.50 mm²".
VRK_EXPORT std::string labelOf(const Measurement& measured);
/// All that is known: "100.03 mm (x 60.00, y 80.02, z 0.00), nearest places".
VRK_EXPORT std::string textOf(const Measurement& measured);

/// With two decimals; never "-0.00".
VRK_EXPORT std::string fixedText(double value);

} // namespace vrk::measure
