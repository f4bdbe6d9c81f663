#include "canvas/FrameTool.h"

#include "canvas/BodyEdge.h"
#include "canvas/ViewState.h"
#include "canvas/ViewWidget.h"
#include "edit/History.h"
#include "edit/ModelPlaces.h"

#include "platform/framing/Frames.h"
#include "platform/sdf/SdfManager.h"
#include "preview/marks/PreviewVisualsHelper.h"

#include <Standard_Failure.hxx>
#include <TopoDS_Edge.hxx>
#include <TopoDS_Face.hxx>

#include <algorithm>
#include <array>
#include <functional>

namespace vrkview {
namespace {

using vrk::rob::Posd;
using vrk::rob::Posed;
using vrk::rob::Posf;
using vrk::visual::PreviewVisualsHelper;
using Way = FrameTool::Way;

using AddPoint = void (PreviewVisualsHelper::*)(const Posf& position);
constexpr std::array<AddPoint, 3> pointsOfAxes = {&PreviewVisualsHelper::addSelectFramePoint1,
                                                  &PreviewVisualsHelper::addSelectFramePoint2,
                                                  &PreviewVisualsHelper::addSelectFramePoint3};
constexpr std::array<AddPoint, 3> pointsOfPlane = {&PreviewVisualsHelper::addSelectPoint1,
                                                   &PreviewVisualsHelper::addSelectPoint2,
                                                   &PreviewVisualsHelper::addSelectPoint3};

bool isByPoints(Way way)
{
    return way == Way::Axes || way == Way::ThreePoints;
}

SnapFor wantedBy(Way way)
{
    switch (way) {
    case Way::Face:
        return SnapFor::Face;
    case Way::Circle:
        return SnapFor::Edge;
    default:
        return SnapFor::Place;
    }
}

/// What failed, in one line; empty where nothing did.
QString failureOf(const std::function<void()>& act)
{
    try {
        act();
        return {};
    } catch (const Standard_Failure& failure) {
        return failure.GetMessageString();
    } catch (const std::exception& failure) {
        return failure.what();
    }
}

} // namespace

FrameTool::FrameTool(ViewWidget& view, ViewState& state, QObject* parent)
    : QObject(parent), view(view), state(state), note(view), mark(view)
{
    connect(&state, &ViewState::stationChanged, this, &FrameTool::followStation);
    connect(&view, &ViewWidget::drained, this, &FrameTool::follow);
}

void FrameTool::start(Way wanted)
{
    end();
    if (const QString failure = failureOf([this] { checkFrameUse(use, selectedOne()); }); !failure.isEmpty()) {
        emit failed(failure);
        return;
    }
    way = wanted;
    wasTakenBack = false;
    emit changed(); // what had the mouse ends, and tells that it says nothing more
    emit textChanged(question());
}

void FrameTool::end()
{
    if (!way)
        return;
    way.reset();
    picks.clear();
    leave();
    emit textChanged({});
    emit changed();
}

void FrameTool::setUse(FrameUse wanted)
{
    if (wanted == use)
        return;
    use = wanted;
    end(); // what was begun was for something else
    emit changed();
}

bool FrameTool::takeLastBack()
{
    if (picks.empty())
        return false;
    picks.pop_back();
    leave();
    emit textChanged(question());
    emit changed();
    return true;
}

bool FrameTool::cancel()
{
    if (!way)
        return false;
    if (wasTakenBack || !takeLastBack())
        end();
    else
        wasTakenBack = true;
    return true;
}

std::size_t FrameTool::picksNeeded() const
{
    return way && isByPoints(*way) ? 3 : 1;
}

QString FrameTool::question() const
{
    static constexpr std::array ofAxes = {QT_TR_NOOP("the origin"), QT_TR_NOOP("a point on x"),
                                          QT_TR_NOOP("a point on the side of y")};
    static constexpr std::array ofPlane = {QT_TR_NOOP("a point on x"), QT_TR_NOOP("a point farther along x"),
                                           QT_TR_NOOP("a point on y")};
    switch (*way) {
    case Way::Face:
        return tr("Frame: a face");
    case Way::Circle:
        return tr("Frame: a circle or an arc");
    default:
        break;
    }
    return tr("Frame, %1 of 3: %2")
        .arg(picks.size() + 1)
        .arg(tr((*way == Way::Axes ? ofAxes : ofPlane)[std::min<std::size_t>(picks.size(), 2)]));
}

std::optional<SnapPlace> FrameTool::placeAt(const QPointF& place) const
{
    return snapPlaceAt(view, state.getTree(), place, {}, wantedBy(*way));
}

std::vector<Posd> FrameTool::pickedPlaces() const
{
    std::vector<Posd> places;
    for (const Pick& pick : picks)
        places.push_back(worldPoseOfThing(pick.body) * pick.inBody);
    return places;
}

/// 0 for none, and for several.
unsigned FrameTool::selectedOne() const
{
    return state.getSelected().size() == 1 ? state.getSelected().front() : 0;
}

/// The frame that the picks so far and this one make.
/// @throws std::invalid_argument, Standard_Failure  where they make none.
Posed FrameTool::frameWith(const SnapPlace& last) const
{
    using namespace vrk::framing;
    const std::vector<Posd> before = pickedPlaces();
    switch (*way) {
    case Way::Axes:
        return frameFromAxes(before.at(0), before.at(1), last.place);
    case Way::ThreePoints:
        return frameFromThreePoints(before.at(0), before.at(1), last.place);
    case Way::Face:
        return frameOfFace(faceOfBody(last.body, last.face), worldPoseOfThing(last.body), last.place);
    case Way::Circle:
        break;
    }
    return frameOfCircle(edgeOfBody(last.body, last.edge), worldPoseOfThing(last.body));
}

// The mouse

void FrameTool::hoverAt(const QPointF& place)
{
    if (!way)
        return;
    hovered = placeAt(place);
    if (!hovered) {
        mark.show({});
        follow();
        tell(question(), place);
        return;
    }
    mark.show(hovered);
    QString failure;
    if (picks.size() + 1 == picksNeeded())
        failure = failureOf([this] { frameWith(*hovered); });
    follow();
    tell(QString("%1 (%2)").arg(question(), failure.isEmpty() ? hovered->text : failure), place);
}

void FrameTool::leave()
{
    note.hush();
    mark.show({});
    hovered.reset();
    follow();
}

void FrameTool::pickAt(const QPointF& place)
{
    if (!way)
        return;
    wasTakenBack = false;
    const std::optional<SnapPlace> found = placeAt(place);
    if (!found)
        return;
    const QString failure = failureOf([&] {
        for (const Posd& before : pickedPlaces())
            vrk::framing::checkApart(before, found->place);
        if (picks.size() + 1 == picksNeeded())
            make(*found);
    });
    if (!failure.isEmpty()) {
        emit failed(failure);
        return;
    }
    if (!way)
        return; // that was the last one
    picks.push_back({sdf::Share(found->body), found->body, worldPoseOfThing(found->body).inverse() * found->place});
    hovered.reset();
    follow();
    tell(question(), place);
    emit changed();
}

/// What all picks are on carries the frame; of picks on several things it would follow one of them and leave the others.
void FrameTool::make(const SnapPlace& last)
{
    const Posed frame = frameWith(last);
    unsigned carrier = frameCarrierOf(last.body);
    for (const Pick& pick : picks)
        if (frameCarrierOf(pick.body) != carrier)
            carrier = 0;
    DefinedFrame defined = defineFrame(use, frame, carrier, selectedOne());
    // Only then ends the definition: what fails leaves it where it is.
    state.getHistory().push(std::move(defined.change));
    end();
    state.selectVisuals({defined.thing});
}

// What is shown

/// The station may have moved since.
void FrameTool::follow()
{
    Shown now;
    if (way && isByPoints(*way)) {
        now.points = pickedPlaces();
        if (hovered)
            now.points.push_back(hovered->place);
    }
    if (way && hovered && picks.size() + 1 == picksNeeded())
        failureOf([&] { now.frame = frameWith(*hovered); });
    show(std::move(now));
}

void FrameTool::followStation()
{
    // What was found under the mouse may be gone; the next move finds what is there.
    if (way)
        leave();
    if (std::ranges::any_of(picks, [](const Pick& pick) {
            const auto object = pick.on.lock();
            return !object || sdf::Share(pick.body) != object;
        }))
        end();
}

void FrameTool::show(Shown now)
{
    if (now == shown)
        return;
    shown = std::move(now);
    PreviewVisualsHelper& marks = *PreviewVisualsHelper::Get();
    marks.removeAllVisuals();
    const auto& adds = way == Way::ThreePoints ? pointsOfPlane : pointsOfAxes;
    for (std::size_t i = 0; i < shown.points.size(); ++i)
        (marks.*adds[i])(Posf(shown.points[i]));
    if (shown.frame)
        marks.addPreviewUserFrame(vrk::rob::Posef(*shown.frame));
    // The line that is drawn now stands out.
    marks.setPrimaryLineSelected(shown.points.size() == 2);
    marks.setAxisXLineSelected(shown.points.size() == 3);
    marks.setAxisYLineSelected(shown.points.size() == 3);
}

void FrameTool::tell(const QString& text, const QPointF& place)
{
    note.tell(text, place);
    emit textChanged(text);
}

} // namespace vrkview
