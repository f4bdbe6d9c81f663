#pragma once

#include "platform/common/Export.h"
#include "scene/math/Vec.h"

namespace vrk::visual {

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
