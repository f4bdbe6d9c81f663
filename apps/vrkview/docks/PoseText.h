#pragma once

#include "scene/math/Pose.h"

#include <array>

namespace vrkview {

/// The turns about x, y and z in degrees that make up a rotation as the product Rx * Ry * Rz, as `rob::Rotation` takes
/// them (Tait-Bryan angles). That about y is -90 to 90; at either end only the others' sum is determined, and z is 0.
std::array<double, 3> anglesOf(const vrk::rob::Rotationd& rotation);

} // namespace vrkview
