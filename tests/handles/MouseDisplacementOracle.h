#pragma once

#include "scene/math/Pose.h"
#include "selection/geometry/Ray.h"

#include <cmath>
#include <random>

namespace vrk::test {

/// How far a drag goes along one axis of a pose, 0 to 2, worked out on the columns of the pose's matrix.
inline rob::Vec3d draggedAlong(unsigned axis, const visual::Ray& from, const visual::Ray& to, const rob::Posed& pose)
{
    const double w = pose.orientation.w;
    const double x = pose.orientation.x;
    const double y = pose.orientation.y;
    const double z = pose.orientation.z;
    const rob::Vec3d columns[] = {{1 - 2 * (y * y + z * z), 2 * (x * y + w * z), 2 * (x * z - w * y)},
                                  {2 * (x * y - w * z), 1 - 2 * (x * x + z * z), 2 * (y * z + w * x)},
                                  {2 * (x * z + w * y), 2 * (y * z - w * x), 1 - 2 * (x * x + y * y)}};
    // Of the two planes through the axis, by their normals, the one preferred where both are seen equally squarely first.
    const unsigned preferred[] = {2, 2, 1};
    const unsigned second[] = {1, 0, 0};
    const rob::Vec3d sight = rob::Vec3d(to.direction);
    const bool takesSecond = std::abs(columns[second[axis]].dot(sight)) > std::abs(columns[preferred[axis]].dot(sight));
    const rob::Vec3d& normal = columns[takesSecond ? second[axis] : preferred[axis]];
    const rob::Vec3d& across = columns[takesSecond ? preferred[axis] : second[axis]];
    const auto meet = [&](const visual::Ray& ray) {
        const rob::Vec3d origin(ray.origin);
        const rob::Vec3d direction(ray.direction);
        return origin + direction * (normal.dot(rob::Vec3d(pose.position) - origin) / normal.dot(direction));
    };
    const rob::Vec3d moved = meet(to) - meet(from);
    return moved - across * across.dot(moved);
}

inline rob::Vec3f axisNumber(unsigned axis)
{
    return {axis == 0 ? 1.0f : 0.0f, axis == 1 ? 1.0f : 0.0f, axis == 2 ? 1.0f : 0.0f};
}

inline rob::Rotationf randomRotation(std::mt19937& random)
{
    std::normal_distribution<float> number;
    const float w = number(random);
    const float x = number(random);
    const float y = number(random);
    return rob::Rotationf(w, x, y, number(random)).normalized();
}

} // namespace vrk::test
