#pragma once

#include "platform/common/Export.h"
#include "scene/math/Vec.h"

#include <cmath>
#include <stdexcept>

namespace vrk::visual {

/// Below this |normal . direction|, both of unit length, a line counts as parallel to a plane.
inline constexpr double parallelToPlane = 0.001;

/// The point of a line on the plane of all points p with normal . p = d.
/// @throws std::logic_error "The line is parallel with the plane".
template <typename T>
rob::PosTemplate<T> linePlanePoint(const rob::DirTemplate<T>& normal, T d, const rob::PosTemplate<T>& origin,
                                   const rob::DirTemplate<T>& direction)
{
    const T denominator = normal.dot(direction);
    if (std::abs(denominator) < static_cast<T>(parallelToPlane))
        throw std::logic_error("The line is parallel with the plane");
    return origin + direction * (-(normal.dot(origin) - d) / denominator);
}

/// The plane of all points p with normal . p = d.
///
/// It meets a line in two forms that treat a parallel line, one whose |normal . direction| is below 0.001, differently:
/// who asks for a distance is given 0, who asks for a point gets an exception.
struct VRK_EXPORT Plane {
    rob::DirTemplate<float> normal{0, 0, 1};
    rob::Vec2Template<float> size{1, 1}; ///< of the part that may be drawn; plays no role in the tests
    float d = 0;

    Plane() = default;
    Plane(const rob::DirTemplate<float>& normal, float d) : normal(normal), d(d) {}

    /// How many times `direction` leads from `origin` to the plane; negative if the plane lies behind. 0 if parallel.
    float distanceAlong(const rob::PosTemplate<float>& origin, const rob::DirTemplate<float>& direction) const;
    /// The point of the line on the plane.
    /// @throws std::logic_error "The line is parallel with the plane".
    rob::PosTemplate<float> pointOn(const rob::PosTemplate<float>& origin,
                                    const rob::DirTemplate<float>& direction) const;
};

} // namespace vrk::visual

namespace vrk::selection {
using visual::Plane;
}
