#include "platform/geometry/EdgePolygons.h"

#include <BRepAdaptor_Curve.hxx>
#include <BRep_Builder.hxx>
#include <BRep_Tool.hxx>
#include <GCPnts_TangentialDeflection.hxx>
#include <Poly_Polygon3D.hxx>
#include <Poly_PolygonOnTriangulation.hxx>
#include <Poly_Triangulation.hxx>
#include <Precision.hxx>
#include <TColgp_Array1OfPnt.hxx>
#include <TopExp_Explorer.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Edge.hxx>

#include <vector>

namespace vrk::geometry {
namespace {

constexpr double lineAngularDeflection = 0.1; // radians; a thin line shows its corners, a shaded face hides them

/// The points of an edge that lies where its curve is, within `deflection`: those that the triangles of a face already
/// have, so that a drawn edge lies on its face; of the curve where the edge bounds no face. Empty where it has no end.
std::vector<gp_Pnt> pointsOn(const TopoDS_Edge& edge, std::optional<double> deflection)
{
    std::vector<gp_Pnt> points;
    TopLoc_Location location;
    Handle(Poly_PolygonOnTriangulation) onTriangles;
    Handle(Poly_Triangulation) triangles;
    BRep_Tool::PolygonOnTriangulation(edge, onTriangles, triangles, location);
    if (!onTriangles.IsNull() && !triangles.IsNull()) {
        for (int i = 1; i <= onTriangles->NbNodes(); ++i)
            points.push_back(triangles->Node(onTriangles->Node(i)).Transformed(location.Transformation()));
        return points;
    }
    if (!deflection || !BRep_Tool::IsGeometric(edge))
        return points;
    const BRepAdaptor_Curve curve(edge);
    if (Precision::IsInfinite(curve.FirstParameter()) || Precision::IsInfinite(curve.LastParameter()))
        return points;
    const GCPnts_TangentialDeflection onCurve(curve, lineAngularDeflection, *deflection);
    for (int i = 1; i <= onCurve.NbPoints(); ++i)
        points.push_back(onCurve.Value(i));
    return points;
}

/// Gives an edge the polygon by which it is drawn. The mesher leaves edges with indices into the triangles of their faces.
void addPolygon(const TopoDS_Edge& placed, std::optional<double> deflection)
{
    const TopoDS_Edge edge = TopoDS::Edge(placed.Located(TopLoc_Location())); // the polygon goes where the curve is
    TopLoc_Location location;
    if (BRep_Tool::Degenerated(edge) || !BRep_Tool::Polygon3D(edge, location).IsNull())
        return;
    const std::vector<gp_Pnt> points = pointsOn(edge, deflection);
    if (points.size() < 2)
        return;
    const TColgp_Array1OfPnt nodes(points.front(), 1, static_cast<int>(points.size()));
    BRep_Builder().UpdateEdge(edge, Handle(Poly_Polygon3D)(new Poly_Polygon3D(nodes)));
}

} // namespace

void addEdgePolygons(const TopoDS_Shape& shape, std::optional<double> deflection)
{
    // An edge is met once for each face that it bounds, and has its polygon from the first time on.
    for (TopExp_Explorer edge(shape, TopAbs_EDGE); edge.More(); edge.Next())
        addPolygon(TopoDS::Edge(edge.Current()), deflection);
}

void forEachNode(const TopoDS_Edge& edge, const std::function<void(const gp_Pnt&)>& call)
{
    if (BRep_Tool::Degenerated(edge))
        return;
    TopLoc_Location location;
    if (const Handle(Poly_Polygon3D) polygon = BRep_Tool::Polygon3D(edge, location); !polygon.IsNull()) {
        for (int i = 1; i <= polygon->NbNodes(); ++i)
            call(polygon->Nodes()(i).Transformed(location.Transformation()));
        return;
    }
    for (const gp_Pnt& point : pointsOn(edge, {}))
        call(point);
}

} // namespace vrk::geometry
