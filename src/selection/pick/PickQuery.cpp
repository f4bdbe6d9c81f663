#include "selection/pick/PickQuery.h"

#include "selection/CurveObject.h"
#include "selection/VisualSelection.h"
#include "selection/geometry/Result.h"
#include "selection/pick/PickSearch.h"
#include "visual/SolidVisual.h"

#include <TopExp.hxx>
#include <TopTools_IndexedMapOfShape.hxx>
#include <TopoDS_Face.hxx>

#include <stdexcept>

namespace vrk::selection {
namespace {

const VisualSelection& startedService()
{
    if (const VisualSelection* service = VisualSelection::Get())
        return *service;
    throw std::logic_error("The picking service is not up to date");
}

TopoDS_Shape edgeOf(const TopoDS_Shape& shape, std::int64_t number)
{
    TopTools_IndexedMapOfShape edges;
    TopExp::MapShapes(shape, TopAbs_EDGE, edges);
    return edges.FindKey(static_cast<int>(number));
}

} // namespace

std::array<int, pickKindCount> PickQuery::DefaultPriorities()
{
    std::array<int, pickKindCount> priorities{};
    const auto set = [&priorities](PickKind kind, int number) { priorities[static_cast<unsigned>(kind)] = number; };
    set(PickKind::Vertex, 0);
    set(PickKind::Point, 0);
    set(PickKind::Edge, 1);
    set(PickKind::Curve, 1);
    set(PickKind::Line, 1);
    set(PickKind::Frame, 2);
    set(PickKind::Target, 2);
    set(PickKind::CloudPoint, 3);
    set(PickKind::Face, 4);
    set(PickKind::MeshTriangle, 4);
    set(PickKind::Body, 5);
    return priorities;
}

PickAnswer PickQuery::askAll(const VisualSelection& service) const
{
    return PickSearch(service, *this).all();
}

std::optional<PickCandidate> PickQuery::askBest(const VisualSelection& service) const
{
    return PickSearch(service, *this).best();
}

PickAnswer PickQuery::askAll() const
{
    return askAll(startedService());
}

std::optional<PickCandidate> PickQuery::askBest() const
{
    return askBest(startedService());
}

const PickCandidate* PickAnswer::chosen() const
{
    const bool isFound = !candidates.empty() && candidates.front().verdict == PickVerdict::Chosen;
    return isFound ? &candidates.front() : nullptr;
}

Result PickCandidate::toResult() const
{
    Result result;
    result.hit = true;
    result.distance = static_cast<float>(distance);
    result.visual = visual;
    result.position = rob::PosTemplate<float>(place);
    const SelectableObject& object = *startedService().getObject(visual);
    result.pose = object.worldPose;
    result.localPosition = object.inverseWorldPose * result.position;
    if (kind == PickKind::CloudPoint)
        result.pointIndex = static_cast<int>(subId);
    if (const auto* curve = dynamic_cast<const CurveObject*>(&object))
        result.shape = curve->getShape();
    const auto* solid = dynamic_cast<const visual::SolidVisual*>(visual);
    if (solid)
        result.shape = solid->getShape();
    if (kind == PickKind::Face && solid)
        result.face = solid->getFace(static_cast<int>(subId));
    if (kind == PickKind::Edge || kind == PickKind::Curve)
        result.edge = edgeOf(result.shape, subId);
    return result;
}

} // namespace vrk::selection
