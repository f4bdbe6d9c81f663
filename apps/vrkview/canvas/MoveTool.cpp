#include "canvas/MoveTool.h"

#include "canvas/ViewState.h"
#include "canvas/ViewWidget.h"
#include "edit/History.h"
#include "edit/ModelPlaces.h"

#include "platform/sdf/SdfManager.h"
#include "scene/Scene.h"
#include "selection/VisualSelection.h"
#include "selection/pick/PickQuery.h"
#include "view/Camera.h"

#include <QKeyEvent>
#include <QScopedValueRollback>

#include <algorithm>
#include <functional>
#include <utility>

namespace vrkview {
namespace {

using vrk::rob::Posed;
using vrk::selection::PickCandidate;
using vrk::selection::PickKind;
using vrk::selection::PickQuery;
using vrk::selection::VisualSelection;
using vrk::visual::Camera;
using vrk::visual::DragAnswer;
using vrk::visual::DragAxes;
using vrk::visual::DragHandle;
using vrk::visual::Scene;
using Handle = DragHandle::HandleType;
using Kind = InputEvent::Kind;

const QString backspace = QStringLiteral("Backspace");
const QString enter = QStringLiteral("Return");
const QString caret = QStringLiteral("│");

/// The name of a key that may be of a number; empty for any other.
QString keyOf(const QKeyEvent& event)
{
    if ((event.modifiers() & ~Qt::KeypadModifier) != Qt::NoModifier)
        return {};
    switch (event.key()) {
    case Qt::Key_Backspace:
        return backspace;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        return enter;
    default:
        return event.text();
    }
}

void post(std::function<void()> task)
{
    Scene::Get()->addRenderTask(std::move(task), 0);
}

} // namespace

MoveTool::MoveTool(ViewWidget& view, ViewState& state, QObject* parent)
    : QObject(parent), view(view), state(state), note(view), sign(view)
{
    view.installEventFilter(this);
    connect(&state, &ViewState::selectionChanged, this, &MoveTool::follow);
    connect(&state, &ViewState::visibilityChanged, this, &MoveTool::follow);
    connect(&state, &ViewState::stationChanged, this, [this] {
        end(); // what hangs on what is another matter now, and an id may name another thing
        follow();
    });
    connect(&state.getHistory(), &History::changed, this, [this] { // from wherever things were moved
        if (!isPutting)
            end(); // the places that it began from are no longer those before it
        place();
    });
}

void MoveTool::setOn(bool wanted)
{
    if (on == wanted)
        return;
    takeBack();
    on = wanted;
    follow();
    emit changed();
}

void MoveTool::setAxes(DragAxes wanted)
{
    if (axes == wanted)
        return;
    axes = wanted;
    if (drag) {
        moveBy(*drag, 0);
        drag->way = wayOf(drag->way.getHandle(), last);
        if (number.isEmpty())
            tell(drag->way.textOf(0), last);
    }
    place();
    emit changed();
}

void MoveTool::setSteps(const MoveSteps& wanted)
{
    if (wanted == steps)
        return;
    steps = wanted;
    emit stepsChanged();
    emit changed();
}

/// Takes what is selected, of that what can be moved; the handle stands on the last one.
void MoveTool::follow()
{
    std::vector<unsigned> wanted;
    for (const unsigned id : state.getSelected())
        if (const unsigned movable = on && !state.isHidden(id) ? movedFor(id) : 0; movable != 0)
            wanted.push_back(movable);
    const unsigned latest = wanted.empty() ? 0 : wanted.back();
    wanted = topmostOf(wanted);
    if (latest == thing && wanted == moved)
        return;
    end();
    choose(Handle::None);
    moved = std::move(wanted);
    if (latest != std::exchange(thing, latest))
        showHandle();
}

void MoveTool::showHandle()
{
    DragHandle* handle = DragHandle::Get();
    const bool isShown = thing != 0;
    if (isShown)
        Scene::Get()->attachGuiTo(handle, Scene::GetWorldVisual(), vrk::rob::Posef());
    else
        Scene::Get()->detachGui(handle);
    hover(Handle::None);
    post([handle, isShown] { VisualSelection::Get()->setCompoundObjectEnabled(handle, isShown); });
    place();
}

void MoveTool::place()
{
    if (thing == 0)
        return;
    Posed pose = worldPoseOfThing(thing);
    if (axes == DragAxes::World)
        pose.orientation = Posed().orientation;
    post([pose] { DragHandle::Get()->setPose(vrk::rob::Posef(pose)); });
}

MoveTool::Handle MoveTool::handleAt(const QPointF& place) const
{
    PickQuery query;
    query.camera = vrk::selection::PickCamera::Main(view.devicePixelRatioF());
    if (!query.camera.hasPixels())
        return Handle::None;
    query.x = place.x();
    query.y = place.y();
    query.kinds = {PickKind::Body};
    query.filter = [](const PickCandidate& found) {
        return std::string(DragHandle::Get()->getHandleType(found.visual) == Handle::None ? "no handle" : "");
    };
    VisualSelection::Get()->update();
    const std::optional<PickCandidate> found = query.askBest();
    return found ? DragHandle::Get()->getHandleType(found->visual) : Handle::None;
}

bool MoveTool::take(const InputEvent& event)
{
    if (!drag && event.kind != Kind::Leave)
        last = event.place;
    if (drag) {
        if (event.kind == Kind::Move && event.held.testFlag(Qt::LeftButton))
            goOn(event);
        else if (event.kind == Kind::Move || (event.kind == Kind::Release && event.button == Qt::LeftButton))
            end();
        return true; // another button, and the wheel, wait for its end
    }
    if (event.kind == Kind::Leave)
        hover(Handle::None);
    if (!asksFor(event))
        return false;
    const Handle handle = handleAt(event.place);
    hover(handle);
    if (event.kind == Kind::Press)
        choose(handle);
    if (handle == Handle::None)
        return false;
    if (event.kind == Kind::Press)
        begin(handle, event.place);
    return true;
}

bool MoveTool::asksFor(const InputEvent& event) const
{
    const bool isPress = event.kind == Kind::Press && event.button == Qt::LeftButton;
    const bool isHover = event.kind == Kind::Move && event.held == Qt::NoButton;
    return thing != 0 && (drag ? snaps : isPress || isHover);
}

void MoveTool::hover(Handle handle)
{
    hovered = handle;
    showHovered();
}

/// The one under the mouse, or else the chosen one. Posts only what is new: each post costs a frame.
void MoveTool::showHovered()
{
    const Handle handle = hovered == Handle::None ? chosen : hovered;
    if (handle == std::exchange(shown, handle))
        return;
    post([handle] { DragHandle::Get()->showHover(handle); });
}

/// Whatever was typed was for the one before.
void MoveTool::choose(Handle handle)
{
    chosen = handle;
    if (!number.isEmpty()) {
        number.clear();
        hush();
    }
    showHovered();
}

HandleDrag MoveTool::wayOf(Handle handle, const QPointF& place) const
{
    return {handle, Camera::Get()->getSnapshot(), worldPoseOfThing(thing), axes, place};
}

MoveTool::Drag MoveTool::dragOf(Handle handle, const QPointF& place)
{
    std::vector<Start> starts;
    for (const unsigned each : moved)
        starts.push_back({each, worldPoseOfBase(each), poseOfThing(each)});
    return {wayOf(handle, place), std::move(starts), ++gestures};
}

void MoveTool::begin(Handle handle, const QPointF& place)
{
    drag = dragOf(handle, place);
    post([handle] { DragHandle::Get()->setMode(handle); });
    if (const DragAnswer answer = drag->way.moveTo(place); !answer.value)
        tell(tr(vrk::visual::reasonOf(answer.refusal)), place);
}

void MoveTool::goOn(const InputEvent& event)
{
    if (!isAllThere()) {
        follow();
        return;
    }
    drag->way.changeView(Camera::Get()->getSnapshot(), last); // it may have flown on, or got another size
    last = event.place;
    if (!number.isEmpty()) // it says how far, and not the mouse
        showNumber();
    else
        dragTo(event.place, event.modifiers);
}

void MoveTool::dragTo(const QPointF& place, Qt::KeyboardModifiers modifiers)
{
    const DragAnswer answer = drag->way.moveTo(place); // also while it snaps, so that the mouse keeps its hold
    if (snaps && drag->way.isLength() && snapTo(place))
        return;
    sign.hide();
    if (!answer.value) {
        tell(tr(vrk::visual::reasonOf(answer.refusal)), place);
        return;
    }
    double amount = *answer.value;
    if (modifiers.testFlag(Qt::ControlModifier))
        amount = vrk::visual::toStep(amount, drag->way.isLength() ? steps.length : steps.angle);
    moveBy(*drag, amount);
    tell(drag->way.textOf(amount), place);
}

// Snapping

void MoveTool::setSnapping(bool wanted)
{
    if (wanted == snaps)
        return;
    snaps = wanted;
    emit snappingChanged(wanted);
    if (!drag || !number.isEmpty())
        return;
    view.drain();
    dragTo(last, Qt::NoModifier);
}

/// False where nothing lies under the mouse that it could go to.
bool MoveTool::snapTo(const QPointF& place)
{
    const std::optional<SnapPlace> snap = snapPlaceAt(view, state.getTree(), place, moved);
    if (!snap || !isAllThere())
        return false;
    const vrk::rob::Vec3d way = snap->place - drag->way.getCentre();
    std::vector<MoveThings::Place> places;
    for (const Start& start : drag->starts)
        places.push_back({start.thing, HandleDrag::PoseAfter(way, start.base, start.pose)});
    put(std::move(places), drag->gesture);
    sign.show(*snap);
    tell(tr("to the %1").arg(snap->text), place);
    return true;
}

bool MoveTool::isAllThere() const
{
    return std::ranges::all_of(moved, [](unsigned id) { return sdf::Share(id) != nullptr; });
}

/// From where the drag began.
void MoveTool::moveBy(const Drag& by, double amount)
{
    if (!isAllThere())
        return;
    std::vector<MoveThings::Place> places;
    for (const Start& start : by.starts)
        places.push_back({start.thing, amount == 0 ? start.pose : by.way.poseAfter(amount, start.base, start.pose)});
    put(std::move(places), by.gesture);
}

void MoveTool::put(std::vector<MoveThings::Place> places, int gesture)
{
    const QScopedValueRollback putting(isPutting, true);
    state.getHistory().push(std::make_unique<MoveThings>(std::move(places), gesture));
}

void MoveTool::end()
{
    if (!drag)
        return;
    drag.reset();
    number.clear();
    sign.hide();
    // A ring comes back in its own colour.
    post([] { DragHandle::Get()->resetMode(); });
    shown = Handle::None;
    hovered = Handle::None;
    post([] { DragHandle::Get()->showHover(Handle::None); });
    showHovered();
    hush();
}

bool MoveTool::takeBack()
{
    if (!drag)
        return false;
    moveBy(*drag, 0);
    end();
    return true;
}

bool MoveTool::cancel()
{
    if (!number.isEmpty()) {
        number.clear();
        hush();
        return true;
    }
    if (takeBack())
        return true;
    const bool wasChosen = chosen != Handle::None;
    choose(Handle::None);
    return wasChosen;
}

// Typed numbers

bool MoveTool::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::FocusOut)
        setSnapping(false); // the release of the key goes elsewhere
    if (event->type() == QEvent::KeyPress || event->type() == QEvent::KeyRelease)
        if (const auto& of = static_cast<const QKeyEvent&>(*event); of.key() == Qt::Key_V && on) {
            if (!of.isAutoRepeat())
                setSnapping(event->type() == QEvent::KeyPress);
            return true;
        }
    if (event->type() != QEvent::ShortcutOverride && event->type() != QEvent::KeyPress)
        return QObject::eventFilter(watched, event);
    const QString key = keyOf(static_cast<const QKeyEvent&>(*event));
    if (!takesKey(key))
        return QObject::eventFilter(watched, event);
    if (event->type() == QEvent::KeyPress)
        type(key);
    else
        event->accept(); // it comes as a key of the view then, and not as that of a command
    return true;
}

bool MoveTool::takesKey(const QString& key) const
{
    if (thing == 0 || chosen == Handle::None)
        return false;
    return TypedNumber::Takes(key) || (!number.isEmpty() && (key == backspace || key == enter));
}

bool MoveTool::type(const QString& key)
{
    if (!takesKey(key))
        return false;
    emit typing(key);
    if (key == enter) {
        finishNumber();
        return true;
    }
    if (key == backspace)
        number.removeLast();
    else
        number.type(key);
    if (number.isEmpty())
        hush();
    else
        showNumber();
    return true;
}

/// Moves by exactly the number: in a drag, which ends by that, from where it began.
void MoveTool::finishNumber()
{
    const std::optional<double> amount = number.getValue();
    if (!amount)
        return;
    number.clear();
    moveBy(drag ? *drag : dragOf(chosen, last), *amount);
    end();
    hush();
}

void MoveTool::showNumber()
{
    const QString unit = HandleDrag::UnitOf(chosen);
    tell(number.getText() + caret + unit, last);
}

// Text

void MoveTool::hush()
{
    note.hush();
    emit textChanged({});
}

void MoveTool::tell(const QString& text, const QPointF& place)
{
    note.tell(text, place);
    emit textChanged(text);
}

} // namespace vrkview
