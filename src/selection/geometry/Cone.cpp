#include "selection/geometry/Cone.h"

namespace vrk::visual {

bool Cone::isPointInside(const rob::PoseTemplate<double>& pose, const rob::PosTemplate<double>& point) const
{
    const rob::DirTemplate<double> axis = pose.rotation() * rob::DirTemplate<double>(0, 0, 1);
    const rob::Vec3Template<double> v = point - pose.position;
    const double t = v.dot(axis);
    if (t < 0 || t > h)
        return false;
    const double radial = (v - axis * t).length();
    return (r1 - r0) * (t / h) + r0 > radial;
}

} // namespace vrk::visual
