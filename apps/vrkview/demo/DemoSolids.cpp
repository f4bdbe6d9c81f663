#include "demo/DemoSolids.h"

#include <BRepAdaptor_Curve.hxx>
#include <BRepAdaptor_Surface.hxx>
#include <BRepAlgoAPI_Cut.hxx>
#include <BRepAlgoAPI_Fuse.hxx>
#include <BRepBuilderAPI_MakeEdge.hxx>
#include <BRepBuilderAPI_MakeFace.hxx>
#include <BRepBuilderAPI_MakePolygon.hxx>
#include <BRepBuilderAPI_MakeWire.hxx>
#include <BRepBuilderAPI_Transform.hxx>
#include <BRepFilletAPI_MakeChamfer.hxx>
#include <BRepFilletAPI_MakeFillet.hxx>
#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>
#include <BRepPrimAPI_MakePrism.hxx>
#include <BRepPrimAPI_MakeRevol.hxx>
#include <BRep_Builder.hxx>
#include <GC_MakeArcOfCircle.hxx>
#include <TopExp.hxx>
#include <TopTools_IndexedMapOfShape.hxx>
#include <TopTools_ListOfShape.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Compound.hxx>
#include <TopoDS_Edge.hxx>
#include <TopoDS_Face.hxx>
#include <gp_Cylinder.hxx>
#include <gp_Pln.hxx>
#include <gp_Trsf.hxx>

#include <cmath>
#include <numbers>

namespace vrkview::demo {
namespace {

constexpr double pi = std::numbers::pi;

bool near(double a, double b)
{
    return std::abs(a - b) < 1e-3;
}

std::vector<TopoDS_Edge> edgesOf(const TopoDS_Shape& shape, const EdgeTest& wanted)
{
    TopTools_IndexedMapOfShape edges;
    TopExp::MapShapes(shape, TopAbs_EDGE, edges);
    std::vector<TopoDS_Edge> found;
    for (int i = 1; i <= edges.Extent(); ++i) {
        const TopoDS_Edge& edge = TopoDS::Edge(edges(i));
        const BRepAdaptor_Curve curve(edge);
        gp_Pnt middle;
        gp_Vec direction;
        curve.D1((curve.FirstParameter() + curve.LastParameter()) / 2, middle, direction);
        if (wanted(middle, direction.Normalized()))
            found.push_back(edge);
    }
    return found;
}

struct Flat {
    double u, v;
};

Flat direction(double angle)
{
    return {std::cos(angle), std::sin(angle)};
}

/// The direction in which the line lies that touches both discs from outside, on the right of the way from a to b.
double touchAngle(const Disc& a, const Disc& b)
{
    const double way = std::atan2(b.v - a.v, b.u - a.u);
    const double distance = std::hypot(b.u - a.u, b.v - a.v);
    return way - std::acos((a.radius - b.radius) / distance);
}

} // namespace

TopoDS_Shape box(const gp_Pnt& from, const gp_Pnt& to)
{
    return BRepPrimAPI_MakeBox(from, to).Shape();
}

TopoDS_Shape cylinder(const gp_Pnt& foot, const gp_Dir& axis, double radius, double height)
{
    return BRepPrimAPI_MakeCylinder(gp_Ax2(foot, axis), radius, height).Shape();
}

TopoDS_Shape fused(const TopoDS_Shape& a, const TopoDS_Shape& b)
{
    return BRepAlgoAPI_Fuse(a, b).Shape();
}

TopoDS_Shape without(const TopoDS_Shape& shape, const std::vector<TopoDS_Shape>& tools)
{
    TopTools_ListOfShape shapes;
    shapes.Append(shape);
    TopTools_ListOfShape cutters;
    for (const TopoDS_Shape& tool : tools)
        cutters.Append(tool);
    BRepAlgoAPI_Cut cut;
    cut.SetArguments(shapes);
    cut.SetTools(cutters);
    cut.Build();
    return cut.Shape();
}

TopoDS_Shape rounded(const TopoDS_Shape& shape, double radius, const EdgeTest& wanted)
{
    BRepFilletAPI_MakeFillet fillet(shape);
    for (const TopoDS_Edge& edge : edgesOf(shape, wanted))
        fillet.Add(radius, edge);
    return fillet.Shape();
}

TopoDS_Shape bevelled(const TopoDS_Shape& shape, double width, const EdgeTest& wanted)
{
    BRepFilletAPI_MakeChamfer chamfer(shape);
    for (const TopoDS_Edge& edge : edgesOf(shape, wanted))
        chamfer.Add(width, edge);
    return chamfer.Shape();
}

EdgeTest isAlong(const gp_Dir& axis)
{
    return [axis](const gp_Pnt&, const gp_Vec& direction) { return near(std::abs(direction.Dot(gp_Vec(axis))), 1); };
}

EdgeTest liesAtHeight(double z)
{
    return [z](const gp_Pnt& middle, const gp_Vec& direction) { return near(middle.Z(), z) && near(direction.Z(), 0); };
}

TopoDS_Shape turned(const std::vector<RadiusHeight>& outline)
{
    BRepBuilderAPI_MakePolygon polygon;
    for (const RadiusHeight& point : outline)
        polygon.Add(gp_Pnt(point.radius, 0, point.height));
    polygon.Close();
    return BRepPrimAPI_MakeRevol(BRepBuilderAPI_MakeFace(polygon.Wire()).Face(), gp::OZ()).Shape();
}

TopoDS_Shape plate(const gp_Ax2& plane, const std::vector<Disc>& discs, double thickness)
{
    const auto onRim = [&plane](const Disc& disc, double angle) {
        const Flat rim = direction(angle);
        return plane.Location().Translated(gp_Vec(plane.XDirection()) * (disc.u + disc.radius * rim.u) +
                                           gp_Vec(plane.YDirection()) * (disc.v + disc.radius * rim.v));
    };
    BRepBuilderAPI_MakeWire outline;
    const std::size_t count = discs.size();
    for (std::size_t i = 0; i < count; ++i) {
        const Disc& disc = discs[i];
        const Disc& next = discs[(i + 1) % count];
        const double from = touchAngle(discs[(i + count - 1) % count], disc);
        double to = touchAngle(disc, next);
        while (to < from)
            to += 2 * pi;
        outline.Add(BRepBuilderAPI_MakeEdge(
                        GC_MakeArcOfCircle(onRim(disc, from), onRim(disc, (from + to) / 2), onRim(disc, to)).Value())
                        .Edge());
        outline.Add(BRepBuilderAPI_MakeEdge(onRim(disc, to), onRim(next, to)).Edge());
    }
    const TopoDS_Face face = BRepBuilderAPI_MakeFace(outline.Wire()).Face();
    return BRepPrimAPI_MakePrism(face, gp_Vec(plane.Direction()) * thickness).Shape();
}

TopoDS_Shape sidePlate(const std::vector<Disc>& discs, double fromY, double toY)
{
    return plate(gp_Ax2(gp_Pnt(0, toY, 0), gp_Dir(0, -1, 0), gp::DX()), discs, toY - fromY);
}

TopoDS_Shape turnedAbout(const gp_Ax2& axis, const std::vector<RadiusHeight>& outline)
{
    gp_Trsf place;
    place.SetDisplacement(gp_Ax3(), gp_Ax3(axis));
    return turned(outline).Moved(TopLoc_Location(place));
}

TopoDS_Shape drum(const gp_Pnt& foot, const gp_Dir& axis, double radius, double height, double bevel)
{
    return turnedAbout(gp_Ax2(foot, axis),
                       {{0, 0}, {radius, 0}, {radius, height - bevel}, {radius - bevel, height}, {0, height}});
}

TopoDS_Shape scaled(const TopoDS_Shape& shape, double factor)
{
    gp_Trsf scale;
    scale.SetScale(gp::Origin(), factor);
    return BRepBuilderAPI_Transform(shape, scale, true).Shape();
}

TopoDS_Shape together(const std::vector<TopoDS_Shape>& shapes)
{
    const BRep_Builder builder;
    TopoDS_Compound all;
    builder.MakeCompound(all);
    for (const TopoDS_Shape& shape : shapes)
        builder.Add(all, shape);
    return all;
}

FaceTest isCylinder(double minRadius, double maxRadius)
{
    return [=](const TopoDS_Face& face) {
        const BRepAdaptor_Surface surface(face);
        return surface.GetType() == GeomAbs_Cylinder && surface.Cylinder().Radius() >= minRadius &&
               surface.Cylinder().Radius() <= maxRadius;
    };
}

FaceTest isPlaneFacing(int axis, int sign)
{
    return [=](const TopoDS_Face& face) {
        const BRepAdaptor_Surface surface(face);
        if (surface.GetType() != GeomAbs_Plane)
            return false;
        const gp_Dir normal = surface.Plane().Axis().Direction();
        const bool isReversed = (face.Orientation() == TopAbs_REVERSED) != !surface.Plane().Direct();
        return near(normal.Coord(axis + 1) * (isReversed ? -1 : 1), sign);
    };
}

FaceTest isPlaneAt(int axis, double place)
{
    return [=](const TopoDS_Face& face) {
        const BRepAdaptor_Surface surface(face);
        return surface.GetType() == GeomAbs_Plane &&
               near(std::abs(surface.Plane().Axis().Direction().Coord(axis + 1)), 1) &&
               near(surface.Plane().Location().Coord(axis + 1), place);
    };
}

} // namespace vrkview::demo
