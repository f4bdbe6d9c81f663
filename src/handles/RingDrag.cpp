#include "handles/RingDrag.h"

#include "handles/DragLens.h"

#include <cmath>
#include <numbers>

namespace vrk::visual {
namespace {

using Pixel = rob::Vec2Template<double>;

constexpr double centreRadius = 3.0; // pixels, about the centre of a ring

/// The difference of two angles as the way that is not longer than half a turn.
double shortWay(double angle)
{
    return std::remainder(angle, 2 * std::numbers::pi);
}

} // namespace

RingDrag::RingDrag(const CameraSnapshot& view, const rob::Posed& pose, unsigned axis, DragAxes axes, const Pixel& mouse)
    : view(view), start(pose), axis(dragDirection(pose, axis, axes))
{
    takeHold(mouse);
}

DragRefusal RingDrag::RefusalIn(const CameraSnapshot& view, const rob::Posd& centre, const rob::Dird& axis)
{
    if (!view.hasPixels())
        return DragRefusal::NoPixels;
    const DragLens lens(view);
    if (!lens.isFinite() || !centre.isFinite() || !axis.isFinite())
        return DragRefusal::NotFinite;
    const rob::Vec3d at = lens.toCamera(centre);
    if (!lens.isBefore(at))
        return DragRefusal::BehindViewer;
    const rob::Vec3d sight = lens.sightTo(at);
    const double sine = std::abs(lens.toCamera(axis).dot(sight)) / sight.length();
    return sine < smallestDragSine ? DragRefusal::SeenEdgeOn : DragRefusal::None;
}

void RingDrag::takeHold(const Pixel& mouse)
{
    last = angleUnder(mouse).value;
}

DragAnswer RingDrag::moveTo(const Pixel& mouse)
{
    DragAnswer answer = angleUnder(mouse);
    if (!answer.value)
        return answer;
    if (last)
        value += shortWay(*answer.value - *last);
    last = answer.value;
    return {value, DragRefusal::None};
}

void RingDrag::changeView(const CameraSnapshot& next, const Pixel& mouse)
{
    view = next;
    takeHold(mouse);
}

/// The angle of the place of the ring's plane under the mouse, counted from an axis across.
DragAnswer RingDrag::angleUnder(const Pixel& mouse) const
{
    if (!isFinite(start, mouse))
        return {{}, DragRefusal::NotFinite};
    if (const DragRefusal refusal = RefusalIn(view, start.position, axis); refusal != DragRefusal::None)
        return {{}, refusal};

    const DragLens lens(view);
    const rob::Vec3d centre = lens.toCamera(start.position);
    const rob::Vec3d normal = lens.toCamera(axis);
    if ((mouse - lens.imageOf(centre)).length() < centreRadius)
        return {{}, DragRefusal::AtCentre};
    const rob::Vec3d from = lens.originOf(mouse);
    const rob::Vec3d sight = lens.directionOf(mouse);
    const double slope = normal.dot(sight) / sight.length();
    if (std::abs(slope) < smallestDragSine)
        return {{}, DragRefusal::SeenEdgeOn}; // towards the horizon of the plane
    const rob::Vec3d place = from + sight * (normal.dot(centre - from) / normal.dot(sight));
    if (!lens.isBefore(place))
        return {{}, DragRefusal::BehindViewer};

    const rob::Vec3d arm = place - centre;
    // Any axis across does, as long as it stays the same in every view: it is chosen in the world.
    const rob::Dird helper = std::abs(axis.x) < 0.6 ? rob::Dird(1, 0, 0) : rob::Dird(0, 1, 0);
    const rob::Dird x = rob::normalized(axis.cross(helper));
    const rob::Dird y(axis.cross(x));
    return {std::atan2(arm.dot(lens.toCamera(y)), arm.dot(lens.toCamera(x))), DragRefusal::None};
}

rob::Posed RingDrag::poseAt(double angle) const
{
    return {start.position, rob::Rotationd(angle, axis) * start.rotation()};
}

} // namespace vrk::visual
