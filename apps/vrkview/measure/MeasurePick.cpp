#include "measure/MeasurePick.h"

#include "canvas/Picked.h"
#include "canvas/ViewWidget.h"
#include "edit/ModelPlaces.h"
#include "measure/MeasuredThings.h"

#include "mesh/Mesh.h"
#include "platform/layout/Body.h"
#include "platform/sdf/SdfManager.h"
#include "scene/Scene.h"
#include "selection/VisualSelection.h"
#include "selection/pick/PickQuery.h"
#include "visual/MeshVisual.h"

#include <Standard_Failure.hxx>

#include <QObject>

#include <algorithm>
#include <array>

namespace vrkview {
namespace {

using vrk::layout::DimensionEnd;
using vrk::selection::PickCandidate;
using vrk::selection::PickKind;
using vrk::selection::PickQuery;
using vrk::visual::MeshVisual;
using vrk::visual::Scene;
using Kind = DimensionEnd::Kind;

constexpr double radius = 10; // logical pixels, as of the places that moves snap to

/// The corner of the triangle that is nearest to the place: its number and where it is in the mesh.
void takeCorner(DimensionEnd& end, const MeshVisual& visual, unsigned triangle)
{
    const vrk::visual::Mesh& mesh = *visual.getMesh();
    const auto corner = [&](unsigned i) { return mesh.indices[3 * std::size_t{triangle} + i]; };
    const auto distance = [&](unsigned i) {
        return (vrk::rob::Posd(mesh.vertices[corner(i)]) - end.place).squaredLength();
    };
    const std::array<unsigned, 3> all{0, 1, 2};
    end.number = corner(*std::ranges::min_element(all, {}, distance));
    end.place = vrk::rob::Posd(mesh.vertices[end.number]);
}

/// What of the model was found; empty for what cannot be measured, such as a curve of no body.
std::optional<DimensionEnd> endOf(const PickCandidate& found, bool isWhole)
{
    if (!sdf::Share(found.visualId))
        return std::nullopt;
    DimensionEnd end;
    end.object = found.visualId;
    end.place = worldPoseOfThing(end.object).inverse() * found.place;
    if (isWhole) {
        const bool isBody = std::dynamic_pointer_cast<vrk::layout::Body>(sdf::Share(end.object)) != nullptr;
        end.kind = Kind::Body;
        return isBody ? std::optional(end) : std::nullopt;
    }
    end.number = static_cast<unsigned>(std::max<std::int64_t>(found.subId, 0));
    switch (found.kind) {
    case PickKind::Vertex:
        end.kind = Kind::Vertex;
        break;
    case PickKind::Edge:
        end.kind = Kind::Edge;
        break;
    case PickKind::Face:
        end.kind = Kind::Face;
        break;
    case PickKind::CloudPoint:
        end.kind = Kind::CloudPoint;
        break;
    case PickKind::MeshTriangle: {
        const auto* mesh = dynamic_cast<const MeshVisual*>(found.visual);
        if (!mesh || !mesh->getMesh())
            return std::nullopt;
        end.kind = Kind::MeshVertex;
        takeCorner(end, *mesh, end.number);
        break;
    }
    case PickKind::Frame:
        end.kind = Kind::Frame;
        end.number = 0;
        end.place = {};
        break;
    default:
        end.kind = Kind::Point;
        end.number = 0;
    }
    return end;
}

QString describe(const DimensionEnd& end)
{
    QString text = nameOfEnd(end);
    if (end.kind == Kind::Body)
        return text;
    try {
        text += ", " + QString::fromStdString(vrk::measure::describe(measuredThing(end)));
    } catch (const vrk::measure::MeasureError& failure) {
        text += ": " + QString(failure.what());
    } catch (const Standard_Failure& failure) {
        text += ": " + QString(failure.GetMessageString());
    }
    return text;
}

} // namespace

bool isSameThing(const DimensionEnd& a, const DimensionEnd& b)
{
    const bool isPlace = a.kind == Kind::Point;
    return a.kind == b.kind && a.object == b.object && a.number == b.number && (!isPlace || a.place == b.place);
}

std::optional<MeasurePick> measurePickAt(const ViewWidget& view, const StationTree& tree, const QPointF& mouse,
                                         bool isWhole)
{
    PickQuery query;
    query.camera = vrk::selection::PickCamera::Main(view.devicePixelRatioF());
    if (!query.camera.hasPixels())
        return std::nullopt;
    query.x = mouse.x();
    query.y = mouse.y();
    query.radius = radius;
    if (isWhole)
        query.kinds = {PickKind::Face, PickKind::MeshTriangle};
    else
        query.kinds = {PickKind::Vertex, PickKind::Point,      PickKind::Edge,        PickKind::Frame,
                       PickKind::Face,   PickKind::CloudPoint, PickKind::MeshTriangle};
    vrk::selection::VisualSelection::Get()->update();
    const std::optional<PickCandidate> found = query.askBest();
    const std::optional<DimensionEnd> end = found ? endOf(*found, isWhole) : std::nullopt;
    if (!end)
        return std::nullopt;
    MeasurePick pick{*end, snapPlaceOf(tree, *found), describe(*end)};
    if (isWhole)
        pick.mark.face = 0; // all of it is highlighted
    else if (end->kind == Kind::MeshVertex || end->kind == Kind::CloudPoint || end->kind == Kind::Frame) {
        pick.mark.kind = SnapPlace::Kind::Corner;
        pick.mark.place = worldPoseOfThing(end->object) * end->place;
    }
    return pick;
}

} // namespace vrkview
