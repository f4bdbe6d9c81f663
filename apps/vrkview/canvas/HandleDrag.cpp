#include "canvas/HandleDrag.h"

#include "docks/Properties.h"

#include <QObject>

#include <numbers>

namespace vrkview {
namespace {

using vrk::rob::Posed;
using vrk::visual::AxisDrag;
using vrk::visual::CameraSnapshot;
using vrk::visual::DragAnswer;
using vrk::visual::DragAxes;
using vrk::visual::RingDrag;
using Handle = HandleDrag::Handle;
using Pixel = vrk::rob::Vec2Template<double>;
using Way = std::variant<AxisDrag, RingDrag>;

constexpr double degrees = 180 / std::numbers::pi;

bool isArrow(Handle handle)
{
    return handle <= Handle::Z;
}

Pixel toPixel(const QPointF& place)
{
    return {place.x(), place.y()};
}

Way wayOf(Handle handle, const CameraSnapshot& camera, const Posed& at, DragAxes axes, const QPointF& mouse)
{
    const unsigned axis = static_cast<unsigned>(handle) % 3; // arrows and rings stand in the order of their axes
    if (isArrow(handle))
        return AxisDrag(camera, at, axis, axes, toPixel(mouse));
    return RingDrag(camera, at, axis, axes, toPixel(mouse));
}

} // namespace

HandleDrag::HandleDrag(Handle handle, const CameraSnapshot& camera, const Posed& at, DragAxes axes,
                       const QPointF& mouse)
    : handle(handle), view(camera), centre(at.position), way(wayOf(handle, camera, at, axes, mouse))
{
}

bool HandleDrag::isLength() const
{
    return isArrow(handle);
}

DragAnswer HandleDrag::moveTo(const QPointF& mouse)
{
    DragAnswer answer = std::visit([&](auto& drag) { return drag.moveTo(toPixel(mouse)); }, way);
    if (answer.value && !isLength())
        *answer.value *= degrees;
    return answer;
}

void HandleDrag::changeView(const CameraSnapshot& camera, const QPointF& mouse)
{
    if (camera == view)
        return;
    view = camera;
    std::visit([&](auto& drag) { drag.changeView(camera, toPixel(mouse)); }, way);
}

// Reckoned on the base: the orientation stays as it is, to the last digit.
Posed HandleDrag::PoseAfter(const vrk::rob::Vec3d& way, const Posed& base, const Posed& start)
{
    return {start.position + base.rotation().normalized().inverse() * way, start.orientation};
}

Posed HandleDrag::poseAfter(double amount, const Posed& base, const Posed& start) const
{
    if (const auto* push = std::get_if<AxisDrag>(&way))
        return PoseAfter(vrk::rob::Vec3d(push->getDirection()) * amount, base, start);
    const vrk::rob::Rotationd toBase = base.rotation().normalized().inverse();
    const vrk::rob::Rotationd turn(amount / degrees, toBase * std::get<RingDrag>(way).getAxis());
    const vrk::rob::Posd about = base.inverse() * centre;
    return {about + turn * (start.position - about), turn * start.rotation()};
}

QString HandleDrag::textOf(double amount) const
{
    const QString number = fixedNumber(amount, 2);
    return (number.startsWith('-') ? QString() : QStringLiteral("+")) + number + UnitOf(handle);
}

QString HandleDrag::UnitOf(Handle handle)
{
    return isArrow(handle) ? QObject::tr(" mm") : QStringLiteral("°");
}

} // namespace vrkview
