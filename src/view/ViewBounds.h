#pragma once

#include "platform/common/Export.h"
#include "scene/math/Pose.h"
#include "selection/geometry/Box.h"

namespace vrk::visual {

struct CameraSnapshot;

/// What keeps a camera that is navigated near what is shown: its eye stays in a cube about that, ten times its size, and some of
/// the box around everything stays in view. A value, of what was shown at one moment.
///
/// An eye that is out of the cube already, as after much was hidden, is not thrown back: it stays as near as it is, or comes
/// nearer. Where nothing of the box is in view already, any turn is free.
///
/// Units: model units. Thread: any, but for `OfScene`, which is for the render thread.
class VRK_EXPORT ViewBounds {
public:
    /// @param shown  an empty one counts as a cube of 200 about the origin.
    explicit ViewBounds(const Box& shown = Box());
    /// About `BoxOfShown`, as it is now.
    static ViewBounds OfScene();

    /// Of the box.
    const rob::PosTemplate<double>& getMiddle() const { return middle; }
    /// Half of the box's diagonal; 10 where it has none to speak of.
    double getRadius() const { return radius; }
    /// Half of the cube's side.
    double getRoom() const { return room; }

    /// The place itself, or where the way to it from the middle leaves the cube.
    rob::PosTemplate<double> within(const rob::PosTemplate<double>& place) const;
    /// Whether some of the box would be in the picture of a camera with this lens at this pose.
    bool isInView(const CameraSnapshot& lens, const rob::PoseTemplate<double>& pose) const;
    /// Where the camera goes that wants to go to a pose: there, to where the cube ends, or nowhere. What is granted is returned
    /// bit by bit.
    rob::PoseTemplate<float> held(const CameraSnapshot& camera, const rob::PoseTemplate<float>& wanted) const;

private:
    Box box;
    rob::PosTemplate<double> middle;
    double radius;
    double room;
};

} // namespace vrk::visual
