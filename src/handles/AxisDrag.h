#pragma once

#include "handles/DragAnswer.h"
#include "scene/core/CameraSnapshot.h"

namespace vrk::visual {

/// A drag along an axis, by a view that stands still.
///
/// What is told is the place of the axis whose image is nearest to the mouse, less the place where it was taken hold of. It
/// goes smoothly with the mouse, and is never the far side of a vanishing point: where the line of sight and the axis come
/// close to one direction there is no answer.
///
/// A value: it touches no OGRE object. Any thread; in doubles, so that a pixel of a long drag is as exact as that of a short
/// one. Lengths are model units.
class VRK_EXPORT AxisDrag {
public:
    /// @param pose  of what is dragged, in the world.
    /// @param mouse  pixels from the top left corner, where it was taken hold of.
    AxisDrag(const CameraSnapshot& view, const rob::Posed& pose, unsigned axis, DragAxes axes,
             const rob::Vec2Template<double>& mouse);

    /// Whether a handle along this direction at this place is of use in a view, and if not, why.
    static DragRefusal RefusalIn(const CameraSnapshot& view, const rob::Posd& place, const rob::Dird& direction);

    DragAnswer moveTo(const rob::Vec2Template<double>& mouse);
    /// Goes on in another view, with the mouse where it is now: what has been dragged so far stays.
    void changeView(const CameraSnapshot& view, const rob::Vec2Template<double>& mouse);
    /// The last answer that there was; 0 before the first.
    double getValue() const { return value; }
    const rob::Dird& getDirection() const { return direction; }
    /// Where what is dragged is after that way.
    rob::Posed poseAt(double distance) const;

private:
    DragAnswer placeUnder(const rob::Vec2Template<double>& mouse) const;
    void takeHold(const rob::Vec2Template<double>& mouse);

    CameraSnapshot view;
    rob::Posed start;
    rob::Dird direction;
    // The place that was taken hold of, less the value then; none before there was an answer in this view.
    std::optional<double> grip;
    double value = 0;
};

} // namespace vrk::visual
