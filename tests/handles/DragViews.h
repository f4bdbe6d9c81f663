#pragma once

#include "scene/core/CameraSnapshot.h"

#include <cmath>
#include <numbers>
#include <optional>
#include <random>

namespace vrk::test {

using PixelPlace = rob::Vec2Template<double>;

/// A camera of 800 x 600 pixels, without the matrices that no drag asks for.
inline visual::CameraSnapshot viewFrom(const rob::Posef& pose, float vfov = 0.6f)
{
    visual::CameraSnapshot view;
    view.pose = pose;
    view.width = 800;
    view.height = 600;
    view.vfov = vfov;
    const float focus = 1 / std::tan(vfov / 2);
    view.projection = {focus * 0.75f, 0, 0, 0, 0, focus, 0, 0, 0, 0, -1, -1, 0, 0, -1, 0};
    return view;
}

/// Looks at a place, z upwards in the picture, or else y.
inline visual::CameraSnapshot lookingAt(const rob::Posf& eye, const rob::Posf& place, float vfov = 0.6f)
{
    const rob::Dirf z = rob::normalized(eye - place);
    const rob::Dirf up = std::abs(z.z) > 0.999f ? rob::Dirf(0, 1, 0) : rob::Dirf(0, 0, 1);
    const rob::Dirf x = rob::normalized(up.cross(z));
    return viewFrom({eye, rob::Rotationf::FromAxes(x, rob::Dirf(z.cross(x)), z)}, vfov);
}

/// The same with parallel lines of sight, `width` model units across.
inline visual::CameraSnapshot withParallelSight(visual::CameraSnapshot view, float width)
{
    const float across = 2 / width;
    view.projection = {across, 0, 0, 0, 0, across * 800 / 600, 0, 0, 0, 0, -0.001f, 0, 0, 0, 0, 1};
    return view;
}

/// Where a point lies in the picture; none for one behind the camera.
inline std::optional<PixelPlace> imageOf(const visual::CameraSnapshot& view, const rob::Posd& point)
{
    const rob::Rotationd turn = rob::Posed(view.pose).rotation().normalized();
    const rob::Vec3d p = turn.inverse() * (point - rob::Posd(view.pose.position));
    const double w = static_cast<double>(view.projection[14]) * p.z + static_cast<double>(view.projection[15]);
    if (w <= 0)
        return {};
    return PixelPlace((static_cast<double>(view.projection[0]) * p.x / w + 1) * view.width / 2,
                      (1 - static_cast<double>(view.projection[5]) * p.y / w) * view.height / 2);
}

inline rob::Posd randomPlace(std::mt19937& random, double reach)
{
    std::uniform_real_distribution<double> number(-reach, reach);
    const double x = number(random);
    const double y = number(random);
    return {x, y, number(random)};
}

inline rob::Posed randomPose(std::mt19937& random, double reach)
{
    std::normal_distribution<double> number;
    const double w = number(random);
    const double x = number(random);
    const double y = number(random);
    const rob::Rotationd turn = rob::Rotationd(w, x, y, number(random)).normalized();
    return {randomPlace(random, reach), turn};
}

/// From a random side, so far away that the place is well in view.
inline visual::CameraSnapshot randomView(std::mt19937& random, const rob::Posd& place)
{
    std::uniform_real_distribution<double> exponent(2, 5);
    const rob::Dird from = rob::normalized(rob::Vec3d(randomPlace(random, 1)));
    const double distance = std::pow(10.0, exponent(random));
    return lookingAt(rob::Posf(place + rob::Vec3d(from) * distance), rob::Posf(place));
}

inline double distanceTo(const visual::CameraSnapshot& view, const rob::Posd& place)
{
    return (place - rob::Posd(view.pose.position)).length();
}

/// A random pose seen from a random side; every fourth with parallel lines of sight.
struct RandomSight {
    explicit RandomSight(std::mt19937& random, unsigned seed)
        : pose(randomPose(random, 500)), view(randomView(random, pose.position)),
          distance(distanceTo(view, pose.position)), isParallel(seed % 4 == 0)
    {
        if (isParallel)
            view = withParallelSight(view, static_cast<float>(distance));
    }

    rob::Posed pose;
    visual::CameraSnapshot view;
    double distance;
    bool isParallel;
};

} // namespace vrk::test
