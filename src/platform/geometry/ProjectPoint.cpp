#include "platform/geometry/ProjectPoint.h"

#include <BRepTools.hxx>
#include <BRep_Tool.hxx>
#include <GeomAPI_ProjectPointOnSurf.hxx>
#include <Geom_Surface.hxx>
#include <TopoDS_Face.hxx>

namespace vrk::geometry {

std::optional<SurfaceParameters> ProjectPoint(double x, double y, double z, const TopoDS_Face& face)
{
    const Handle(Geom_Surface) surface = BRep_Tool::Surface(face);
    if (surface.IsNull())
        return std::nullopt;
    double u1, u2, v1, v2;
    BRepTools::UVBounds(face, u1, u2, v1, v2);
    const gp_Pnt point(x, y, z);
    GeomAPI_ProjectPointOnSurf search(point, surface, u1, u2, v1, v2);
    // A point beside a face can be nearest to its border, where nothing stands square: the whole surface answers then.
    if (!search.IsDone() || search.NbPoints() == 0)
        search.Init(point, surface);
    if (!search.IsDone() || search.NbPoints() == 0)
        return std::nullopt;
    SurfaceParameters nearest;
    search.LowerDistanceParameters(nearest.u, nearest.v);
    return nearest;
}

} // namespace vrk::geometry
