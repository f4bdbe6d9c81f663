#include "selection/pick/PickLens.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace vrk::selection {
namespace {

PickMatrix inverted(const PickMatrix& m)
{
    if (const auto inverse = inverseOf(m))
        return *inverse;
    throw std::invalid_argument("The matrices of the camera of a pick cannot be inverted");
}

rob::Vec3d turned(const PickMatrix& m, const rob::Vec3d& v)
{
    return {m[0] * v.x + m[1] * v.y + m[2] * v.z, m[4] * v.x + m[5] * v.y + m[6] * v.z,
            m[8] * v.x + m[9] * v.y + m[10] * v.z};
}

} // namespace

PickLens::PickLens(const PickCamera& source) : camera(source)
{
    if (!camera.hasPixels())
        throw std::invalid_argument("The camera of a pick has no pixels");
    worldToClip = product(camera.projection, camera.view);
    clipToEye = inverted(camera.projection);
    eyeToWorld = inverted(camera.view);
}

PickLens::EyeRay PickLens::eyeRayThrough(double x, double y) const
{
    const double right = 2 * x / camera.width - 1, up = 1 - 2 * y / camera.height;
    const auto unprojected = [&](double depth) {
        const ClipPoint p = applied(clipToEye, {right, up, depth});
        return rob::Vec3d(p.x / p.w, p.y / p.w, p.z / p.w);
    };
    const rob::Vec3d start = unprojected(-1);
    const rob::Vec3d ahead = unprojected(0) - start;
    return {start, ahead / ahead.length()};
}

PickRay PickLens::rayThrough(double x, double y) const
{
    const EyeRay ray = eyeRayThrough(x, y);
    const ClipPoint origin = applied(eyeToWorld, rob::Posd(ray.start));
    const rob::Vec3d direction = turned(eyeToWorld, ray.direction);
    return {{origin.x, origin.y, origin.z}, direction / direction.length()};
}

/// From the rays through the corners of the square around the circle: in each plane square to the view the square is a
/// straight one, which grows with the depth.
PickBeam PickLens::beamThrough(double x, double y, double radius) const
{
    constexpr double everything = 1e30;
    constexpr double room = 1.01; // for rounding
    const auto byDepth = [](const rob::Vec3d& direction) { return direction / -direction.z; };
    const EyeRay middle = eyeRayThrough(x, y);
    const rob::Vec3d along = byDepth(middle.direction);
    double start = 0, byUnitOfDepth = 0;
    for (const double dx : {-radius, radius})
        for (const double dy : {-radius, radius}) {
            const EyeRay corner = eyeRayThrough(x + dx, y + dy);
            start = std::max(start, (corner.start - middle.start).length());
            byUnitOfDepth = std::max(byUnitOfDepth, (byDepth(corner.direction) - along).length());
        }
    // A place in such a plane can lie ahead of or behind the ray's own point there, where the ray stands askew.
    const double length = along.length();
    const double askew = std::sqrt(std::max(0.0, 1 - 1 / (length * length)));
    const double forward = length - byUnitOfDepth * askew;
    if (!(forward > 0.05 * length))
        return {everything, everything};
    return {room * (start + byUnitOfDepth * start * askew / forward), room * byUnitOfDepth / forward};
}

double PickLens::unitsPerPixel(const rob::Posd& place) const
{
    return 2 * std::abs(applied(worldToClip, place).w / (camera.projection[5] * camera.height));
}

} // namespace vrk::selection
