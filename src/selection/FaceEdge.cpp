#include "platform/geometry/ProjectPoint.h"
#include "selection/ViewPixels.h"
#include "selection/geometry/Result.h"

#include <BRepAdaptor_Curve.hxx>
#include <BRep_Tool.hxx>
#include <Extrema_ExtPC.hxx>
#include <Geom_Surface.hxx>
#include <TopExp.hxx>
#include <TopTools_IndexedMapOfShape.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Edge.hxx>
#include <TopoDS_Face.hxx>

#include <algorithm>
#include <cmath>
#include <limits>

namespace vrk::selection {
namespace {

struct PointOnEdge {
    double distance;
    double param;
};

gp_Pnt toPnt(const rob::PosTemplate<float>& p)
{
    return {p.x, p.y, p.z};
}

/// The nearest of the points at which the edge's curve stands square to the way from `point`; its ends are not among them.
std::optional<PointOnEdge> nearestOn(const TopoDS_Edge& edge, const gp_Pnt& point)
{
    constexpr double tolerance = 1e-10;
    if (!BRep_Tool::IsGeometric(edge))
        return std::nullopt;
    const BRepAdaptor_Curve curve(edge);
    const auto [first, last] = std::minmax({curve.FirstParameter(), curve.LastParameter()}); // by value
    const Extrema_ExtPC search(point, curve, first, last, tolerance);
    if (!search.IsDone())
        return std::nullopt;
    std::optional<PointOnEdge> nearest;
    for (int i = 1; i <= search.NbExt(); ++i) {
        const double distance = std::sqrt(search.SquareDistance(i));
        if (!nearest || distance < nearest->distance)
            nearest = PointOnEdge{distance, search.Point(i).Parameter()};
    }
    return nearest;
}

/// How far from a hit an edge may be.
float toleranceAt(const rob::PosTemplate<float>& position)
{
    constexpr float pixels = 20.0f;
    constexpr float withoutView = 25.0f; // units
    const std::optional<float> pixel = worldUnitsPerPixelAt(position);
    return pixel ? *pixel * pixels : withoutView;
}

} // namespace

std::optional<double> Result::getEdgeParam() const
{
    if (edge.IsNull() || !hit)
        return std::nullopt;
    const std::optional<PointOnEdge> nearest = nearestOn(TopoDS::Edge(edge), toPnt(localPosition));
    return nearest ? std::optional(nearest->param) : std::nullopt;
}

std::optional<Result::EdgeRes> Result::getFaceEdge() const
{
    if (!valid || !hit || face.IsNull())
        return std::nullopt;
    const TopoDS_Face& hitFace = TopoDS::Face(face);
    const Handle(Geom_Surface) surface = BRep_Tool::Surface(hitFace);
    if (surface.IsNull())
        return std::nullopt;
    // The hit lies on a triangle: the point of the surface is the one to measure from.
    const auto uv = geometry::ProjectPoint(localPosition.x, localPosition.y, localPosition.z, hitFace);
    if (!uv)
        return std::nullopt;
    const gp_Pnt point = surface->Value(uv->u, uv->v);

    TopTools_IndexedMapOfShape edges;
    TopExp::MapShapes(hitFace, TopAbs_EDGE, edges);
    std::optional<EdgeRes> best;
    double bestDistance = std::numeric_limits<double>::max();
    for (int i = 1; i <= edges.Size(); ++i) {
        const std::optional<PointOnEdge> nearest = nearestOn(TopoDS::Edge(edges(i)), point);
        if (!nearest || !(nearest->distance < bestDistance))
            continue;
        bestDistance = nearest->distance;
        best = EdgeRes{edges(i), i, nearest->param};
    }
    if (best && bestDistance > toleranceAt(position))
        best.reset();
    return best;
}

} // namespace vrk::selection
