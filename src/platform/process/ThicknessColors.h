#pragma once

#include "platform/common/Export.h"
#include "scene/math/Color.h"

namespace vrk::process {

/// What of a coat is too thin and what too thick. Model units.
struct ThicknessTarget {
    double thickness = 0.04;
    double tolerance = 0.2; ///< as a part of the thickness, to both sides

    double low() const { return thickness * (1 - tolerance); }
    double high() const { return thickness * (1 + tolerance); }
    /// How far colours reach: from bare to twice the target.
    double mostShown() const { return 2 * thickness; }
};

enum class Coverage { Bare, BelowTarget, OnTarget, AboveTarget };

VRK_EXPORT Coverage coverageOf(double thickness, const ThicknessTarget& target);

/// The colour of a part of a scale, from 0 to 1: dark blue over green to yellow, ever brighter, with even steps for the eye, also
/// for one that does not tell red from green (van der Walt, Smith, "viridis", 2015; CC0). What lies outside has the colour of
/// the end.
VRK_EXPORT rob::Colorf scaleColor(double part);

} // namespace vrk::process
