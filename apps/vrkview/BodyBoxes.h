#pragma once

#include "scene/math/Vec.h"

#include <vector>

namespace vrkview {

/// The corners of the boxes, along the world's axes, of all bodies that are shown; eight for each. Render thread.
std::vector<vrk::rob::PosTemplate<float>> bodyCorners();

} // namespace vrkview
