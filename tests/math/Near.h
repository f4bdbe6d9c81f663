#pragma once

#include "scene/math/Pose.h"

#include <cmath>

namespace vrk::rob {

/// Whether two triples of any kind lie within `tolerance` of each other in each component.
template <typename A, typename B>
bool isNear(const A& a, const B& b, double tolerance = 1e-6)
{
    return std::abs(a.x - b.x) <= tolerance && std::abs(a.y - b.y) <= tolerance && std::abs(a.z - b.z) <= tolerance;
}

inline constexpr double halfTurn = 3.14159265358979323846;
inline constexpr double quarterTurn = halfTurn / 2;

} // namespace vrk::rob
