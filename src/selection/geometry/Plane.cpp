#include "selection/geometry/Plane.h"

namespace vrk::visual {

float Plane::distanceAlong(const rob::PosTemplate<float>& origin, const rob::DirTemplate<float>& direction) const
{
    const float denominator = normal.dot(direction);
    if (std::abs(denominator) < static_cast<float>(parallelToPlane))
        return 0.0f;
    return -(normal.dot(origin) - d) / denominator;
}

rob::PosTemplate<float> Plane::pointOn(const rob::PosTemplate<float>& origin,
                                       const rob::DirTemplate<float>& direction) const
{
    return linePlanePoint(normal, d, origin, direction);
}

} // namespace vrk::visual
