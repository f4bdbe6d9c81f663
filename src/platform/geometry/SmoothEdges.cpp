#include "platform/geometry/SmoothEdges.h"

#include <BRep_Tool.hxx>
#include <Geom2d_Curve.hxx>
#include <Geom_Surface.hxx>
#include <Standard_Failure.hxx>
#include <TopExp.hxx>
#include <TopLoc_Location.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Edge.hxx>
#include <TopoDS_Face.hxx>
#include <gp_Pnt2d.hxx>
#include <gp_Trsf.hxx>
#include <gp_Vec.hxx>

#include <optional>

namespace vrk::geometry {
namespace {

constexpr double leastCosine = 0.9903; // of eight degrees

/// Outwards of the face, of length 1.
std::optional<gp_Vec> normalAt(const TopoDS_Edge& edge, const TopoDS_Face& face, double share)
{
    double first = 0, last = 0;
    const Handle(Geom2d_Curve) curve = BRep_Tool::CurveOnSurface(edge, face, first, last);
    TopLoc_Location location;
    const Handle(Geom_Surface)& surface = BRep_Tool::Surface(face, location);
    if (curve.IsNull() || surface.IsNull())
        return std::nullopt;
    const gp_Pnt2d place = curve->Value(first + share * (last - first));
    gp_Pnt point;
    gp_Vec alongU, alongV;
    surface->D1(place.X(), place.Y(), point, alongU, alongV);
    gp_Vec normal = alongU.Crossed(alongV);
    const double length = normal.Magnitude();
    if (!(length > 1e-12 * (1 + alongU.Magnitude() * alongV.Magnitude())))
        return std::nullopt;
    normal /= face.Orientation() == TopAbs_REVERSED ? -length : length;
    return normal.Transformed(location.Transformation());
}

/// @param edgeA, edgeB  the same edge, as `a` and `b` have it.
bool areAlike(const TopoDS_Edge& edgeA, const TopoDS_Face& a, const TopoDS_Edge& edgeB, const TopoDS_Face& b)
{
    for (const double share : {0.1, 0.5, 0.9}) {
        const std::optional<gp_Vec> atA = normalAt(edgeA, a, share);
        const std::optional<gp_Vec> atB = normalAt(edgeB, b, share);
        if (!atA || !atB || !(atA->Dot(*atB) > leastCosine))
            return false;
    }
    return true;
}

} // namespace

TopTools_IndexedDataMapOfShapeListOfShape facesOfEdges(const TopoDS_Shape& shape)
{
    TopTools_IndexedDataMapOfShapeListOfShape all;
    TopExp::MapShapesAndUniqueAncestors(shape, TopAbs_EDGE, TopAbs_FACE, all);
    return all;
}

bool isSmoothEdge(const TopoDS_Edge& edge, const TopTools_ListOfShape& faces)
{
    if (faces.IsEmpty() || faces.Extent() > 2)
        return false;
    try {
        const TopoDS_Face& face = TopoDS::Face(faces.First());
        if (faces.Extent() == 1)
            return BRep_Tool::IsClosed(edge, face) &&
                   areAlike(edge, face, TopoDS::Edge(edge.Reversed()), face); // which has the curve of its other side
        return areAlike(edge, face, edge, TopoDS::Face(faces.Last()));
    } catch (const Standard_Failure&) {
        return false; // a damaged curve or surface
    }
}

} // namespace vrk::geometry
