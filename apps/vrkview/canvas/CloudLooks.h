#pragma once

#include "scene/math/Color.h"

#include <optional>
#include <utility>

namespace vrkview {

/// How all scans are coloured: those with colours of their own by these or, as those without, by height. Render thread.
bool areCloudsShownByHeight();
void showCloudsByHeight(bool byHeight);
/// Of clouds that came since, too.
void followCloudLooks();

/// What the colours of scans by height say now.
struct ShownHeights {
    int clouds = 0;                                 ///< of them that are shown so
    double largest = 0;                             ///< from corner to corner of the largest one's box, model units
    std::optional<std::pair<double, double>> range; ///< of z in the world, where there is but one, and it is not tilted
};
/// After `processMsgs`.
ShownHeights shownHeights();

/// The colour of a height from 0, the lowest point, to 1: that of the shader, before light.
vrk::rob::ColorTemplate<double> heightColor(double height);

} // namespace vrkview
