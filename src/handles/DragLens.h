#pragma once

#include "scene/core/CameraSnapshot.h"

#include <cmath>

namespace vrk::visual {

/// The sine of the smallest angle between the line of sight and an axis, or the plane of a ring, by which something is
/// dragged: about 3 degrees. Below it a pixel is more than twenty times as long as across.
inline constexpr double smallestDragSine = 0.05;

/// A view in doubles. Its camera looks along the negative z axis; a point of it at the depth 1 lies `focus` pixels from the
/// middle of the picture for each unit.
class DragLens {
public:
    explicit DragLens(const CameraSnapshot& view)
        : eye(view.pose.position), turn(rob::Posed(view.pose).rotation().normalized()),
          focusX(static_cast<double>(view.projection[0]) * view.width / 2),
          focusY(static_cast<double>(view.projection[5]) * view.height / 2),
          middle((static_cast<double>(1) - static_cast<double>(view.projection[2])) * view.width / 2,
                 (static_cast<double>(1) + static_cast<double>(view.projection[6])) * view.height / 2),
          isParallel(view.projection[15] != 0)
    {
        if (isParallel) {
            middle.x = (static_cast<double>(view.projection[3]) + 1) * view.width / 2;
            middle.y = (1 - static_cast<double>(view.projection[7])) * view.height / 2;
        }
    }

    bool isFinite() const
    {
        return eye.isFinite() && std::isfinite(turn.w) && std::isfinite(turn.x) && std::isfinite(turn.y) &&
               std::isfinite(turn.z) && std::isfinite(focusX) && std::isfinite(focusY) && focusX != 0 && focusY != 0;
    }
    /// Into the camera's coordinates.
    rob::Vec3d toCamera(const rob::Posd& point) const { return turn.inverse() * (point - eye); }
    rob::Vec3d toCamera(const rob::Dird& direction) const { return turn.inverse() * rob::Vec3d(direction); }
    rob::Dird toWorld(const rob::Vec3d& direction) const { return rob::normalized(rob::Dird(turn * direction)); }
    /// From where the line of sight through a point in the camera's coordinates comes, and its direction there.
    rob::Vec3d sightTo(const rob::Vec3d& point) const { return isParallel ? rob::Vec3d(0, 0, -1) : point; }
    bool isBefore(const rob::Vec3d& point) const { return isParallel || point.z < -nearestDepth; }
    /// Pixels, of a point before the camera.
    rob::Vec2Template<double> imageOf(const rob::Vec3d& point) const
    {
        const double depth = isParallel ? 1 : -point.z;
        return {middle.x + focusX * point.x / depth, middle.y - focusY * point.y / depth};
    }
    /// In the camera's coordinates: where a line of sight begins and where it leads.
    rob::Vec3d originOf(const rob::Vec2Template<double>& pixel) const
    {
        return isParallel ? flat(pixel, 0) : rob::Vec3d();
    }
    rob::Vec3d directionOf(const rob::Vec2Template<double>& pixel) const
    {
        return isParallel ? rob::Vec3d(0, 0, -1) : flat(pixel, -1);
    }
    /// How a point moves in the picture for each unit along a direction, at that point.
    rob::Vec2Template<double> imageSpeed(const rob::Vec3d& point, const rob::Vec3d& along) const
    {
        if (isParallel)
            return {focusX * along.x, -focusY * along.y};
        const double depth = -point.z;
        return {focusX * (along.x * depth + point.x * along.z) / (depth * depth),
                -focusY * (along.y * depth + point.y * along.z) / (depth * depth)};
    }

private:
    static constexpr double nearestDepth = 1e-9;

    rob::Vec3d flat(const rob::Vec2Template<double>& pixel, double z) const
    {
        return {(pixel.x - middle.x) / focusX, (middle.y - pixel.y) / focusY, z};
    }

    rob::Posd eye;
    rob::Rotationd turn;
    double focusX;
    double focusY;
    rob::Vec2Template<double> middle;
    bool isParallel;
};

inline double sineBetween(const rob::Vec3d& a, const rob::Vec3d& b)
{
    return a.cross(b).length() / (a.length() * b.length());
}

/// Whether a drag of the pose by the mouse has numbers to go by.
inline bool isFinite(const rob::Posed& pose, const rob::Vec2Template<double>& mouse)
{
    return pose.position.isFinite() && std::isfinite(pose.orientation.w) && std::isfinite(pose.orientation.x) &&
           std::isfinite(pose.orientation.y) && std::isfinite(pose.orientation.z) && std::isfinite(mouse.x) &&
           std::isfinite(mouse.y);
}

} // namespace vrk::visual
