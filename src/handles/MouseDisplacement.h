#pragma once

#include "scene/math/Pose.h"
#include "selection/geometry/Ray.h"

namespace vrk::visual {

/// How far a drag from one ray to another goes along an axis of a pose, in the world: both rays are met with that one of two
/// planes through the axis which faces the second ray more squarely, and what lies across the axis is left out.
///
/// The axis is the one whose component of `axes` is positive; of several, z goes before x. With x and y positive the
/// planes lie askew, and what is left out is not of unit length.
///
/// Any thread. In doubles, since a short drag far away is the small difference of two long ways.
/// @throws std::logic_error "The line is parallel with the plane" for a ray within 0.001 of it.
/// @throws std::overflow_error "0-length vector cannot be normalized." for axes without a positive component.
rob::Vec3d displacementAlong(const Ray& from, const Ray& to, const rob::Posed& pose, const rob::Vec3d& axes);

} // namespace vrk::visual
