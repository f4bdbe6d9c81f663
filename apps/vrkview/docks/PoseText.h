#pragma once

#include "scene/math/Pose.h"

#include <array>

namespace vrkview {

/// The turns about x, y and z in degrees that make up a rotation as the product Rx * Ry * Rz, as `rob::Rotation` takes
/// them. That about y lies between -90 and 90; at these two only the sum of the others counts, and z gets none of it.
std::array<double, 3> anglesOf(const vrk::rob::Rotationd& rotation);

} // namespace vrkview
