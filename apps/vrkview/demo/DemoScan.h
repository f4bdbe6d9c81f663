#pragma once

#include "scene/math/Pose.h"

#include <memory>

namespace vrk::layout {
class PointCloud;
}

namespace vrkview::demo {

/// 200,000 points with normals, as a scanner sees the bracket and the floor around it from one place: in lines, a little
/// noisy, thinning out at the rim, and with nothing where its light does not reach. The same in every run.
/// @param scale  of the bracket and the floor, 1 for the bracket as it is drawn.
std::shared_ptr<vrk::layout::PointCloud> scanOfBracket(const vrk::rob::Posed& pose, float scale);

} // namespace vrkview::demo
