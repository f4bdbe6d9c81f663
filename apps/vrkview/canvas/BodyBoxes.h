#pragma once

#include "scene/math/Vec.h"
#include "selection/geometry/Box.h"

#include <vector>

namespace vrkview {

// Render thread.

/// Points whose convex hull encloses what is shown, for fitting it into a view: the eight corners of each world box of a
/// body, curve or point, of each cloud its points, at most some 100,000 of them, and the places that the moves of programs go to. Grid and
/// frames are left out. If everything lies in one point, the corners of a cube of two model units around it.
std::vector<vrk::rob::PosTemplate<float>> bodyCorners();
/// The box around these points; not valid where nothing is shown.
vrk::visual::Box bodyBox();

} // namespace vrkview
