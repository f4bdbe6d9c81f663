#pragma once

#include "scene/math/Vec.h"

#include <cstdint>

namespace vrk::cam {

/// The point of a triangle that is nearest to a place, and what of the triangle it is on. Not installed.
struct NearestOnTriangle {
    static constexpr std::uint32_t none = 0xFFFFFFFF;

    rob::Vec3d place;
    std::uint32_t corner = none; ///< on this one
    std::uint32_t edge = none;   ///< on the edge from this corner to the next; none at a corner
};

/// Ericson, "Real-Time Collision Detection", 2005, 5.1.5. Not installed.
inline NearestOnTriangle nearestOn(const rob::Vec3d& a, const rob::Vec3d& b, const rob::Vec3d& c,
                                   const rob::Vec3d& place)
{
    constexpr std::uint32_t none = NearestOnTriangle::none;
    const rob::Vec3d ab = b - a, ac = c - a, ap = place - a;
    const double d1 = ab.dot(ap), d2 = ac.dot(ap);
    if (d1 <= 0 && d2 <= 0)
        return {a, 0, none};
    const rob::Vec3d bp = place - b;
    const double d3 = ab.dot(bp), d4 = ac.dot(bp);
    if (d3 >= 0 && d4 <= d3)
        return {b, 1, none};
    const double vc = d1 * d4 - d3 * d2;
    if (vc <= 0 && d1 >= 0 && d3 <= 0)
        return {a + ab * (d1 / (d1 - d3)), none, 0};
    const rob::Vec3d cp = place - c;
    const double d5 = ab.dot(cp), d6 = ac.dot(cp);
    if (d6 >= 0 && d5 <= d6)
        return {c, 2, none};
    const double vb = d5 * d2 - d1 * d6;
    if (vb <= 0 && d2 >= 0 && d6 <= 0)
        return {a + ac * (d2 / (d2 - d6)), none, 2};
    const double va = d3 * d6 - d5 * d4;
    if (va <= 0 && d4 - d3 >= 0 && d5 - d6 >= 0)
        return {b + (c - b) * ((d4 - d3) / ((d4 - d3) + (d5 - d6))), none, 1};
    const double whole = va + vb + vc;
    return {a + ab * (vb / whole) + ac * (vc / whole), none, none};
}

} // namespace vrk::cam
