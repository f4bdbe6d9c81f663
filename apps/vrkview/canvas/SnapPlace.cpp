#include "canvas/SnapPlace.h"

#include "canvas/BodyEdge.h"
#include "canvas/Picked.h"
#include "canvas/ViewWidget.h"
#include "docks/StationTree.h"
#include "edit/ModelPlaces.h"

#include "handles/DragHandle.h"
#include "selection/VisualSelection.h"
#include "selection/pick/PickQuery.h"
#include "visual/Visual.h"

#include <BRepAdaptor_Curve.hxx>
#include <BRep_Tool.hxx>
#include <GCPnts_AbscissaPoint.hxx>
#include <TopoDS_Edge.hxx>
#include <TopoDS_Vertex.hxx>

#include <QObject>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace vrkview {
namespace {

using vrk::selection::PickCandidate;
using vrk::selection::PickKind;
using vrk::selection::PickQuery;
using vrk::visual::DragHandle;
using vrk::visual::Visual;

constexpr double radius = 10; // logical pixels: corners and edges are meant ahead of the faces that they bound

bool belongsTo(const Visual& piece, const std::vector<unsigned>& things)
{
    for (const Visual* visual = &piece; visual; visual = visual->getParent())
        if (visual == DragHandle::Get() || std::ranges::find(things, visual->getId()) != things.end())
            return true;
    return false;
}

vrk::rob::Posd inWorld(unsigned body, const gp_Pnt& place)
{
    return worldPoseOfThing(body) * vrk::rob::Posd(place.X(), place.Y(), place.Z());
}

/// Of a full circle and of an arc alike the centre; of any other edge half way along it.
struct PlaceOfEdge {
    gp_Pnt place;
    bool isCentre;
};

PlaceOfEdge placeOf(const TopoDS_Edge& edge)
{
    const BRepAdaptor_Curve curve(edge);
    if (curve.GetType() == GeomAbs_Circle)
        return {curve.Circle().Location(), true};
    const double first = curve.FirstParameter(), last = curve.LastParameter();
    const GCPnts_AbscissaPoint middle(curve, GCPnts_AbscissaPoint::Length(curve) / 2, first);
    return {curve.Value(middle.IsDone() ? middle.Parameter() : (first + last) / 2), false};
}

vrk::selection::PickKinds kindsFor(SnapFor what)
{
    switch (what) {
    case SnapFor::Face:
        return {PickKind::Face};
    case SnapFor::Edge:
        return {PickKind::Edge};
    case SnapFor::Place:
        break;
    }
    return {PickKind::Vertex, PickKind::Point, PickKind::Edge, PickKind::Face, PickKind::MeshTriangle};
}

} // namespace

std::optional<SnapPlace> snapPlaceAt(const ViewWidget& view, const StationTree& tree, const QPointF& mouse,
                                     const std::vector<unsigned>& without, SnapFor what)
{
    PickQuery query;
    query.camera = vrk::selection::PickCamera::Main(view.devicePixelRatioF());
    if (!query.camera.hasPixels())
        return std::nullopt;
    query.x = mouse.x();
    query.y = mouse.y();
    query.radius = radius;
    query.kinds = kindsFor(what);
    query.filter = [&without](const PickCandidate& found) {
        return std::string(belongsTo(*found.visual, without) ? "it is what is moved" : "");
    };
    vrk::selection::VisualSelection::Get()->update();
    const std::optional<PickCandidate> found = query.askBest();
    if (!found)
        return std::nullopt;
    return snapPlaceOf(tree, *found);
}

SnapPlace snapPlaceOf(const StationTree& tree, const PickCandidate& found)
{
    const Picked picked(tree, found);
    const QString name = nameOfThing(picked.thing);
    SnapPlace snap{SnapPlace::Kind::Face, found.place,   QObject::tr("place of %1").arg(name),
                   found.visualId,        picked.face(), picked.edge()};
    if (found.kind == PickKind::Vertex || found.kind == PickKind::Point) {
        snap.kind = SnapPlace::Kind::Corner;
        snap.text = QObject::tr("corner of %1").arg(name);
        // As exact as the shape: what picking tells went through the scene's single precision.
        if (const TopoDS_Vertex vertex = vertexOfBody(snap.body, static_cast<unsigned>(found.subId));
            found.kind == PickKind::Vertex && !vertex.IsNull())
            snap.place = inWorld(snap.body, BRep_Tool::Pnt(vertex));
    } else if (snap.face != 0) {
        snap.text = QObject::tr("face of %1").arg(name);
    } else if (const TopoDS_Edge edge = edgeOfBody(snap.body, snap.edge); !edge.IsNull()) {
        const auto [place, isCentre] = placeOf(edge);
        snap.kind = isCentre ? SnapPlace::Kind::Centre : SnapPlace::Kind::Middle;
        snap.place = inWorld(snap.body, place);
        snap.text =
            (isCentre ? QObject::tr("centre of a circle of %1") : QObject::tr("middle of an edge of %1")).arg(name);
    }
    return snap;
}

std::vector<QPointF> signOf(SnapPlace::Kind kind, const QPointF& middle, double radius)
{
    constexpr double full = 2 * std::numbers::pi;
    const auto polygon = [&](int corners, double first, double reach) {
        std::vector<QPointF> outline;
        for (int i = 0; i < corners; ++i) {
            const double angle = first + full * i / corners;
            outline.push_back(middle + QPointF(std::cos(angle), -std::sin(angle)) * reach);
        }
        return outline;
    };
    switch (kind) {
    case SnapPlace::Kind::Corner:
        return polygon(4, full / 8, radius * std::numbers::sqrt2);
    case SnapPlace::Kind::Middle:
        return polygon(3, full / 4, radius * 1.3);
    case SnapPlace::Kind::Centre:
        return polygon(20, 0, radius);
    case SnapPlace::Kind::Face:
        break;
    }
    return polygon(4, 0, radius * 1.2);
}

} // namespace vrkview
