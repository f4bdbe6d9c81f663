#include "view/SurfaceFrame.h"

#include "selection/geometry/Result.h"
#include "visual/SolidVisual.h"
#include "visual/VisualCast.h"

#include <BRep_Tool.hxx>
#include <GeomAPI_ProjectPointOnSurf.hxx>
#include <GeomLib.hxx>
#include <Geom_Surface.hxx>
#include <Standard_Failure.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Face.hxx>
#include <gp_Dir.hxx>
#include <gp_Pnt.hxx>
#include <gp_Pnt2d.hxx>

#include <optional>

namespace vrk::visual {
namespace {

constexpr double normalTolerance = 1e-6;
constexpr int firstFailure = 2; // of what NormEstim answers; below it there is a normal
constexpr float alongX = 0.001f;

/// `axis` without its part along `z`.
rob::Vec3f across(const rob::Dirf& axis, const rob::Dirf& z)
{
    return rob::Vec3f(axis) - z * axis.dot(z);
}

/// 0 for a face that is not of this solid.
unsigned indexOf(const TopoDS_Shape& face, const SolidVisual& solid)
{
    const layout::FaceMap& faces = solid.getFaceMap();
    for (int i = 1; i <= faces.Extent(); ++i)
        if (faces.FindKey(i).IsSame(face)) // whichever way it is turned
            return static_cast<unsigned>(i);
    return 0;
}

/// The normal, out of the body, of a face in the world at the place nearest to `position`.
std::optional<rob::Dirf> normalAt(const TopoDS_Face& face, const rob::Posf& position)
{
    const Handle(Geom_Surface) surface = BRep_Tool::Surface(face);
    if (surface.IsNull()) // a face of triangles only
        return {};
    try {
        const GeomAPI_ProjectPointOnSurf projection(gp_Pnt(position.x, position.y, position.z), surface);
        if (!projection.IsDone() || projection.NbPoints() == 0)
            return {};
        double u = 0;
        double v = 0;
        projection.LowerDistanceParameters(u, v);
        gp_Dir normal;
        if (GeomLib::NormEstim(surface, gp_Pnt2d(u, v), normalTolerance, normal) >= firstFailure)
            return {};
        if (face.Orientation() == TopAbs_REVERSED)
            normal.Reverse();
        return rob::normalized(rob::Dirf(rob::Vec3d(normal.X(), normal.Y(), normal.Z())));
    } catch (const Standard_Failure&) { // a degenerate surface
        return {};
    }
}

} // namespace

rob::Rotationf frameOfNormal(const rob::Dirf& normal)
{
    const rob::Dirf z = rob::normalized(normal);
    rob::Vec3f x = across({1, 0, 0}, z);
    if (x.length() < alongX)
        x = across({0, 1, 0}, z);
    const rob::Dirf unitX = rob::normalized(x);
    return rob::Rotationf::FromAxes(unitX, rob::normalized(z.cross(unitX)), z);
}

bool surfaceFrame(const selection::Result& pick, rob::Posef& out)
{
    if (!pick.hit || !pick.visual)
        return false;
    const VisualType type = pick.visual->getType();
    if (pick.face.IsNull() && type != VisualType::Solid && type != VisualType::Mesh)
        return false;

    out = rob::Posef(pick.position);
    const auto* solid = visualCast<SolidVisual>(pick.visual, VisualType::Solid);
    if (pick.face.IsNull() || !solid)
        return true;
    const unsigned index = indexOf(pick.face, *solid);
    if (index == 0)
        return true;
    const TopoDS_Face face = solid->getFaceInWorld(index);
    if (face.IsNull())
        return true;
    if (const std::optional<rob::Dirf> normal = normalAt(face, pick.position))
        out.orientation = frameOfNormal(*normal).orient();
    return true;
}

} // namespace vrk::visual
