#pragma once

#include "scene/math/Vec.h"

#include <span>
#include <vector>

/// Not installed.
namespace vrk::geometry {

/// Points of which no two lie in one place.
struct WeldedPoints {
    static constexpr unsigned none = ~0u;

    std::vector<unsigned>
        numbers; ///< of each point that was given, its place among `points`; `none` where it is not finite
    std::vector<rob::Posf> points; ///< in the order of their first mention
};

/// Points that are equal count as one, and so do those that lie within `tolerance` of one before. Any thread. The time grows
/// with the number of points, whatever they are.
WeldedPoints weldPoints(std::span<const rob::Posf> points, float tolerance);

} // namespace vrk::geometry
