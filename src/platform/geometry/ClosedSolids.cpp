#include "platform/geometry/ClosedSolids.h"

#include <BRep_Tool.hxx>
#include <NCollection_DataMap.hxx>
#include <Poly_Triangulation.hxx>
#include <TopExp_Explorer.hxx>
#include <TopLoc_Location.hxx>
#include <TopTools_ShapeMapHasher.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Face.hxx>

#include <utility>

namespace vrk::geometry {
namespace {

struct Uses {
    int forward = 0;
    int reversed = 0;
};
using EdgeUses = NCollection_DataMap<TopoDS_Shape, Uses, TopTools_ShapeMapHasher>; // edges by where they lie

bool isOneWay(const TopoDS_Shape& shape)
{
    return shape.Orientation() == TopAbs_FORWARD || shape.Orientation() == TopAbs_REVERSED;
}

/// @return false for an edge that bounds nothing.
bool addEdges(const TopoDS_Shape& face, EdgeUses& edges)
{
    for (TopExp_Explorer edge(face, TopAbs_EDGE); edge.More(); edge.Next()) {
        if (BRep_Tool::Degenerated(TopoDS::Edge(edge.Current())))
            continue;
        if (!isOneWay(edge.Current()))
            return false;
        Uses* uses = edges.ChangeSeek(edge.Current());
        if (!uses)
            uses = edges.Bound(edge.Current(), Uses());
        ++(edge.Current().Orientation() == TopAbs_FORWARD ? uses->forward : uses->reversed);
    }
    return true;
}

/// Six times the volume between the triangles of the face and a point; 0 and false where there are none.
bool addVolume(const TopoDS_Face& face, const gp_Pnt& from, double& volume)
{
    TopLoc_Location location;
    const Handle(Poly_Triangulation)& triangles = BRep_Tool::Triangulation(face, location);
    const gp_Trsf trsf = location.Transformation();
    if (triangles.IsNull() || triangles->NbTriangles() == 0 || trsf.IsNegative())
        return false;
    const double sign = face.Orientation() == TopAbs_FORWARD ? 1 : -1;
    const auto corner = [&](int node) { return triangles->Node(node).Transformed(trsf).XYZ() - from.XYZ(); };
    for (int i = 1; i <= triangles->NbTriangles(); ++i) {
        int a = 0, b = 0, c = 0;
        triangles->Triangle(i).Get(a, b, c);
        volume += sign * corner(a).Dot(corner(b).Crossed(corner(c)));
    }
    return true;
}

bool isClosed(const TopoDS_Shape& solid)
{
    EdgeUses edges;
    gp_Pnt from; // a point near by: far from the origin the sums would lose their last digits
    bool isFirst = true;
    double volume = 0;
    for (TopExp_Explorer each(solid, TopAbs_FACE); each.More(); each.Next()) {
        const TopoDS_Face& face = TopoDS::Face(each.Current());
        TopLoc_Location location;
        const Handle(Poly_Triangulation)& triangles = BRep_Tool::Triangulation(face, location);
        if (std::exchange(isFirst, false) && !triangles.IsNull() && triangles->NbNodes() > 0)
            from = triangles->Node(1).Transformed(location.Transformation());
        if (!isOneWay(face) || !addEdges(face, edges) || !addVolume(face, from, volume))
            return false;
    }
    for (EdgeUses::Iterator edge(edges); edge.More(); edge.Next())
        if (edge.Value().forward != 1 || edge.Value().reversed != 1)
            return false;
    return volume > 0;
}

} // namespace

bool areSolidsClosed(const TopoDS_Shape& shape)
{
    if (shape.IsNull() || TopExp_Explorer(shape, TopAbs_FACE, TopAbs_SOLID).More())
        return false;
    bool any = false;
    for (TopExp_Explorer solid(shape, TopAbs_SOLID); solid.More(); solid.Next()) {
        any = true;
        if (!isClosed(solid.Current()))
            return false;
    }
    return any;
}

} // namespace vrk::geometry
