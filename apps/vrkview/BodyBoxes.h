#pragma once

#include "scene/math/Vec.h"
#include "selection/geometry/Box.h"

#include <vector>

namespace vrkview {

// Render thread.

/// The corners of the boxes, along the world's axes, of all bodies, curves, points and clouds that are shown; eight for
/// each. Grid and frames do not count. Where all lies in one place, those of a cube of two units around it.
std::vector<vrk::rob::PosTemplate<float>> bodyCorners();
/// The box around them; not valid where nothing is shown.
vrk::visual::Box bodyBox();

} // namespace vrkview
