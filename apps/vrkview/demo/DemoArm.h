#pragma once

#include "scene/math/Pose.h"

#include <memory>

namespace vrk::layout {
class Manipulator;
class Tool;
} // namespace vrk::layout

namespace vrkview::demo {

/// A six-axis arm of 1.4 m reach that holds its tool over the positioner. Upright, with the forearm ahead along x, while
/// all joints are 0. z of its wrist points out of the flange.
std::shared_ptr<vrk::layout::Manipulator> makeArm(const vrk::rob::Posed& pose);

/// A welding torch with a bent neck, z out of the flange that it is fixed to.
std::shared_ptr<vrk::layout::Tool> makeTorch();
/// The tip of the wire in the torch, z along the wire.
vrk::rob::Posed torchTip();

} // namespace vrkview::demo
