#include "handles/AxisDrag.h"

#include "handles/DragLens.h"

#include <cmath>

namespace vrk::visual {
namespace {

using Pixel = rob::Vec2Template<double>;

constexpr double parallel = 1e-9; // a slope below it is rounding

} // namespace

AxisDrag::AxisDrag(const CameraSnapshot& view, const rob::Posed& pose, unsigned axis, DragAxes axes, const Pixel& mouse)
    : view(view), start(pose), direction(dragDirection(pose, axis, axes))
{
    takeHold(mouse);
}

DragRefusal AxisDrag::RefusalIn(const CameraSnapshot& view, const rob::Posd& place, const rob::Dird& direction)
{
    if (!view.hasPixels())
        return DragRefusal::NoPixels;
    const DragLens lens(view);
    if (!lens.isFinite() || !place.isFinite() || !direction.isFinite())
        return DragRefusal::NotFinite;
    const rob::Vec3d at = lens.toCamera(place);
    if (!lens.isBefore(at))
        return DragRefusal::BehindViewer;
    return sineBetween(lens.sightTo(at), lens.toCamera(direction)) < smallestDragSine ? DragRefusal::TowardsViewer
                                                                                      : DragRefusal::None;
}

void AxisDrag::takeHold(const Pixel& mouse)
{
    const DragAnswer under = placeUnder(mouse);
    grip.reset();
    if (under.value)
        grip = *under.value - value;
}

DragAnswer AxisDrag::moveTo(const Pixel& mouse)
{
    DragAnswer answer = placeUnder(mouse);
    if (!answer.value)
        return answer;
    if (!grip) // taken hold of only now
        grip = *answer.value - value;
    value = *answer.value - *grip;
    return {value, DragRefusal::None};
}

void AxisDrag::changeView(const CameraSnapshot& next, const Pixel& mouse)
{
    view = next;
    takeHold(mouse);
}

/// How far along the axis from its start the mouse is: the point of the axis's image that is nearest, brought back.
DragAnswer AxisDrag::placeUnder(const Pixel& mouse) const
{
    if (!isFinite(start, mouse))
        return {{}, DragRefusal::NotFinite};
    // By the place that was under the mouse last, which this view tells, and else by where the thing is.
    const double known = value + grip.value_or(0);
    const rob::Posd reference = start.position + rob::Vec3d(direction) * known;
    if (const DragRefusal refusal = RefusalIn(view, reference, direction); refusal != DragRefusal::None)
        return {{}, refusal};

    const DragLens lens(view);
    const rob::Vec3d origin = lens.toCamera(reference);
    const rob::Vec3d along = lens.toCamera(direction);
    // The image of the axis is a straight line.
    const Pixel image = lens.imageOf(origin);
    const Pixel speed = lens.imageSpeed(origin, along);
    const double pixelsPerUnit = speed.length();
    const Pixel way = speed * (1 / pixelsPerUnit);
    const double goal = way.dot(mouse - image);
    // The plane through the line of sight that lies across the image meets the axis in the place looked for. It is spanned by
    // the lines of sight through the nearest pixel and through one beside it.
    const Pixel nearest = image + way * goal;
    const rob::Vec3d sight = lens.directionOf(nearest);
    const rob::Vec3d from = lens.originOf(nearest);
    const Pixel beside(nearest.x - way.y, nearest.y + way.x);
    const rob::Vec3d across = lens.originOf(beside) + lens.directionOf(beside) - from - sight;
    const rob::Vec3d normal = sight.cross(across);
    const double speedThere = normal.dot(along);
    if (std::abs(speedThere) < parallel * normal.length())
        return {{}, DragRefusal::TowardsViewer}; // the vanishing point
    const double distance = normal.dot(from - origin) / speedThere;
    const rob::Vec3d place = origin + along * distance;
    if (!lens.isBefore(place)) // beyond the vanishing point it is the other end of the axis that is seen there
        return {{}, DragRefusal::TowardsViewer};
    if (sineBetween(lens.sightTo(place), along) < smallestDragSine)
        return {{}, DragRefusal::TowardsViewer};
    return {known + distance, DragRefusal::None};
}

rob::Posed AxisDrag::poseAt(double distance) const
{
    return {start.position + rob::Vec3d(direction) * distance, start.orientation};
}

} // namespace vrk::visual
