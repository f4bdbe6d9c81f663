#include "canvas/BandTool.h"

#include "canvas/MoveTool.h"
#include "canvas/ViewState.h"
#include "canvas/ViewWidget.h"
#include "docks/Properties.h"
#include "edit/Bands.h"
#include "edit/History.h"
#include "edit/ModelPlaces.h"

#include "handles/DragLens.h"
#include "handles/HandleMeshVisual.h"
#include "handles/PathEndsHandle.h"
#include "handles/VectorHandle.h"
#include "platform/sdf/SdfManager.h"
#include "scene/Scene.h"
#include "selection/VisualSelection.h"
#include "selection/pick/PickQuery.h"
#include "task/bands/BandVectorVisual.h"
#include "task/bands/VectorBandVisual.h"
#include "view/Camera.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <numbers>
#include <shared_mutex>
#include <utility>

namespace vrkview {
namespace {

using vrk::rob::Posed;
using vrk::selection::PickCandidate;
using vrk::selection::PickKind;
using vrk::selection::PickQuery;
using vrk::selection::VisualSelection;
using vrk::task::EdgeMfgShape;
using vrk::visual::BandVectorVisual;
using vrk::visual::Camera;
using vrk::visual::DragAnswer;
using vrk::visual::DragAxes;
using vrk::visual::MeshVisual;
using vrk::visual::PathEndsHandle;
using vrk::visual::RingDrag;
using vrk::visual::Scene;
using vrk::visual::VectorBandVisual;
using vrk::visual::VectorHandle;
using vrk::visual::Visual;
using Kind = InputEvent::Kind;
using Piece = BandTool::Piece;

constexpr double degrees = 180 / std::numbers::pi;
constexpr double shortest = 1;  // model units that are left of a run
constexpr double knobReach = 7; // logical pixels from the middle of a knob

void post(std::function<void()> task)
{
    Scene::Get()->addRenderTask(std::move(task), 0);
}

constexpr const char* hoverColor = "#FFD63D"; // of every handle under the mouse

struct Handle {
    Piece piece;
    vrk::visual::HandleMeshVisual* visual;
    const char* color;
};

std::array<Handle, 4> handles()
{
    const PathEndsHandle& ends = *PathEndsHandle::Get();
    const VectorHandle& vector = *VectorHandle::Get();
    return {Handle{Piece::Start, ends.getStartHandle()->getKnob(), "#FF0000"},
            Handle{Piece::End, ends.getEndHandle()->getKnob(), "#00FF00"},
            Handle{Piece::Tilt, vector.getTilt(), "#F20C00"}, Handle{Piece::Twist, vector.getTwist(), "#16A951"}};
}

Piece pieceOf(const Visual* visual)
{
    for (const Handle& handle : handles())
        if (handle.visual == visual)
            return handle.piece;
    return Piece::None;
}

/// @param body  0 for the world.
void hang(vrk::visual::GuiVisual& handle, unsigned body, const vrk::rob::Posef& pose)
{
    if (body == 0)
        Scene::Get()->attachGuiTo(&handle, Scene::GetWorldVisual(), pose);
    else
        Scene::Get()->attachGuiTo(&handle, body, pose);
}

/// Null while it is not drawn.
VectorBandVisual* visualOf(unsigned band)
{
    return Scene::HasVisual(band) ? dynamic_cast<VectorBandVisual*>(Scene::GetVisual(band)) : nullptr;
}

PickQuery queryAt(const ViewWidget& view, const QPointF& place, PickKind kind)
{
    PickQuery query;
    query.camera = vrk::selection::PickCamera::Main(view.devicePixelRatioF());
    query.x = place.x();
    query.y = place.y();
    query.kinds = {kind};
    return query;
}

/// Of the rings, in their own pose.
unsigned axisOf(Piece piece)
{
    return piece == Piece::Tilt ? 1 : 0;
}

} // namespace

BandTool::BandTool(ViewWidget& view, ViewState& state, const MoveTool& mover, QObject* parent)
    : QObject(parent), view(view), state(state), mover(mover), note(view)
{
    connect(&mover, &MoveTool::changed, this, &BandTool::follow);
    connect(&state, &ViewState::selectionChanged, this, &BandTool::follow);
    connect(&state, &ViewState::visibilityChanged, this, &BandTool::follow);
    connect(&state, &ViewState::stationChanged, this, &BandTool::follow);
    connect(&state.getHistory(), &History::changed, this, [this] {
        cancel(); // what it began from is no longer there
        place();
    });
}

std::shared_ptr<EdgeMfgShape> BandTool::shape() const
{
    return band != 0 ? bandOf(band) : nullptr;
}

/// Of the coordinates of the edges, in the world.
Posed BandTool::carrierPose() const
{
    const auto run = shape();
    const unsigned body = run && !run->getMfgVectors().empty() ? run->getMfgVectors().front().body : 0;
    return body == 0 ? Posed() : worldPoseOfThing(body);
}

std::optional<BandTool::PathPoint> BandTool::getVector() const
{
    const auto run = shape();
    if (!run || !at)
        return std::nullopt;
    const auto& edge = run->getMfgVectors().at(static_cast<std::size_t>(at->edge));
    return PathPoint{at->edge, edge.vectors.at(at->vector).parameter};
}

std::optional<BandTool::Index> BandTool::indexOf(PathPoint point) const
{
    const auto& vectors = shape()->getMfgVectors().at(static_cast<std::size_t>(point.edge)).vectors;
    const auto found = std::ranges::find(vectors, point.parameter, &vrk::geometry::MfgVector::parameter);
    if (found == vectors.end())
        return std::nullopt;
    return Index{point.edge, static_cast<std::size_t>(found - vectors.begin())};
}

void BandTool::follow()
{
    const std::vector<unsigned>& selected = state.getSelected();
    const bool isOne = mover.isOn() && selected.size() == 1 && isBand(selected.front());
    unsigned wanted = isOne && !state.isHidden(selected.front()) ? selected.front() : 0;
    if (wanted != 0 && bandOf(wanted)->getMfgVectors().empty())
        wanted = 0; // which has no ends
    if (wanted == band)
        return;
    cancel();
    hover({});
    putRings({});
    band = wanted;
    showEnds();
    place();
}

void BandTool::showEnds()
{
    PathEndsHandle& ends = *PathEndsHandle::Get();
    if (band != 0) // where `place` hangs them
        return;
    Scene::Get()->detachGui(&ends);
    ends.disableSelection();
}

/// Where the band is now, with the rings at zero.
void BandTool::place()
{
    const std::shared_ptr<EdgeMfgShape> run = shape();
    if (!run || !visualOf(band)) {
        if (std::exchange(band, 0) != 0)
            showEnds();
        putRings({});
        return;
    }
    hang(*PathEndsHandle::Get(), run->getMfgVectors().front().body, {});
    post([run] {
        PathEndsHandle::Get()->updatePosition(*run);
        PathEndsHandle::Get()->enableSelection(); // of an end that was hidden as well
    });
    showRings();
}

void BandTool::putRings(std::optional<Index> vector)
{
    if (!at && !vector)
        return;
    at = vector;
    showRings();
}

void BandTool::showRings()
{
    VectorHandle& rings = *VectorHandle::Get();
    const std::shared_ptr<EdgeMfgShape> run = shape();
    if (!run || !at) {
        at.reset();
        if (!rings.isRegisteredInSelection())
            return;
        rings.unregisterFromSelection();
        Scene::Get()->detachGui(&rings);
        post([id = band] {
            if (VectorBandVisual* visual = visualOf(id))
                visual->clearSelectedVector();
        });
        return;
    }
    const auto& edge = run->getMfgVectors().at(static_cast<std::size_t>(at->edge));
    onEdge = edge.vectors.at(at->vector).getPose(edge.edge);
    hang(rings, edge.body, vrk::rob::Posef(onEdge));
    if (!rings.isRegisteredInSelection())
        rings.registerToSelection(true);
    post([run, id = band, point = *getVector()] {
        VectorHandle::Get()->setTilt(0);
        VectorHandle::Get()->setTwist(0);
        if (VectorBandVisual* visual = visualOf(id))
            visual->selectVector(*run, point);
    });
}

// The mouse

bool BandTool::asksFor(const InputEvent& event) const
{
    const bool isPress = event.kind == Kind::Press && event.button == Qt::LeftButton;
    const bool isHover = event.kind == Kind::Move && event.held == Qt::NoButton;
    return band != 0 && !drag && (isPress || isHover);
}

bool BandTool::take(const InputEvent& event)
{
    if (drag && !visualOf(band)) {
        cancel();
        return true;
    }
    if (drag) {
        if (event.kind == Kind::Move && event.held.testFlag(Qt::LeftButton))
            goOn(event);
        else if (event.kind == Kind::Move || (event.kind == Kind::Release && event.button == Qt::LeftButton))
            end(true);
        return true; // another button, and the wheel, wait for its end
    }
    if (event.kind == Kind::Leave)
        hover({});
    if (!asksFor(event))
        return false;
    const Found found = find(event.place);
    hover(found);
    const bool isPress = event.kind == Kind::Press;
    if (found.piece == Piece::None) {
        if (isPress)
            putRings({});
        return false;
    }
    if (isPress && found.piece == Piece::Vector)
        putRings(indexOf(*found.vector));
    else if (isPress)
        begin(found.piece, event.place);
    return true;
}

BandTool::Found BandTool::find(const QPointF& place) const
{
    VisualSelection::Get()->update();
    PickQuery query = queryAt(view, place, PickKind::Body);
    if (!query.camera.hasPixels())
        return {};
    query.filter = [](const PickCandidate& found) {
        return std::string(pieceOf(found.visual) == Piece::None ? "no handle" : "");
    };
    if (const auto found = query.askBest())
        return {pieceOf(found->visual), {}};
    if (const Piece knob = knobAt(place); knob != Piece::None)
        return {knob, {}};
    query = queryAt(view, place, PickKind::Line);
    const auto vectorOf = [this](const Visual* visual) -> std::optional<PathPoint> {
        const auto* vector = dynamic_cast<const BandVectorVisual*>(visual);
        return vector && vector->getParent() && vector->getParent()->getId() == band ? vector->getPathPoint()
                                                                                     : std::nullopt;
    };
    query.filter = [&vectorOf](const PickCandidate& found) {
        return std::string(found.kind == PickKind::Line && !vectorOf(found.visual) ? "no vector of the band" : "");
    };
    if (const auto found = query.askBest())
        return {Piece::Vector, vectorOf(found->visual)};
    return {};
}

/// The knobs have their size in the world, and from afar are but some pixels.
Piece BandTool::knobAt(const QPointF& place) const
{
    Piece nearest = Piece::None;
    double least = knobReach * view.devicePixelRatioF();
    for (const Piece piece : {Piece::Start, Piece::End}) {
        if (piece == Piece::End && shape()->closed)
            continue;
        const std::optional<QPointF> image = imageOf(piece);
        if (!image)
            continue;
        const double off = std::hypot(image->x() - place.x(), image->y() - place.y());
        if (off < least) {
            least = off;
            nearest = piece;
        }
    }
    return nearest;
}

/// Where the middle of a handle is seen, in device pixels; empty where it lies behind the eye.
std::optional<QPointF> BandTool::imageOf(Piece piece)
{
    const auto all = handles();
    const auto handle = std::ranges::find(all, piece, &Handle::piece);
    const vrk::visual::DragLens lens(Camera::Get()->getSnapshot());
    const vrk::rob::Vec3d middle = lens.toCamera(vrk::rob::Posd(handle->visual->getWorldPosition()));
    if (!lens.isBefore(middle))
        return {};
    const auto image = lens.imageOf(middle);
    return QPointF(image.x, image.y);
}

/// Posts only what is new: each post costs a frame.
void BandTool::hover(const Found& found)
{
    const Found before = std::exchange(hovered, found);
    if (before == found)
        return;
    post([before, found, id = band] {
        for (const Handle& handle : handles()) {
            if (handle.piece == before.piece || handle.piece == found.piece)
                handle.visual->setColor(handle.piece == found.piece ? hoverColor : handle.color);
        }
        VectorBandVisual* visual = visualOf(id);
        if (!visual)
            return;
        const auto run = bandOf(id);
        if (found.vector && run)
            visual->previewVector(*run, *found.vector);
        else
            visual->clearPreviewVector();
    });
}

void BandTool::begin(Piece piece, const QPointF& place)
{
    const auto run = shape();
    const Posed pose = carrierPose();
    drag = Drag{piece, RunPlaces(*run, pose), BandLook::Of(*run), {}};
    if (piece == Piece::Tilt || piece == Piece::Twist)
        drag->ring.emplace(Camera::Get()->getSnapshot(), pose * onEdge, axisOf(piece), DragAxes::Local,
                           vrk::rob::Vec2Template<double>(place.x(), place.y()));
}

void BandTool::goOn(const InputEvent& event)
{
    if (drag->ring)
        turn(event);
    else
        drawEnd(event);
}

void BandTool::drawEnd(const InputEvent& event)
{
    const std::optional<double> under = drag->run.nearestTo(Camera::Get()->getSnapshot(), event.place);
    if (!under) {
        tell(tr("No place of the band is before the camera"), event.place);
        return;
    }
    double along = *under;
    if (event.modifiers.testFlag(Qt::ControlModifier))
        along = vrk::visual::toStep(along, mover.getSteps().length);
    BandLook& look = drag->look;
    const double length = drag->run.length(), least = std::min(shortest, length / 2);
    double from = drag->run.alongOf(look.start), to = drag->run.alongOf(look.end);
    if (drag->piece == Piece::Start) {
        from = std::clamp(along, 0.0, to - least);
        look.start = drag->run.at(from);
    } else {
        to = std::clamp(along, from + least, length);
        look.end = drag->run.at(to);
    }
    look.closed = false; // it has two ends now
    const std::shared_ptr<const EdgeMfgShape> draft = draftOf(*shape(), look);
    post([draft, id = band] {
        PathEndsHandle::Get()->updatePosition(*draft);
        if (VectorBandVisual* visual = visualOf(id))
            visual->selectRange(*draft, draft->getStart(), draft->getEnd());
    });
    tell(tr("%1 mm from the beginning, %2 mm long").arg(fixedNumber(from, 2), fixedNumber(to - from, 2)), event.place,
         imageOf(drag->piece == Piece::Start ? Piece::End : Piece::Start));
}

void BandTool::turn(const InputEvent& event)
{
    const DragAnswer answer = drag->ring->moveTo({event.place.x(), event.place.y()});
    if (!answer.value) {
        tell(tr(vrk::visual::reasonOf(answer.refusal)), event.place);
        return;
    }
    double angle = *answer.value;
    if (event.modifiers.testFlag(Qt::ControlModifier))
        angle = vrk::visual::toStep(angle, mover.getSteps().angle / degrees);
    const bool isTilt = drag->piece == Piece::Tilt;
    const vrk::rob::Dird about = isTilt ? vrk::rob::Dird(0, 1, 0) : vrk::rob::Dird(1, 0, 0);
    drag->look.directions[static_cast<std::size_t>(at->edge)][at->vector] =
        onEdge.rotation() * (vrk::rob::Rotationd(angle, about) * vrk::rob::Dird(0, 0, 1));
    post([isTilt, angle] {
        if (isTilt)
            VectorHandle::Get()->setTilt(angle);
        else
            VectorHandle::Get()->setTwist(angle);
    });
    tell((isTilt ? tr("Tilt %1°") : tr("Twist %1°")).arg(fixedNumber(angle * degrees, 2)), event.place);
}

void BandTool::end(bool keeps)
{
    if (!drag)
        return;
    const Drag done = *std::exchange(drag, std::nullopt);
    note.hush();
    emit textChanged({});
    post([id = band] {
        if (VectorBandVisual* visual = visualOf(id))
            visual->clearSelectedRange();
    });
    const QString name = nameOfThing(band);
    auto change = std::make_unique<EditBand>(
        done.ring ? tr("Turn the Tool of %1").arg(name) : tr("Shorten %1").arg(name), band, done.look);
    if (keeps && change->isNeeded())
        state.getHistory().push(std::move(change));
    else
        place();
}

bool BandTool::cancel()
{
    const bool wasDragging = drag.has_value();
    end(false);
    return wasDragging;
}

void BandTool::tell(const QString& text, const QPointF& place, const std::optional<QPointF>& keepClear)
{
    note.tell(text, place, keepClear);
    emit textChanged(text);
}

} // namespace vrkview
