#include "selection/geometry/Plane.h"

#include "selection/geometry/Math.h"

#include <stdexcept>

namespace vrk::visual {
namespace {

bool isParallel(float denominator)
{
    return selection::Math::isZero(denominator);
}

float parameter(const Plane& plane, const rob::PosTemplate<float>& origin, float denominator)
{
    return -(plane.normal.dot(origin) - plane.d) / denominator;
}

} // namespace

float Plane::distanceAlong(const rob::PosTemplate<float>& origin, const rob::DirTemplate<float>& direction) const
{
    const float denominator = normal.dot(direction);
    return isParallel(denominator) ? 0.0f : parameter(*this, origin, denominator);
}

rob::PosTemplate<float> Plane::pointOn(const rob::PosTemplate<float>& origin,
                                       const rob::DirTemplate<float>& direction) const
{
    const float denominator = normal.dot(direction);
    if (isParallel(denominator))
        throw std::logic_error("The line is parallel with the plane");
    return origin + direction * parameter(*this, origin, denominator);
}

} // namespace vrk::visual
