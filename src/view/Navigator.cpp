#include "view/Navigator.h"

#include "scene/core/CameraSnapshot.h"
#include "selection/VisualSelection.h"
#include "selection/geometry/Result.h"
#include "selection/pick/PickQuery.h"
#include "selection/region/RegionQuery.h"
#include "view/Camera.h"

#include <algorithm>
#include <cmath>

namespace vrk::visual {
namespace {

using rob::Posd;
using rob::Posed;
using rob::Vec3d;

constexpr double radiansPerPixel = 0.004; // as the camera's own orbit
constexpr double clickRadius = 4;         // pixels that a hand may tremble
constexpr double notch = 1.0 / 6;         // of the distance
constexpr double mostNotches = 20;
constexpr double nearest = 1e-3; // by the radius: how near the wheel leads to the place under the mouse at most

bool isPixel(double x, double y)
{
    return std::isfinite(x) && std::isfinite(y) && std::abs(x) < 1e6 && std::abs(y) < 1e6;
}

} // namespace

Navigator::Navigator(Camera& camera) : camera(camera), outline(camera) {}

bool Navigator::hasPixels() const
{
    return camera.getSnapshot().hasPixels();
}

selection::Result Navigator::pick(double x, double y) const
{
    selection::VisualSelection* service = selection::VisualSelection::Get();
    if (!service || !hasPixels())
        return {};
    service->update();
    selection::PickQuery query;
    query.camera = selection::PickCamera::From(camera.getSnapshot(), devicePixelRatio);
    query.x = x;
    query.y = y;
    using Kind = selection::PickKind;
    query.kinds = {Kind::Face,  Kind::MeshTriangle, Kind::Curve, Kind::Line,
                   Kind::Point, Kind::CloudPoint,   Kind::Frame, Kind::Target};
    const std::optional<selection::PickCandidate> found = query.askBest(*service);
    return found ? found->toResult() : selection::Result();
}

/// Settles what a gesture is about: the place under the mouse, else one on its ray as far away as the middle of what is shown.
void Navigator::takePlace(double x, double y)
{
    bounds = ViewBounds::OfScene();
    const Posd eye(camera.getWorldPosition());
    const selection::Result hit = pick(x, y);
    if (hit.hit) {
        focus = Posd(hit.position);
    } else {
        const Vec3d along(camera.getViewportRay(static_cast<float>(x), static_cast<float>(y)).direction);
        const double depth =
            std::clamp((bounds.getMiddle() - eye).dot(along), bounds.getRadius() / 2, 2 * bounds.getRoom());
        focus = Posd(eye + along * (depth / along.length()));
    }
    focus = bounds.within(focus);
}

void Navigator::press(Button button, double x, double y, bool isShiftDown)
{
    if (!hasPixels() || !isPixel(x, y) || isDragging())
        return;
    held = button;
    startX = lastX = x;
    startY = lastY = y;
    if (button == Button::Left) {
        drag = Drag::Click;
        mayBeRectangle = isShiftDown && onRegion;
        return;
    }
    takePlace(x, y);
    drag = button == Button::Middle && !isShiftDown ? Drag::Orbit : Drag::Pan;
}

void Navigator::move(double x, double y)
{
    if (!hasPixels() || !isPixel(x, y))
        return;
    const double dx = x - lastX, dy = y - lastY;
    lastX = x;
    lastY = y;
    switch (drag) {
    case Drag::Orbit:
        orbit(dx, dy);
        break;
    case Drag::Pan:
        pan(dx, dy);
        break;
    case Drag::Click:
        if (mayBeRectangle && std::hypot(x - startX, y - startY) > clickRadius) {
            drag = Drag::Rectangle;
            showRectangle();
        }
        break;
    case Drag::Rectangle:
        showRectangle();
        break;
    case Drag::None:
        if (onHover)
            onHover(pick(x, y));
    }
}

void Navigator::release(Button button, double x, double y)
{
    if (!isDragging() || button != held)
        return;
    const bool isClick = drag == Drag::Click && std::hypot(x - startX, y - startY) <= clickRadius;
    if (drag == Drag::Rectangle) {
        if (hasPixels() && isPixel(x, y)) {
            lastX = x;
            lastY = y;
        }
        const Rectangle drawn = endRectangle();
        if (onRegion && hasPixels())
            onRegion(ask(drawn));
        return;
    }
    drag = Drag::None;
    if (isClick && onClick)
        onClick(pick(x, y));
}

void Navigator::cancel()
{
    if (drag == Drag::Rectangle)
        endRectangle();
    drag = Drag::None;
}

void Navigator::showRectangle()
{
    const Rectangle drawn{startX, startY, lastX, lastY};
    outline.showRectangle({startX, startY}, {lastX, lastY},
                          drawn.takesWhatIsTouched() ? RegionOutline::Look::Dashes : RegionOutline::Look::Line,
                          devicePixelRatio);
    if (onRectangle)
        onRectangle(drawn);
}

Navigator::Rectangle Navigator::endRectangle()
{
    drag = Drag::None;
    outline.hide();
    if (onRectangle)
        onRectangle(std::nullopt);
    return {startX, startY, lastX, lastY};
}

selection::RegionAnswer Navigator::ask(const Rectangle& rectangle) const
{
    selection::VisualSelection* service = selection::VisualSelection::Get();
    if (!service)
        return {};
    using Query = selection::RegionQuery;
    Query query = Query::Rectangle(rectangle.fromX, rectangle.fromY, rectangle.toX, rectangle.toY);
    query.cover = rectangle.takesWhatIsTouched() ? Query::Cover::Touching : Query::Cover::WhollyInside;
    query.kinds.points = true;
    service->update();
    return service->askRegion(query, selection::RegionView(camera.getSnapshot()));
}

void Navigator::turnWheel(double x, double y, double notches)
{
    if (!hasPixels() || !isPixel(x, y) || std::isnan(notches))
        return;
    takePlace(x, y);
    Posed pose(camera.getWorldPose());
    const Vec3d way = pose.position - focus;
    const double distance = way.length();
    // What lies before the near plane is not picked: from nearer by the next notch would go through the surface.
    const double least = std::max(nearest * bounds.getRadius(), 2.0 * camera.getSnapshot().nearClip);
    if (distance < (notches > 0 ? least : nearest * bounds.getRadius()))
        return;
    const double wanted = distance * std::pow(1 - notch, std::clamp(notches, -mostNotches, mostNotches));
    pose.position = Posd(focus + way * (std::max(wanted, least) / distance));
    place(pose);
}

/// About the place and the camera's own axes; the place stays where it is in the picture.
void Navigator::orbit(double dx, double dy)
{
    const Posed view(camera.getWorldPose());
    const rob::Rotationd rotation = view.rotation().normalized();
    const rob::Rotationd turned = rotation * rob::Rotationd(-dy * radiansPerPixel, -dx * radiansPerPixel, 0);
    place(Posed(focus, turned) * (Posed(focus, rotation).inverse() * view));
}

/// The place follows the mouse: at its depth a pixel is so wide.
void Navigator::pan(double dx, double dy)
{
    Posed view(camera.getWorldPose());
    const double depth = std::clamp(-(view.inverse() * focus).z, nearest * bounds.getRadius(), 4 * bounds.getRoom());
    const double unit = camera.getSnapshot().unitsPerPixel(static_cast<float>(depth));
    view.position = Posd(view.position + view.rotation() * Vec3d(-dx * unit, dy * unit, 0));
    place(view);
}

void Navigator::place(const Posed& pose)
{
    const Posed wanted(pose.position, pose.rotation().normalized().orient());
    camera.setWorldPose(bounds.held(camera.getSnapshot(), rob::Posef(wanted)));
}

} // namespace vrk::visual
