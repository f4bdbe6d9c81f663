#pragma once

#include "scene/math/Vec.h"
#include "selection/geometry/Box.h"

#include <vector>

namespace vrkview {

// Render thread.

/// Places between which all lies that is shown: the corners of the boxes of bodies, curves and points, along the world's
/// axes, and of a cloud its points, or some 100,000 of them. Grid and frames do not count. Where all lies in one place,
/// the corners of a cube of two units around it.
std::vector<vrk::rob::PosTemplate<float>> bodyCorners();
/// The box around them; not valid where nothing is shown.
vrk::visual::Box bodyBox();

} // namespace vrkview
