#include "selection/geometry/Box.h"

#include "selection/geometry/BoxTests.h"
#include "selection/geometry/Ray.h"

#include <algorithm>
#include <cmath>
#include <ostream>
#include <utility>

namespace vrk::visual {
namespace {

using rob::PosTemplate;
using rob::Vec3Template;

/// Whether an axis (a, b) in the plane of two coordinates keeps the triangle off a box at the origin. `p`, `q` and `r`
/// are the triangle's corners along the axis, `half` the box's half size along it.
bool separates(float p, float q, float r, float half)
{
    const float lowest = std::min(std::min(p, q), r);
    const float highest = std::max(std::max(p, q), r);
    return std::max(lowest, -highest) > half;
}

/// The three axes that stand at right angles to one edge and to a coordinate axis.
bool edgeSeparates(const Vec3Template<float>& e, const PosTemplate<float>& t0, const PosTemplate<float>& t1,
                   const PosTemplate<float>& t2, const Vec3Template<float>& size)
{
    const float ax = std::abs(e.x), ay = std::abs(e.y), az = std::abs(e.z);
    const auto alongX = [&e](const PosTemplate<float>& t) { return -e.z * t.y + e.y * t.z; };
    const auto alongY = [&e](const PosTemplate<float>& t) { return e.z * t.x + -e.x * t.z; };
    const auto alongZ = [&e](const PosTemplate<float>& t) { return -e.y * t.x + e.x * t.y; };
    return separates(alongX(t0), alongX(t1), alongX(t2), (az * size.y + ay * size.z) * 0.5f) ||
           separates(alongY(t0), alongY(t1), alongY(t2), (az * size.x + ax * size.z) * 0.5f) ||
           separates(alongZ(t0), alongZ(t1), alongZ(t2), (ay * size.x + ax * size.y) * 0.5f);
}

bool axisSeparates(float p, float q, float r, float half)
{
    return std::min(std::min(p, q), r) > half || -half > std::max(std::max(p, q), r);
}

} // namespace

PosTemplate<float> Box::getCorner(unsigned index) const
{
    switch (index) {
    case 0:
        return {min.x, min.y, min.z};
    case 1:
        return {max.x, min.y, min.z};
    case 2:
        return {max.x, max.y, min.z};
    case 3:
        return {min.x, max.y, min.z};
    case 4:
        return {min.x, min.y, max.z};
    case 5:
        return {max.x, min.y, max.z};
    case 6:
        return {max.x, max.y, max.z};
    case 7:
        return {min.x, max.y, max.z};
    default:
        return {};
    }
}

Box Box::transformed(const rob::PoseTemplate<float>& pose) const
{
    Box moved;
    for (unsigned corner = 0; corner < 8; ++corner)
        moved.addPoint(pose * getCorner(corner));
    moved.updateCenter();
    return moved;
}

void Box::dump(std::ostream& out) const
{
    out << "box:\n"
        << min.x << ", " << min.y << ", " << min.z << "\n"
        << max.x << ", " << max.y << ", " << max.z << "\n";
}

bool Box::intersect(const rob::LineTemplate<float>& line) const
{
    return selection::LineBoxTest(line)(*this);
}

bool Box::intersect(const Ray& ray) const
{
    return selection::RayBoxTest(ray)(*this);
}

bool Box::intersect(const Vec3Template<float>& normal, const PosTemplate<float>& point) const
{
    const Vec3Template<float> h = (max - min) * 0.5f;
    Vec3Template<float> vmin(-h.x - point.x, -h.y - point.y, -h.z - point.z);
    Vec3Template<float> vmax(h.x - point.x, h.y - point.y, h.z - point.z);
    if (!(normal.x > 0))
        std::swap(vmin.x, vmax.x);
    if (!(normal.y > 0))
        std::swap(vmin.y, vmax.y);
    if (!(normal.z > 0))
        std::swap(vmin.z, vmax.z);
    if (normal.dot(vmin) > 0)
        return false;
    return normal.dot(vmax) >= 0;
}

bool Box::intersect(const rob::TriangleTemplate<float>& triangle) const
{
    const Vec3Template<float> size = max - min;
    const Vec3Template<float> toCenter(center);
    const PosTemplate<float> t0 = triangle.a - toCenter, t1 = triangle.b - toCenter, t2 = triangle.c - toCenter;
    // The separating axis test of Akenine-Moeller, "Fast 3D Triangle-Box Overlap Testing" (2001): the two are apart if they
    // are along any one of 13 axes. Those that are cheap and part most pairs come first.
    if (axisSeparates(t0.x, t1.x, t2.x, size.x * 0.5f) || axisSeparates(t0.y, t1.y, t2.y, size.y * 0.5f) ||
        axisSeparates(t0.z, t1.z, t2.z, size.z * 0.5f))
        return false;

    const Vec3Template<float> e0 = t1 - t0, e1 = t2 - t1, e2 = t0 - t2;
    return intersect(e0.cross(e1), t0) && !edgeSeparates(e0, t0, t1, t2, size) &&
           !edgeSeparates(e1, t0, t1, t2, size) && !edgeSeparates(e2, t0, t1, t2, size);
}

} // namespace vrk::visual
