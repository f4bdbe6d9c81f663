#pragma once

#include "handles/DragAnswer.h"
#include "scene/core/CameraSnapshot.h"

namespace vrk::visual {

/// A drag about an axis, as a ring in a plane through the pose is turned, by a view that stands still.
///
/// The answer is in radians, counterclockwise as seen from the tip of the axis, and goes on over whole turns: it takes the
/// way to the mouse that is shorter than half a turn. There is none where the ring is seen from its edge, beyond its horizon,
/// and right at its centre.
///
/// A value, as `AxisDrag`.
class VRK_EXPORT RingDrag {
public:
    RingDrag(const CameraSnapshot& view, const rob::Posed& pose, unsigned axis, DragAxes axes,
             const rob::Vec2Template<double>& mouse);

    static DragRefusal RefusalIn(const CameraSnapshot& view, const rob::Posd& centre, const rob::Dird& axis);

    DragAnswer moveTo(const rob::Vec2Template<double>& mouse);
    void changeView(const CameraSnapshot& view, const rob::Vec2Template<double>& mouse);
    double getValue() const { return value; }
    const rob::Dird& getAxis() const { return axis; }
    /// What is dragged, turned about the axis through its origin.
    rob::Posed poseAt(double angle) const;

private:
    DragAnswer angleUnder(const rob::Vec2Template<double>& mouse) const;
    void takeHold(const rob::Vec2Template<double>& mouse);

    CameraSnapshot view;
    rob::Posed start;
    rob::Dird axis;
    std::optional<double> last; // the angle of the mouse when there was an answer last
    double value = 0;
};

} // namespace vrk::visual
