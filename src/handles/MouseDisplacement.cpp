#include "handles/MouseDisplacement.h"

#include "selection/geometry/Plane.h"

#include <cmath>

namespace vrk::visual {
namespace {

struct DragPlane {
    rob::Dird normal;
    double d = 0;
    rob::Vec3d rejected; // what goes along it is no part of the answer
};

/// @param sight  the direction of the ray under the mouse now.
DragPlane planeFor(const rob::Vec3d& sight, const rob::Posed& pose, const rob::Vec3d& axes)
{
    rob::Vec3d a;
    rob::Vec3d b;
    rob::Vec3d c;
    if (axes.z > 0) {
        a = {0, 1, 0};
        b = {1, 0, 0};
        c = {1, 0, 0};
    } else if (axes.x > 0) {
        a = {0, 0, 1};
        b = {0, 1, 0};
        c = {0, 1, 0};
    }
    if (axes.y > 0) {
        a.z = 1;
        b.x = 1;
        c.x = 1;
    }
    const rob::Rotationd turn = pose.rotation();
    a = turn * a;
    b = turn * b;
    c = turn * c;
    const bool takesOther = std::abs(c.dot(sight)) > std::abs(a.dot(sight));
    const rob::Vec3d& normal = takesOther ? c : a;
    return {rob::normalized(normal), normal.dot(pose.position), takesOther ? a : b};
}

rob::Posd pointOn(const DragPlane& plane, const Ray& ray)
{
    return linePlanePoint(plane.normal, plane.d, rob::Posd(ray.origin), rob::normalized(rob::Dird(ray.direction)));
}

} // namespace

rob::Vec3d displacementAlong(const Ray& from, const Ray& to, const rob::Posed& pose, const rob::Vec3d& axes)
{
    const DragPlane plane = planeFor(rob::Vec3d(to.direction), pose, axes);
    const rob::Posd end = pointOn(plane, to);
    const rob::Vec3d delta = end - pointOn(plane, from);
    return delta - plane.rejected * delta.dot(plane.rejected);
}

} // namespace vrk::visual
