#include "canvas/MoveTool.h"

#include "canvas/ViewState.h"
#include "canvas/ViewWidget.h"
#include "edit/History.h"
#include "edit/ModelPlaces.h"
#include "edit/MoveThing.h"

#include "scene/Scene.h"
#include "selection/VisualSelection.h"
#include "selection/pick/PickQuery.h"
#include "view/Camera.h"
#include "visual/Visual.h"

#include <QLabel>

#include <algorithm>
#include <functional>
#include <numbers>
#include <utility>

namespace vrkview {
namespace {

using vrk::rob::Posed;
using vrk::selection::PickCandidate;
using vrk::selection::PickKind;
using vrk::selection::PickQuery;
using vrk::selection::VisualSelection;
using vrk::visual::AxisDrag;
using vrk::visual::Camera;
using vrk::visual::DragAnswer;
using vrk::visual::DragAxes;
using vrk::visual::DragHandle;
using vrk::visual::RingDrag;
using vrk::visual::Scene;
using Handle = DragHandle::HandleType;
using Kind = InputEvent::Kind;

constexpr double lengthStep = 5; // model units, with Ctrl
constexpr double angleStep = 5;  // degrees, with Ctrl
constexpr double degrees = 180 / std::numbers::pi;
constexpr QPoint labelOffset(18, 14); // logical pixels from the mouse

bool isArrow(Handle handle)
{
    return handle <= Handle::Z;
}

unsigned axisOf(Handle handle)
{
    return static_cast<unsigned>(handle) % 3; // arrows and rings stand in the order of their axes
}

vrk::rob::Vec2Template<double> toVec(const QPointF& place)
{
    return {place.x(), place.y()};
}

void post(std::function<void()> task)
{
    Scene::Get()->addRenderTask(std::move(task), 0);
}

QString signedNumber(double value, int decimals)
{
    return (value < 0 ? QString() : QStringLiteral("+")) + QString::number(value, 'f', decimals);
}

} // namespace

MoveTool::MoveTool(ViewWidget& view, ViewState& state, QObject* parent)
    : QObject(parent), view(view), state(state), label(new QLabel(&view, Qt::ToolTip))
{
    label->setAttribute(Qt::WA_ShowWithoutActivating);
    label->setMargin(4);
    connect(&state, &ViewState::selectionChanged, this, &MoveTool::follow);
    connect(&state, &ViewState::visibilityChanged, this, &MoveTool::follow);
    connect(&state, &ViewState::stationChanged, this, &MoveTool::follow);
    connect(&state.getHistory(), &History::changed, this, &MoveTool::place); // from wherever it was moved
}

void MoveTool::setOn(bool wanted)
{
    if (on == wanted)
        return;
    cancel();
    on = wanted;
    follow();
    emit changed();
}

void MoveTool::setAxes(DragAxes wanted)
{
    if (axes == wanted || drag)
        return;
    axes = wanted;
    place();
    emit changed();
}

/// Takes the thing that was selected last, of those that can be moved.
void MoveTool::follow()
{
    const std::vector<unsigned>& selected = state.getSelected();
    const auto last = std::find_if(selected.rbegin(), selected.rend(), isThingOfItsOwn);
    const unsigned wanted = on && last != selected.rend() && !state.isHidden(*last) ? *last : 0;
    if (wanted == thing)
        return;
    if (drag)
        end();
    thing = wanted;
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
    post([handle, isShown] {
        handle->showHover(Handle::None);
        VisualSelection::Get()->setCompoundObjectEnabled(handle, isShown);
    });
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
    view.drain();
    VisualSelection::Get()->update();
    const std::optional<PickCandidate> found = query.askBest();
    return found ? DragHandle::Get()->getHandleType(found->visual) : Handle::None;
}

bool MoveTool::take(const InputEvent& event)
{
    if (drag) {
        if (event.kind == Kind::Move && event.held.testFlag(Qt::LeftButton))
            goOn(event);
        else if (event.kind == Kind::Move || (event.kind == Kind::Release && event.button == Qt::LeftButton))
            end();
        return true; // another button, and the wheel, wait for its end
    }
    if (thing == 0)
        return false;
    const bool isPress = event.kind == Kind::Press && event.button == Qt::LeftButton;
    const bool isHover = event.kind == Kind::Move && event.held == Qt::NoButton;
    if (!isPress && !isHover)
        return false;
    const Handle handle = handleAt(event.place);
    if (isHover)
        post([handle] { DragHandle::Get()->showHover(handle); });
    if (handle == Handle::None)
        return false;
    if (isPress)
        begin(handle, event.place);
    return true;
}

void MoveTool::begin(Handle handle, const QPointF& place)
{
    const Posed start = worldPoseOfThing(thing);
    const vrk::visual::CameraSnapshot camera = Camera::Get()->getSnapshot();
    const unsigned axis = axisOf(handle);
    drag = Drag{handle,
                isArrow(handle) ? decltype(Drag::way)(AxisDrag(camera, start, axis, axes, toVec(place)))
                                : decltype(Drag::way)(RingDrag(camera, start, axis, axes, toVec(place))),
                start,
                poseOfThing(thing),
                ++gestures,
                false};
    post([handle] { DragHandle::Get()->setMode(handle); });
}

void MoveTool::goOn(const InputEvent& event)
{
    const bool isLength = isArrow(drag->handle);
    const DragAnswer answer = std::visit([&](auto& way) { return way.moveTo(toVec(event.place)); }, drag->way);
    if (!answer.value) {
        tell(tr(vrk::visual::reasonOf(answer.refusal)), event.place);
        return;
    }
    double value = *answer.value;
    if (event.modifiers.testFlag(Qt::ControlModifier))
        value = vrk::visual::toStep(value, isLength ? lengthStep : angleStep / degrees);
    moveTo(std::visit([value](const auto& way) { return way.poseAt(value); }, drag->way));
    tell(isLength ? signedNumber(value, 2) + tr(" mm") : signedNumber(value * degrees, 2) + QStringLiteral("°"),
         event.place);
}

void MoveTool::moveTo(const Posed& pose)
{
    // The model has it relative to what it hangs on, which stands still.
    const Posed relative = drag->onBase * drag->start.inverse() * pose;
    state.getHistory().push(std::make_unique<MoveThing>(thing, relative, drag->gesture));
    drag->hasMoved = true;
}

void MoveTool::end()
{
    drag.reset();
    post([] { DragHandle::Get()->resetMode(); });
    label->hide();
    emit textChanged({});
}

bool MoveTool::cancel()
{
    if (!drag)
        return false;
    if (drag->hasMoved)
        state.getHistory().push(std::make_unique<MoveThing>(thing, drag->onBase, drag->gesture));
    end();
    return true;
}

void MoveTool::tell(const QString& text, const QPointF& place)
{
    label->setText(text);
    label->adjustSize();
    label->move(view.mapToGlobal((place / view.devicePixelRatioF()).toPoint()) + labelOffset);
    label->show();
    emit textChanged(text);
}

} // namespace vrkview
