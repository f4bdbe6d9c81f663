#pragma once

#include "scene/math/Pose.h"

#include <algorithm>
#include <cmath>

namespace vrk::visual {

/// Whether two poses are the same but for what a node loses of a rotation when it normalises it.
inline bool isSamePlace(const rob::PoseTemplate<float>& a, const rob::PoseTemplate<float>& b)
{
    constexpr float rounding = 2e-6f;
    const auto& p = a.orientation;
    const auto& q = b.orientation;
    const float turned = std::max({std::abs(p.w - q.w), std::abs(p.x - q.x), std::abs(p.y - q.y), std::abs(p.z - q.z)});
    return a.position == b.position && turned <= rounding;
}

} // namespace vrk::visual
