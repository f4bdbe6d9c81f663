#include "canvas/Mouse.h"

#include "canvas/BandTool.h"
#include "canvas/CameraFlight.h"
#include "canvas/FrameTool.h"
#include "canvas/MoveTool.h"
#include "canvas/RegionTool.h"
#include "canvas/ViewState.h"
#include "canvas/ViewWidget.h"
#include "measure/MeasureTool.h"
#include "measure/StationDimensions.h"
#include "window/Settings.h"

#include "visual/Visual.h"

#include <QGuiApplication>

#include <algorithm>
#include <cmath>
#include <utility>

namespace vrkview {
namespace {

using Kind = InputEvent::Kind;

constexpr int moveInterval = 8;        // milliseconds: two moves for a frame of a usual display
constexpr double usualClickRadius = 4; // logical pixels: a hand is not quite still while it clicks
constexpr int usualLongPress = 600;    // milliseconds: twice as long as a slow click
constexpr double listRadius = 16;      // logical pixels that the mouse may move while candidates are listed

/// Alt is for pieces of solids.
PickAim aimOf(Qt::KeyboardModifiers modifiers)
{
    if (!modifiers.testFlag(Qt::AltModifier))
        return PickAim::Thing;
    return modifiers.testFlag(Qt::ControlModifier) ? PickAim::Edge : PickAim::Face;
}

/// With Ctrl, what a region holds is added or taken out.
RegionTool::Effect effectOf(Qt::KeyboardModifiers modifiers)
{
    return modifiers.testFlag(Qt::ControlModifier) ? RegionTool::Effect::Toggle : RegionTool::Effect::Replace;
}

} // namespace

Mouse::Mouse(ViewWidget& view, ViewState& state, const Settings& settings, CameraFlight& flight, RegionTool& region,
             MoveTool& mover, BandTool& bandTool, MeasureTool& measurer, FrameTool& framer, QObject* parent)
    : QObject(parent), view(view), state(state), settings(settings), flight(flight), region(region), mover(mover),
      bandTool(bandTool), measurer(measurer), framer(framer), navigation(view), finder(view, state.getTree()),
      hover(state), candidates(new CandidateList(&view))
{
    longPress.setSingleShot(true);
    longPress.setInterval(usualLongPress);
    connect(&longPress, &QTimer::timeout, this, &Mouse::pressedLong);
    connect(candidates, &CandidateList::currentChanged, this, &Mouse::showCandidate);
    connect(candidates, &CandidateList::rowClicked, this, [this] {
        const Qt::KeyboardModifiers modifiers = QGuiApplication::keyboardModifiers();
        emit candidateClicked(candidates->currentRow(), modifiers);
        takeCandidate(candidates->currentRow(), modifiers);
    });
    connect(&finder, &ViewPick::changed, this, &Mouse::closeCandidates);
    connect(&state, &ViewState::stationChanged, this, &Mouse::closeCandidates);
    connect(&state, &ViewState::visibilityChanged, this, &Mouse::closeCandidates);
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
    connect(&view, &ViewWidget::drained, this, [this] {
        if (candidates->isStale())
            closeCandidates();
    });
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
    isUpToDate = false;
    lastPlace = event.kind == Kind::Leave ? std::nullopt : std::optional(event.place);
    if (!isForCandidates(event) && !isForHandle(event))
        act(event);
    emit handled();
}

void Mouse::act(const InputEvent& event)
{
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
        if (!isDragging()) {
            hover.clear();
            measurer.leave();
            StationDimensions::Get().setHovered(nullptr);
            if (framer.isOn())
                framer.leave();
        }
        break;
    case Kind::Wheel:
        turnWheel(event);
        break;
    }
}

void Mouse::press(const InputEvent& event)
{
    if (pressed)
        return; // another button of a gesture that goes on
    pressed = event;
    isSpent = false;
    isSecondClick = event.kind == Kind::DoubleClick && event.button == Qt::LeftButton &&
                    event.modifiers == Qt::NoModifier && // with one, two quick clicks stay two
                    !isPicking();                        // and so do those that pick
    const bool mayBecomeLong = event.button == Qt::LeftButton && event.modifiers == Qt::NoModifier &&
                               longPress.interval() > 0 && !isSecondClick && !region.isLassoOn() && !isPicking();
    if (mayBecomeLong)
        longPress.start();
    if (!isSecondClick || region.isLassoOn())
        return;
    if (const auto found = pick(event.place, Purpose::Focus, PickAim::Thing); found && found->thing != 0)
        emit focusRequested(found->thing);
}

void Mouse::release(const InputEvent& event)
{
    if (!pressed || pressed->button != event.button)
        return;
    longPress.stop();
    if (isDragging())
        endDrag();
    else if (!isSpent && pressed->button == Qt::LeftButton && !clickFrame() && !clickLasso(event) &&
             !clickDimension(event) && !isSecondClick)
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
        hoverAt(event);
    }
}

void Mouse::hoverAt(const InputEvent& event)
{
    if (framer.isOn()) {
        hover.clear();
        bringUpToDate();
        framer.hoverAt(event.place);
        return;
    }
    if (measurer.isOn()) {
        bringUpToDate();
        hover.clear();
        measurer.hover(event.place, event.modifiers);
        return;
    }
    StationDimensions& dimensions = StationDimensions::Get();
    const DimensionPointer dimension = dimensions.textAt(event.place.x(), event.place.y());
    dimensions.setHovered(dimension);
    if (dimension) {
        hover.clear();
        return;
    }
    const PickAim aim = aimOf(event.modifiers);
    const auto found = pick(event.place, Purpose::Hover, aim);
    if (!found) {
        hover.clear();
        return;
    }
    if (aim == PickAim::Thing && !finder.takesPieces()) {
        hover.show(*found, Hover::Of::Thing);
        return;
    }
    // With Ctrl the edge would be taken that lies near by: it is shown before that, too.
    const auto edge = aim == PickAim::Face ? finder.at(event.place, PickAim::Edge) : std::nullopt;
    const bool isOfFace = edge && edge->candidate.visualId == found->candidate.visualId;
    hover.show(*found, Hover::Of::Piece, isOfFace ? &*edge : nullptr);
}

void Mouse::turnWheel(const InputEvent& event)
{
    // Parts of a notch, from fine wheels, wait for the whole; turning back starts anew.
    wheelRest = wheelRest * event.notches < 0 ? event.notches : wheelRest + event.notches;
    const double whole = std::trunc(wheelRest);
    wheelRest -= whole;
    if (framer.isOn())
        framer.leave(); // its sign lies where the place was
    navigation.zoom(event.place, static_cast<int>(whole));
}

// Drags

void Mouse::startDrag()
{
    longPress.stop();
    drag = dragOfPress();
    last = pressed->place;
    hover.clear();
    measurer.leave();
    if (framer.isOn())
        framer.leave();
    if (drag == Drag::Region)
        beginRegion();
    else if (drag == Drag::Orbit)
        navigation.beginOrbit(last);
    else if (drag == Drag::Pan)
        navigation.beginPan();
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
    if (isSpent)
        return Drag::Nothing;
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
        return withLeft || !pick(pressed->place, Purpose::Orbit, PickAim::Thing) ? Drag::Orbit : Drag::Nothing;
    default:
        return Drag::Nothing;
    }
}

void Mouse::dragOn(const QPointF& place)
{
    const QPointF way = place - last;
    if (drag == Drag::Orbit)
        navigation.orbit(way);
    else if (drag == Drag::Pan)
        navigation.pan(last, way);
    else if (drag == Drag::Region)
        region.follow(place);
    last = place;
}

void Mouse::endDrag()
{
    if (drag == Drag::Orbit)
        navigation.endOrbit();
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
    const auto found = pick(pressed->place, Purpose::Click, aimOf(pressed->modifiers));
    apply(found ? &*found : nullptr, pressed->modifiers);
}

/// What a click does with what it found.
void Mouse::apply(const Picked* found, Qt::KeyboardModifiers modifiers)
{
    const bool adds = modifiers.testFlag(Qt::ControlModifier);
    if (modifiers.testFlag(Qt::AltModifier)) {
        if (found && adds)
            state.toggleEdge(found->candidate.visualId, found->edge());
        else if (found)
            toggleFace(*found, modifiers);
    } else if (!found || found->thing == 0) {
        if (!adds)
            state.clear();
    } else if (finder.takesPieces()) {
        applyToPiece(*found, modifiers);
    } else {
        applyToThing(found->thing, adds);
    }
}

void Mouse::applyToThing(unsigned thing, bool adds)
{
    if (adds)
        state.toggle(thing);
    else
        state.selectVisuals({thing});
}

void Mouse::applyToPiece(const Picked& found, Qt::KeyboardModifiers modifiers)
{
    const bool adds = modifiers.testFlag(Qt::ControlModifier);
    const bool isPoint = found.candidate.kind == vrk::selection::PickKind::CloudPoint;
    if (isPoint) {
        togglePoint(found, adds);
        return;
    }
    if (found.face() == 0 && found.edge() == 0) { // a vertex stands for its thing, a frame is one
        applyToThing(found.thing, adds);
        return;
    }
    if (!adds)
        state.clear();
    if (found.face() != 0)
        toggleFace(found, modifiers);
    else
        state.toggleEdge(found.candidate.visualId, found.edge());
}

void Mouse::toggleFace(const Picked& found, Qt::KeyboardModifiers modifiers)
{
    const bool asSide = modifiers.testFlag(Qt::ShiftModifier);
    state.toggleFace(found.candidate.visualId, found.face(),
                     asSide ? ViewState::FaceUse::Side : ViewState::FaceUse::Base);
}

void Mouse::togglePoint(const Picked& found, bool adds)
{
    ViewState::CloudPoints points;
    if (adds)
        points = state.getSelectedPoints();
    const auto number = static_cast<std::uint32_t>(found.candidate.subId);
    std::vector<std::uint32_t>& ofCloud = points[found.candidate.visualId];
    const auto place = std::ranges::lower_bound(ofCloud, number);
    if (place != ofCloud.end() && *place == number)
        ofCloud.erase(place);
    else
        ofCloud.insert(place, number);
    state.selectPoints(std::move(points));
}

/// For a tool, for which each click counts by itself.
bool Mouse::isPicking() const
{
    return measurer.isOn() || framer.isOn();
}

/// A click while a frame is defined is one of its picks.
bool Mouse::clickFrame()
{
    if (!framer.isOn())
        return false;
    bringUpToDate();
    framer.pickAt(pressed->place);
    return true;
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

/// A click while something is measured, or on the text of a dimension, which is selected then.
bool Mouse::clickDimension(const InputEvent& event)
{
    if (measurer.isOn()) {
        bringUpToDate();
        measurer.click(event.place, event.modifiers);
        return true;
    }
    StationDimensions& dimensions = StationDimensions::Get();
    const DimensionPointer found = dimensions.textAt(event.place.x(), event.place.y());
    if (!found) {
        dimensions.select({});
        return false;
    }
    state.clear();
    dimensions.select({found});
    return true;
}

/// What is asked in an event is of what the user sees next, not of what was before the last posts. Once for all questions of
/// one event.
void Mouse::bringUpToDate()
{
    if (!std::exchange(isUpToDate, true))
        view.drain();
}

std::optional<Picked> Mouse::pick(const QPointF& place, Purpose purpose, PickAim aim)
{
    bringUpToDate();
    std::optional<Picked> found = finder.at(place, aim);
    emit picked(purpose, found ? &*found : nullptr);
    return found;
}

// Candidates

void Mouse::listCandidates(int step)
{
    handleWaiting();
    if (candidates->isOpen()) {
        candidates->step(step);
        return;
    }
    if (!lastPlace || isDragging() || region.isDrawing() || framer.isOn() || flight.isFlying())
        return;
    view.drain();
    std::vector<Picked> found = finder.allAt(*lastPlace, PickAim::Thing);
    std::erase_if(found, [this](const Picked& picked) { return state.isHidden(picked.thing); });
    isSpent = pressed.has_value();
    listedAt = *lastPlace;
    candidates->open(std::move(found), view.mapToGlobal((listedAt / view.devicePixelRatioF()).toPoint()));
    emit candidatesChanged();
}

void Mouse::takeCandidate(int row, Qt::KeyboardModifiers modifiers)
{
    if (row < 0 || static_cast<std::size_t>(row) >= candidates->getAll().size())
        return;
    const Picked found = candidates->getAll()[static_cast<std::size_t>(row)];
    closeCandidates();
    emit picked(Purpose::Click, &found);
    apply(&found, modifiers & ~Qt::AltModifier); // pieces are not listed for it
}

bool Mouse::closeCandidates()
{
    if (!candidates->isOpen())
        return false;
    candidates->dismiss();
    hover.clear();
    emit candidatesChanged();
    return true;
}

/// Whether an event is meant for the list, and for nothing else. Any that is not ends the list.
bool Mouse::isForCandidates(const InputEvent& event)
{
    if (!candidates->isOpen())
        return false;
    const QPointF way = event.place - listedAt;
    const bool isNear = std::hypot(way.x(), way.y()) <= listRadius * view.devicePixelRatioF();
    switch (event.kind) {
    case Kind::Release: // of the press that listed them
        return false;
    case Kind::Leave: // for the list
        return true;
    case Kind::Move:
        if (isNear)
            return true;
        break;
    case Kind::Press:
        if (isNear && event.button == Qt::LeftButton && !pressed) {
            pressed = event;
            isSpent = true;
            isSecondClick = false;
            takeCandidate(candidates->currentRow(), event.modifiers);
            return true;
        }
        break;
    default:
        break;
    }
    closeCandidates();
    return false;
}

/// Whether an event is meant for the handle of the thing that is moved. What goes on without it does so.
bool Mouse::isForHandle(const InputEvent& event)
{
    if (pressed || region.isDrawing())
        return false;
    if (mover.asksFor(event) || bandTool.asksFor(event))
        bringUpToDate();
    if (!mover.take(event) && !bandTool.take(event))
        return false;
    hover.clear();
    return true;
}

void Mouse::showCandidate()
{
    if (const Picked* picked = candidates->current())
        hover.show(*picked, finder.takesPieces() ? Hover::Of::Piece : Hover::Of::Thing);
}

} // namespace vrkview
