#include "measure/MeasureTool.h"

#include "canvas/ViewState.h"
#include "canvas/ViewWidget.h"
#include "edit/Attempt.h"
#include "edit/EditDimensions.h"
#include "edit/History.h"
#include "measure/MeasuredThings.h"

#include "platform/sdf/SdfManager.h"
#include "scene/Scene.h"

#include <Standard_Failure.hxx>

#include <utility>

namespace vrkview {
namespace {

using vrk::layout::Dimension;
using vrk::layout::DimensionEnd;
using vrk::measure::Measurement;
using vrk::measure::Quantity;
using vrk::measure::Single;
using vrk::visual::Scene;

bool isBody(const DimensionEnd& end)
{
    return end.kind == DimensionEnd::Kind::Body;
}

Dimension::Type typeOf(Single single)
{
    return single == Single::Diameter ? Dimension::Type::Diameter
           : single == Single::Length ? Dimension::Type::Length
                                      : Dimension::Type::Area;
}

} // namespace

MeasureTool::MeasureTool(ViewWidget& view, ViewState& state, QObject* parent)
    : QObject(parent), view(view), state(state), note(view), mark(view), firstMark(view)
{
    connect(&state, &ViewState::stationChanged, this, [this] {
        measured.reset();
        hush();
        if (first && !sdf::Share(first->end.object))
            setFirst({});
    });
}

void MeasureTool::setOn(bool wanted)
{
    if (on == wanted)
        return;
    on = wanted;
    toldOnly.clear();
    hush();
    setFirst({});
    if (on)
        state.clear(); // what is selected afterwards is a dimension
    emit changed();    // what had the mouse ends, and tells that it says nothing more
    if (on)
        emit textChanged(tr("Measure: click a vertex, an edge, a face, a point or a frame; with Shift a whole body"));
}

void MeasureTool::hover(const QPointF& place, Qt::KeyboardModifiers modifiers)
{
    take(measurePickAt(view, state.getTree(), place, modifiers.testFlag(Qt::ShiftModifier)), place);
}

void MeasureTool::take(const std::optional<MeasurePick>& pick, const QPointF& place)
{
    hovered = pick;
    showFirst();
    if (!hovered) {
        hush();
        return;
    }
    mark.show(hovered->mark);
    showHighlight(isBody(hovered->end) ? &*hovered : nullptr);
    tell(preview(), place);
}

/// What lies under the mouse, and what it would measure with the first thing.
QString MeasureTool::preview()
{
    if (!first)
        return hovered->text;
    if (isSameThing(first->end, hovered->end))
        return tr("%1\nclick again to measure it alone").arg(hovered->text);
    if (isBody(first->end) || isBody(hovered->end))
        return tr("minimum distance to %1").arg(hovered->text);
    try {
        return QString::fromStdString(textOf(measuredTo(hovered->end))) + tr("\nto %1").arg(hovered->text);
    } catch (const std::exception& failure) {
        return failure.what();
    } catch (const Standard_Failure& failure) {
        return failure.GetMessageString();
    }
}

/// From the first thing. A click asks for what the hover before it has measured; between curved faces that takes a while.
const Measurement& MeasureTool::measuredTo(const DimensionEnd& second)
{
    if (!measured || !isSameThing(measured->first, second))
        measured.emplace(second, vrk::measure::measureBetween(measuredThing(first->end), measuredThing(second)));
    return measured->second;
}

void MeasureTool::click(const QPointF& place, Qt::KeyboardModifiers modifiers)
{
    hover(place, modifiers);
    if (!hovered)
        return;
    toldOnly.clear();
    if (!first) {
        setFirst(hovered);
        tell(preview(), place);
    } else if (isSameThing(first->end, hovered->end)) {
        measureFirst();
    } else {
        add(*hovered);
    }
}

void MeasureTool::leave()
{
    hush();
    firstMark.show({}); // it lies over the picture, and not in the scene that is turned below it
}

void MeasureTool::measureFirst()
{
    if (!first)
        return;
    const DimensionEnd end = first->end;
    attempt(
        [&] {
            const vrk::measure::MeasuredThing thing = measuredThing(end);
            const Single asked = vrk::measure::usualFor(thing);
            if (asked != Single::Place) {
                push({nameOfDimension({end}), typeOf(asked), {end}});
                return;
            }
            toldOnly = QString::fromStdString(textOf(vrk::measure::measureOne(thing, asked)));
            setFirst({});
            emit textChanged(tr("%1: %2").arg(nameOfEnd(end), toldOnly));
        },
        [this](const QString& told) { emit failed(told); });
}

void MeasureTool::add(const MeasurePick& second)
{
    const std::vector<DimensionEnd> ends{first->end, second.end};
    attempt(
        [&] {
            Dimension::Type type = Dimension::Type::Nearest;
            if (!isBody(ends[0]) && !isBody(ends[1])) {
                const bool isAngle = measuredTo(ends[1]).quantity == Quantity::Angle;
                type = isAngle ? Dimension::Type::Angle : Dimension::Type::Distance;
            }
            push({nameOfDimension(ends), type, ends});
        },
        [this](const QString& told) { emit failed(told); });
}

void MeasureTool::push(Dimension dimension)
{
    setFirst({});
    hush();
    state.getHistory().push(addDimension(std::make_shared<const Dimension>(std::move(dimension))));
}

void MeasureTool::setFirst(std::optional<MeasurePick> pick)
{
    first = std::move(pick);
    measured.reset();
    showFirst();
    emit changed();
}

/// Its sign alone: what is highlighted is what lies under the mouse.
void MeasureTool::showFirst()
{
    std::optional<SnapPlace> sign;
    if (first)
        sign = SnapPlace{first->mark.kind, first->mark.place, {}};
    firstMark.show(sign);
}

bool MeasureTool::cancel()
{
    if (!on)
        return false;
    if (first)
        setFirst({});
    else
        setOn(false);
    return true;
}

/// The highlight of a whole body; pieces have theirs from their mark.
void MeasureTool::showHighlight(const MeasurePick* pick)
{
    if (pick && Scene::HasVisual(pick->end.object))
        Scene::Get()->setVisualHighlighted(pick->end.object);
    else if (isWholeShown)
        Scene::Get()->clearHighlightedVisual();
    isWholeShown = pick != nullptr;
}

void MeasureTool::tell(const QString& told, const QPointF& place)
{
    note.tell(told, place);
    if (text == told)
        return;
    text = told;
    emit textChanged(QString(told).replace('\n', ' '));
}

void MeasureTool::hush()
{
    hovered.reset();
    mark.show({});
    showHighlight(nullptr);
    note.hush();
    if (text.isEmpty())
        return;
    text.clear();
    emit textChanged({});
}

} // namespace vrkview
