#pragma once

#include "scene/math/Pose.h"

namespace vrkview {

/// The way of a camera from one view to another: the place looked at moves straight, the distance to it changes by equal
/// factors in equal times, and the camera turns the short way. A turn about what is looked at so keeps it in place.
///
/// Any thread.
class ViewTransition {
public:
    /// @param distance  model units, above 0: how far before the camera that lies at which it looks, at the start and at
    ///                  the end.
    ViewTransition(const vrk::rob::Posef& from, float distanceFrom, const vrk::rob::Posef& to, float distanceTo);

    /// @param time  0 at the start, 1 at the end; held to that. The end is `to` itself.
    vrk::rob::Posef at(float time) const;

private:
    vrk::rob::Posef from;
    vrk::rob::Posef to;
    float distanceFrom;
    float distanceTo;
};

/// Slow at both ends: 0 to 1 for 0 to 1, held to that.
float eased(float time);

/// From a, for time 0, to b, for time 1, about one axis and the short way.
vrk::rob::Rotationf slerp(const vrk::rob::Rotationf& a, const vrk::rob::Rotationf& b, float time);

} // namespace vrkview
