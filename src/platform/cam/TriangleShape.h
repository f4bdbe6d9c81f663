#pragma once

#include "platform/cam/TriangleSurface.h"

#include <algorithm>

/// Not installed.
namespace vrk::cam {

/// Its vertices, to reckon with.
inline std::vector<rob::Vec3d> placesOf(const TriangleSurface& surface)
{
    std::vector<rob::Vec3d> places;
    places.reserve(surface.vertices.size());
    for (const rob::Posd& place : surface.vertices)
        places.emplace_back(place);
    return places;
}

inline TriangleSurface surfaceOf(const std::vector<rob::Vec3d>& places,
                                 std::vector<TriangleSurface::Triangle> triangles)
{
    TriangleSurface surface{{}, std::move(triangles)};
    surface.vertices.reserve(places.size());
    for (const rob::Vec3d& place : places)
        surface.vertices.emplace_back(place);
    return surface;
}

/// Twice the area long.
inline rob::Vec3d normalOf(const rob::Vec3d& a, const rob::Vec3d& b, const rob::Vec3d& c)
{
    return (b - a).cross(c - a);
}

// The shape of a triangle is twice its area over the square of its longest edge: 0.87 for the best, near 0 for needles and
// caps.

inline double longestSquare(const rob::Vec3d& a, const rob::Vec3d& b, const rob::Vec3d& c)
{
    return std::max({(b - a).squaredLength(), (c - b).squaredLength(), (a - c).squaredLength()});
}
inline double shapeOf(const rob::Vec3d& a, const rob::Vec3d& b, const rob::Vec3d& c)
{
    const double longest = longestSquare(a, b, c);
    return longest > 0 ? normalOf(a, b, c).length() / longest : 0;
}
/// Whether a triangle that is thin may be so, beside what it was before.
inline bool isBetterShaped(double shape, double before)
{
    return shape > 1e-6 && shape >= before;
}

} // namespace vrk::cam
