#include "canvas/Mouse.h"

#include "canvas/CameraFlight.h"
#include "canvas/Pick.h"
#include "canvas/Picked.h"
#include "canvas/RegionTool.h"
#include "canvas/ViewState.h"
#include "canvas/ViewWidget.h"
#include "window/Settings.h"

#include "scene/Scene.h"
#include "selection/VisualSelection.h"
#include "view/Camera.h"
#include "view/OrbitViewController.h"
#include "visual/Visual.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace vrkview {
namespace {

using vrk::selection::Result;
using vrk::visual::Camera;
using vrk::visual::Scene;
using Kind = InputEvent::Kind;

constexpr int moveInterval = 8;        // milliseconds: two moves for a frame of a usual display
constexpr double usualClickRadius = 4; // logical pixels: a hand is not quite still while it clicks

float x(const QPointF& place)
{
    return static_cast<float>(place.x());
}

float y(const QPointF& place)
{
    return static_cast<float>(place.y());
}

/// Posts the mark of what the camera turns about, or its end.
void showPivot(bool shown)
{
    Scene::Get()->addRenderTask(
        [shown] {
            const vrk::rob::Posf& focus = Camera::Get()->getViewController()->getFocalPoint();
            Scene::Get()->setOrbitPivotVisible(shown, vrk::rob::Posef(focus, vrk::rob::Rotationf()));
        },
        0);
}

/// With Ctrl, what a region holds is added or taken out.
RegionTool::Effect effectOf(Qt::KeyboardModifiers modifiers)
{
    return modifiers.testFlag(Qt::ControlModifier) ? RegionTool::Effect::Toggle : RegionTool::Effect::Replace;
}

} // namespace

Mouse::Mouse(ViewWidget& view, ViewState& state, const Settings& settings, CameraFlight& flight, RegionTool& region,
             QObject* parent)
    : QObject(parent), view(view), state(state), settings(settings), flight(flight), region(region), hover(state)
{
    timer.setSingleShot(true);
    timer.setTimerType(Qt::PreciseTimer);
    connect(&timer, &QTimer::timeout, this, &Mouse::handleWaiting);
    sinceMove.start();
    using Place = const QPointF&;
    using Modifiers = Qt::KeyboardModifiers;
    connect(&view, &ViewWidget::mousePressed, this, [this](Place place, Qt::MouseButton button, Modifiers modifiers) {
        take({Kind::Press, place, button, {}, modifiers});
    });
    connect(&view, &ViewWidget::mouseReleased, this, [this](Place place, Qt::MouseButton button, Modifiers modifiers) {
        take({Kind::Release, place, button, {}, modifiers});
    });
    connect(&view, &ViewWidget::mouseDoubleClicked, this,
            [this](Place place, Qt::MouseButton button, Modifiers modifiers) {
                take({Kind::DoubleClick, place, button, {}, modifiers});
            });
    connect(&view, &ViewWidget::mouseMoved, this, [this](Place place, Qt::MouseButtons held, Modifiers modifiers) {
        waiting = InputEvent{Kind::Move, place, Qt::NoButton, held, modifiers};
        if (!timer.isActive())
            timer.start(static_cast<int>(std::max<qint64>(0, moveInterval - sinceMove.elapsed())));
    });
    connect(&view, &ViewWidget::mouseLeft, this, [this] { take({.kind = Kind::Leave, .place = {}}); });
    connect(&view, &ViewWidget::wheelTurned, this, [this](Place place, double notches, Modifiers modifiers) {
        take({Kind::Wheel, place, Qt::NoButton, {}, modifiers, notches});
    });
    connect(&view, &ViewWidget::drained, &hover, &Hover::followScene);
}

double Mouse::getClickRadius() const
{
    return clickRadius.value_or(usualClickRadius * view.devicePixelRatioF());
}

// Events

void Mouse::take(const InputEvent& event)
{
    handleWaiting();
    handle(event);
}

void Mouse::handleWaiting()
{
    timer.stop();
    if (!waiting)
        return;
    sinceMove.restart();
    const InputEvent event = *std::exchange(waiting, std::nullopt);
    handle(event);
}

void Mouse::handle(const InputEvent& event)
{
    const bool takesCamera = event.kind == Kind::Press || event.kind == Kind::DoubleClick || event.kind == Kind::Wheel;
    if (takesCamera)
        flight.stop();
    else if (event.kind == Kind::Move && !pressed && flight.isFlying())
        return; // what passes by under the mouse is of no interest
    emit handling(event);
    switch (event.kind) {
    case Kind::Press:
    case Kind::DoubleClick:
        press(event);
        break;
    case Kind::Release:
        release(event);
        break;
    case Kind::Move:
        move(event);
        break;
    case Kind::Leave:
        if (!isDragging())
            hover.clear();
        break;
    case Kind::Wheel:
        turnWheel(event);
        break;
    }
    emit handled();
}

void Mouse::press(const InputEvent& event)
{
    if (pressed)
        return; // another button of a gesture that goes on
    pressed = event;
    isSecondClick = event.kind == Kind::DoubleClick && event.button == Qt::LeftButton &&
                    event.modifiers == Qt::NoModifier; // with one, two quick clicks stay two
    if (!isSecondClick || region.isLassoOn())
        return;
    const Result result = pick(event.place, Purpose::Focus);
    if (const unsigned thing = thingOf(state.getTree(), result))
        emit focusRequested(thing);
}

void Mouse::release(const InputEvent& event)
{
    if (!pressed || pressed->button != event.button)
        return;
    if (isDragging())
        endDrag();
    else if (pressed->button == Qt::LeftButton && !clickLasso(event) && !isSecondClick)
        click();
    pressed.reset();
}

void Mouse::move(const InputEvent& event)
{
    // A release that went elsewhere, as to a dialog, ends the gesture as well.
    if (pressed && !event.held.testFlag(pressed->button)) {
        giveUpDrag();
        pressed.reset();
    }
    if (pressed) {
        const QPointF way = event.place - pressed->place;
        if (!isDragging() && std::hypot(way.x(), way.y()) > getClickRadius())
            startDrag();
        if (isDragging())
            dragOn(event.place);
    } else if (region.isDrawing()) {
        region.follow(event.place);
    } else if (event.held == Qt::NoButton) {
        const bool ofFaces = event.modifiers.testFlag(Qt::AltModifier);
        hover.show(pick(event.place, Purpose::Hover), ofFaces ? Hover::Of::Face : Hover::Of::Thing);
    }
}

void Mouse::turnWheel(const InputEvent& event)
{
    // Parts of a notch, from fine wheels, wait for the whole; turning back starts anew.
    wheelRest = wheelRest * event.notches < 0 ? event.notches : wheelRest + event.notches;
    const double whole = std::trunc(wheelRest);
    wheelRest -= whole;
    for (int i = 0; i < std::abs(static_cast<int>(whole)); ++i) {
        prepareNavigation();
        Camera::Get()->zoom(x(event.place), y(event.place), 0, whole > 0 ? 1.0f : -1.0f);
    }
}

// Drags

void Mouse::startDrag()
{
    drag = dragOfPress();
    last = pressed->place;
    hover.clear();
    if (drag == Drag::Region)
        beginRegion();
    if (drag != Drag::Orbit)
        return;
    prepareNavigation();
    Camera::Get()->startRotating(x(last), y(last));
    showPivot(true);
}

void Mouse::beginRegion()
{
    if (region.isDrawing())
        return; // a polygon goes on, corner by corner
    region.begin(region.isLassoOn() ? RegionTool::Shape::Freehand : RegionTool::Shape::Rectangle, pressed->place,
                 effectOf(pressed->modifiers));
}

Mouse::Drag Mouse::dragOfPress()
{
    if (pressed->button == Qt::LeftButton && (region.isLassoOn() || (pressed->modifiers.testFlag(Qt::ShiftModifier) &&
                                                                     !pressed->modifiers.testFlag(Qt::AltModifier))))
        return Drag::Region;
    if (isSecondClick)
        return Drag::Nothing; // the camera is on its way
    const bool withLeft = settings.mouseStyle() == Settings::MouseStyle::OrbitWithLeft;
    switch (pressed->button) {
    case Qt::MiddleButton:
        return pressed->modifiers.testFlag(Qt::ShiftModifier) ? Drag::Pan : Drag::Orbit;
    case Qt::RightButton:
        return withLeft ? Drag::Pan : Drag::Nothing;
    case Qt::LeftButton:
        return withLeft || !pick(pressed->place, Purpose::Orbit).hit ? Drag::Orbit : Drag::Nothing;
    default:
        return Drag::Nothing;
    }
}

void Mouse::dragOn(const QPointF& place)
{
    const QPointF way = place - last;
    if (drag == Drag::Orbit) {
        Camera::Get()->rotateScene(x(way), y(way));
    } else if (drag == Drag::Pan) {
        prepareNavigation();
        // From where the thing was grabbed: there it still lies under the mouse.
        Camera::Get()->translateScene(x(last), y(last), x(way), y(way));
    } else if (drag == Drag::Region) {
        region.follow(place);
    }
    last = place;
}

void Mouse::endDrag()
{
    if (drag == Drag::Orbit)
        showPivot(false);
    else if (drag == Drag::Region)
        endRegion();
    drag = Drag::None;
}

void Mouse::giveUpDrag()
{
    if (drag == Drag::Region) {
        region.cancel();
        drag = Drag::None;
    }
    endDrag();
}

/// Corners of a polygon may be set by short drags, too.
void Mouse::endRegion()
{
    if (region.getShape() == RegionTool::Shape::Polygon)
        region.addCorner(last);
    else
        region.finish();
}

// Clicks and picks

void Mouse::click()
{
    const Qt::KeyboardModifiers modifiers = pressed->modifiers;
    const Result result = pick(pressed->place, Purpose::Click);
    if (modifiers.testFlag(Qt::AltModifier)) {
        modifiers.testFlag(Qt::ControlModifier) ? clickEdge(result) : clickFace(result);
        return;
    }
    const unsigned thing = thingOf(state.getTree(), result);
    const bool adds = modifiers.testFlag(Qt::ControlModifier);
    if (thing == 0) {
        if (!adds)
            state.clear();
    } else if (adds) {
        state.toggle(thing);
    } else {
        state.selectVisuals({thing});
    }
}

/// A click while the lasso is on sets a corner, the second one of a double click ends the polygon.
bool Mouse::clickLasso(const InputEvent& event)
{
    if (!region.isLassoOn())
        return false;
    if (isSecondClick && region.isDrawing())
        region.finish(effectOf(event.modifiers));
    else if (!region.isDrawing())
        region.begin(RegionTool::Shape::Polygon, event.place, effectOf(event.modifiers));
    else
        region.addCorner(event.place);
    return true;
}

void Mouse::clickFace(const Result& result)
{
    if (const unsigned face = faceOf(result)) {
        const bool asSide = pressed->modifiers.testFlag(Qt::ShiftModifier);
        state.toggleFace(result.visual->getId(), face, asSide ? ViewState::FaceUse::Side : ViewState::FaceUse::Base);
    }
}

void Mouse::clickEdge(const Result& result)
{
    if (const unsigned edge = edgeOf(result))
        state.toggleEdge(result.visual->getId(), edge);
}

Result Mouse::pick(const QPointF& place, Purpose purpose)
{
    view.drain(); // the answer is of what the user sees next, not of what was before the last posts
    const Result result = pickAt(x(place), y(place)).result;
    emit picked(purpose, result);
    return result;
}

void Mouse::prepareNavigation()
{
    // The camera asks picking for what lies under the mouse, and a service that is out of date answers nothing.
    view.drain();
    vrk::selection::VisualSelection::Get()->update();
}

} // namespace vrkview
