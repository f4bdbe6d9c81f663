#include "platform/geometry/ProjectPoint.h"

#include <BRepBuilderAPI_MakeFace.hxx>
#include <BRep_Builder.hxx>
#include <BRep_Tool.hxx>
#include <Geom_Surface.hxx>
#include <TopLoc_Location.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Face.hxx>
#include <gp_Ax3.hxx>
#include <gp_Cylinder.hxx>
#include <gp_Pln.hxx>
#include <gp_Trsf.hxx>

#include <gtest/gtest.h>

#include <numbers>

namespace vrk::geometry {
namespace {

/// A square of 20 units about the origin.
TopoDS_Face squareFace()
{
    return BRepBuilderAPI_MakeFace(gp_Pln(gp_Ax3()), -10, 10, -10, 10);
}

TopoDS_Face cylinderFace(double from, double to)
{
    return BRepBuilderAPI_MakeFace(gp_Cylinder(gp_Ax3(), 5), from, to, 0, 10);
}

/// Where the surface is at what was found; far away where nothing was.
gp_Pnt footOf(double x, double y, double z, const TopoDS_Face& face)
{
    const auto found = ProjectPoint(x, y, z, face);
    return found ? BRep_Tool::Surface(face)->Value(found->u, found->v) : gp_Pnt(1e6, 1e6, 1e6);
}

TEST(ProjectPoint, FootOfAPointAboveAPlaneIsBelowIt)
{
    EXPECT_LT(footOf(3, -4, 7, squareFace()).Distance({3, -4, 0}), 1e-9);
    EXPECT_LT(footOf(3, -4, 0, squareFace()).Distance({3, -4, 0}), 1e-9) << "a point on the face";
}

TEST(ProjectPoint, NearestOfSeveralFeetIsTaken)
{
    EXPECT_LT(footOf(3, 0, 4, cylinderFace(0, 2 * std::numbers::pi)).Distance({5, 0, 4}), 1e-9);
}

TEST(ProjectPoint, FootLiesOnTheFaceWhereItHasOne)
{
    // The far side is the only half that is there.
    const TopoDS_Face farHalf = cylinderFace(std::numbers::pi / 2, 3 * std::numbers::pi / 2);

    EXPECT_LT(footOf(3, 0, 4, farHalf).Distance({-5, 0, 4}), 1e-9);
}

TEST(ProjectPoint, BesideTheFaceTheWholeSurfaceAnswers)
{
    EXPECT_LT(footOf(30, 4, 7, squareFace()).Distance({30, 4, 0}), 1e-9);
}

TEST(ProjectPoint, LocationOfTheFaceIsPartOfIt)
{
    gp_Trsf up;
    up.SetTranslation({0, 0, 50});

    EXPECT_LT(footOf(3, -4, 7, TopoDS::Face(squareFace().Moved(TopLoc_Location(up)))).Distance({3, -4, 50}), 1e-9);
}

TEST(ProjectPoint, FaceWithoutSurfaceHasNoFoot)
{
    TopoDS_Face face;
    BRep_Builder().MakeFace(face);

    EXPECT_FALSE(ProjectPoint(1, 2, 3, face).has_value());
}

} // namespace
} // namespace vrk::geometry
