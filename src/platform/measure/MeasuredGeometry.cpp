#include "platform/measure/MeasuredGeometry.h"

#include <BRepAdaptor_Curve.hxx>
#include <BRepAdaptor_Surface.hxx>
#include <BRepBuilderAPI_MakeVertex.hxx>
#include <BRep_Tool.hxx>
#include <ElCLib.hxx>
#include <GCPnts_AbscissaPoint.hxx>
#include <GeomLib_IsPlanarSurface.hxx>
#include <Geom_BSplineCurve.hxx>
#include <Geom_BezierCurve.hxx>
#include <Geom_Surface.hxx>
#include <Precision.hxx>
#include <Standard_Failure.hxx>
#include <TopExp.hxx>
#include <TopExp_Explorer.hxx>
#include <TopTools_IndexedMapOfShape.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Vertex.hxx>
#include <gp_Cylinder.hxx>
#include <gp_Quaternion.hxx>
#include <gp_Trsf.hxx>

#include <cmath>

namespace vrk::measure {
namespace {

/// Between the two; for want of an end the other one, or 0.
double middleOf(double first, double last)
{
    const bool hasFirst = !Precision::IsInfinite(first), hasLast = !Precision::IsInfinite(last);
    if (hasFirst && hasLast)
        return (first + last) / 2;
    return hasFirst ? first : hasLast ? last : 0;
}

gp_Pnt middleOf(const BRepAdaptor_Curve& curve)
{
    return curve.Value(middleOf(curve.FirstParameter(), curve.LastParameter()));
}

gp_Pnt middleOf(const BRepAdaptor_Surface& surface)
{
    return surface.Value(middleOf(surface.FirstUParameter(), surface.LastUParameter()),
                         middleOf(surface.FirstVParameter(), surface.LastVParameter()));
}

/// @param curve  with its poles in the world.
template <typename Curve>
std::optional<gp_Lin> lineThroughPoles(const Curve& curve, double first, double last)
{
    const gp_Pnt from = curve.Value(first), to = curve.Value(last);
    if (from.Distance(to) <= Precision::Confusion())
        return std::nullopt;
    const gp_Lin line(from, gp_Dir(gp_Vec(from, to)));
    for (int i = 1; i <= curve.NbPoles(); ++i)
        if (line.Distance(curve.Pole(i)) > Precision::Confusion())
            return std::nullopt;
    return line;
}

/// Exchange files hold straight edges as splines, too: those whose poles all lie on one line.
std::optional<gp_Lin> straightLineOf(const BRepAdaptor_Curve& curve)
{
    const double first = curve.FirstParameter(), last = curve.LastParameter();
    if (curve.GetType() == GeomAbs_Line)
        return curve.Line();
    if (curve.GetType() == GeomAbs_BSplineCurve)
        return lineThroughPoles(*curve.BSpline(), first, last);
    if (curve.GetType() == GeomAbs_BezierCurve)
        return lineThroughPoles(*curve.Bezier(), first, last);
    return std::nullopt;
}

std::optional<gp_Pln> planeOf(const BRepAdaptor_Surface& surface, const TopoDS_Face& face)
{
    if (surface.GetType() == GeomAbs_Plane)
        return surface.Plane();
    if (surface.GetType() == GeomAbs_Cylinder || surface.GetType() == GeomAbs_Sphere)
        return std::nullopt;
    const GeomLib_IsPlanarSurface planar(BRep_Tool::Surface(face), Precision::Confusion());
    return planar.IsPlanar() ? std::optional(planar.Plan()) : std::nullopt;
}

Geometry geometryOfEdge(const TopoDS_Edge& edge, const std::optional<gp_Pnt>& picked)
{
    if (BRep_Tool::Degenerated(edge) || !BRep_Tool::IsGeometric(edge))
        throw MeasureError("This edge has no curve to measure");
    const BRepAdaptor_Curve curve(edge);
    const gp_Pnt place = picked.value_or(middleOf(curve));
    if (const std::optional<gp_Lin> line = straightLineOf(curve)) {
        // A straight spline has parameters of its own: its ends are looked up on the line.
        const bool isLine = curve.GetType() == GeomAbs_Line;
        const double first =
            isLine ? curve.FirstParameter() : ElCLib::Parameter(*line, curve.Value(curve.FirstParameter()));
        const double last =
            isLine ? curve.LastParameter() : ElCLib::Parameter(*line, curve.Value(curve.LastParameter()));
        const gp_Pnt onLine = ElCLib::Value(ElCLib::Parameter(*line, place), *line);
        return {Line{*line, first, last, false}, onLine};
    }
    std::optional<gp_Circ> circle;
    if (curve.GetType() == GeomAbs_Circle)
        circle = curve.Circle();
    return {Other{edge, circle}, place};
}

Geometry geometryOfFace(const TopoDS_Face& face, const std::optional<gp_Pnt>& picked)
{
    if (isMesh(face))
        return {Other{face, {}}, picked.value_or(gp_Pnt())};
    const BRepAdaptor_Surface surface(face);
    const gp_Pnt place = picked.value_or(middleOf(surface));
    if (surface.GetType() == GeomAbs_Cylinder) {
        const gp_Lin axis(surface.Cylinder().Axis());
        const gp_Pnt onAxis = ElCLib::Value(ElCLib::Parameter(axis, place), axis);
        return {Line{axis, surface.FirstVParameter(), surface.LastVParameter(), true}, onAxis};
    }
    if (const std::optional<gp_Pln> plane = planeOf(surface, face)) {
        const gp_Vec normal(plane->Axis().Direction());
        const gp_Pnt onPlane = place.Translated(-normal.Dot(gp_Vec(plane->Location(), place)) * normal);
        return {Flat{*plane, face}, onPlane};
    }
    return {Other{face, {}}, place};
}

} // namespace

gp_Pnt pointOf(const rob::Posd& place)
{
    return {place.x, place.y, place.z};
}

rob::Posd placeOf(const gp_Pnt& point)
{
    return {point.X(), point.Y(), point.Z()};
}

TopoDS_Shape inWorld(const MeasuredShape& thing)
{
    if (thing.shape.IsNull())
        throw MeasureError("There is no shape to measure");
    const auto& [w, x, y, z] = thing.pose.orientation;
    gp_Trsf pose;
    pose.SetTransformation(gp_Quaternion(x, y, z, w), gp_Vec(pointOf(thing.pose.position).XYZ()));
    return thing.shape.Moved(TopLoc_Location(pose));
}

TopoDS_Shape shapeInWorld(const MeasuredThing& thing)
{
    if (const auto* point = std::get_if<MeasuredPoint>(&thing))
        return BRepBuilderAPI_MakeVertex(pointOf(point->place));
    return inWorld(std::get<MeasuredShape>(thing));
}

Geometry geometryOf(const MeasuredThing& thing)
{
    if (const auto* point = std::get_if<MeasuredPoint>(&thing))
        return {pointOf(point->place), pointOf(point->place)};
    const auto& measured = std::get<MeasuredShape>(thing);
    const TopoDS_Shape shape = inWorld(measured);
    std::optional<gp_Pnt> picked;
    if (measured.picked)
        picked = pointOf(measured.pose * *measured.picked);
    switch (shape.ShapeType()) {
    case TopAbs_VERTEX: {
        const gp_Pnt point = BRep_Tool::Pnt(TopoDS::Vertex(shape));
        return {point, point};
    }
    case TopAbs_EDGE:
        return geometryOfEdge(TopoDS::Edge(shape), picked);
    case TopAbs_FACE:
        return geometryOfFace(TopoDS::Face(shape), picked);
    default:
        return {Other{shape, {}}, picked.value_or(gp_Pnt())};
    }
}

bool isMesh(const TopoDS_Shape& shape)
{
    TopLoc_Location location; // asked for, lest a surface be copied to its place
    for (TopExp_Explorer face(shape, TopAbs_FACE); face.More(); face.Next())
        if (BRep_Tool::Surface(TopoDS::Face(face.Current()), location).IsNull())
            return true;
    return false;
}

std::string samplesNote(const MeasuredThing& first, const MeasuredThing& second)
{
    const auto isSample = [](const MeasuredThing& thing) {
        const auto* point = std::get_if<MeasuredPoint>(&thing);
        return point && point->isSample;
    };
    return isSample(first) || isSample(second) ? "between points" : "";
}

} // namespace vrk::measure
