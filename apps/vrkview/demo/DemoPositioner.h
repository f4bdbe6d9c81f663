#pragma once

#include "scene/math/Pose.h"

#include <memory>

namespace vrk::layout {
class Device;
}

namespace vrkview::demo {

/// A positioner whose cradle tilts about y and whose round table turns, 0.53 m above the floor. The links are the stand,
/// the cradle and the table; the table's frame lies in the middle of its top.
std::shared_ptr<vrk::layout::Device> makePositioner(const vrk::rob::Posed& pose);

} // namespace vrkview::demo
