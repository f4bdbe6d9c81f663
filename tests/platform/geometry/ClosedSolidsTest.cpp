#include "platform/geometry/ClosedSolids.h"

#include <BRepAlgoAPI_Cut.hxx>
#include <BRepMesh_IncrementalMesh.hxx>
#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>
#include <BRepPrimAPI_MakeSphere.hxx>
#include <BRepPrimAPI_MakeTorus.hxx>
#include <BRep_Builder.hxx>
#include <TopExp.hxx>
#include <TopExp_Explorer.hxx>
#include <TopTools_IndexedMapOfShape.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Compound.hxx>
#include <TopoDS_Shell.hxx>
#include <TopoDS_Solid.hxx>
#include <gp_Ax2.hxx>

#include <gtest/gtest.h>

namespace vrk::geometry {
namespace {

TopoDS_Shape meshed(const TopoDS_Shape& shape)
{
    BRepMesh_IncrementalMesh(shape, 0.5, false, 0.3, false);
    return shape;
}

TopoDS_Shape box()
{
    return meshed(BRepPrimAPI_MakeBox(30, 20, 10).Shape());
}

/// A solid of the faces of the box, each as the call gives it back; none for a null shape.
template <typename Call>
TopoDS_Shape solidOfFaces(const Call& call)
{
    const BRep_Builder builder;
    TopoDS_Shell shell;
    builder.MakeShell(shell);
    int number = 0;
    for (TopExp_Explorer face(box(), TopAbs_FACE); face.More(); face.Next())
        if (const TopoDS_Shape kept = call(++number, face.Current()); !kept.IsNull())
            builder.Add(shell, kept);
    TopoDS_Solid solid;
    builder.MakeSolid(solid);
    builder.Add(solid, shell);
    return solid;
}

TopoDS_Shape together(const TopoDS_Shape& a, const TopoDS_Shape& b)
{
    const BRep_Builder builder;
    TopoDS_Compound both;
    builder.MakeCompound(both);
    builder.Add(both, a);
    builder.Add(both, b);
    return both;
}

TEST(ClosedSolids, SolidsOfAllSurfacesAreClosed)
{
    EXPECT_TRUE(areSolidsClosed(box()));
    EXPECT_TRUE(areSolidsClosed(meshed(BRepPrimAPI_MakeCylinder(10, 30).Shape())));
    EXPECT_TRUE(areSolidsClosed(meshed(BRepPrimAPI_MakeSphere(10).Shape()))) << "its poles have no length";
    EXPECT_TRUE(areSolidsClosed(meshed(BRepPrimAPI_MakeTorus(20, 5).Shape())));
}

TEST(ClosedSolids, SolidWithAHoleAndOneWithACaveAreClosed)
{
    const TopoDS_Shape block = BRepPrimAPI_MakeBox(30, 20, 10).Shape();
    const gp_Ax2 axis(gp_Pnt(15, 10, -5), gp::DZ());
    EXPECT_TRUE(areSolidsClosed(meshed(BRepAlgoAPI_Cut(block, BRepPrimAPI_MakeCylinder(axis, 4, 20).Shape()).Shape())));
    const TopoDS_Shape cave = BRepPrimAPI_MakeSphere(gp_Pnt(15, 10, 5), 3).Shape();
    EXPECT_TRUE(areSolidsClosed(meshed(BRepAlgoAPI_Cut(block, cave).Shape())));
}

TEST(ClosedSolids, SolidFarAwayIsClosed)
{
    gp_Trsf far;
    far.SetTranslation(gp_Vec(1e7, -1e7, 1e7));
    EXPECT_TRUE(areSolidsClosed(box().Moved(TopLoc_Location(far))));
}

TEST(ClosedSolids, SeveralSolidsAreClosedWhereEachIs)
{
    EXPECT_TRUE(areSolidsClosed(together(box(), meshed(BRepPrimAPI_MakeSphere(10).Shape()))));
    EXPECT_FALSE(areSolidsClosed(together(box(), meshed(BRepPrimAPI_MakeSphere(10).Shape()).Reversed())));
}

TEST(ClosedSolids, SolidInsideOutIsNot)
{
    EXPECT_FALSE(areSolidsClosed(box().Reversed()));
}

TEST(ClosedSolids, SolidWithAGapIsNot)
{
    const auto all = [](int, const TopoDS_Shape& face) { return face; };
    ASSERT_TRUE(areSolidsClosed(solidOfFaces(all)));
    const auto allButOne = [](int number, const TopoDS_Shape& face) { return number == 3 ? TopoDS_Shape() : face; };
    EXPECT_FALSE(areSolidsClosed(solidOfFaces(allButOne)));
}

TEST(ClosedSolids, SolidWithATurnedFaceIsNot)
{
    const auto oneTurned = [](int number, const TopoDS_Shape& face) { return number == 3 ? face.Reversed() : face; };
    EXPECT_FALSE(areSolidsClosed(solidOfFaces(oneTurned)));
}

TEST(ClosedSolids, FacesOutsideOfSolidsAreNot)
{
    const TopExp_Explorer face(box(), TopAbs_FACE), shell(box(), TopAbs_SHELL);
    EXPECT_FALSE(areSolidsClosed(face.Current()));
    EXPECT_FALSE(areSolidsClosed(shell.Current()));
    EXPECT_FALSE(areSolidsClosed(together(box(), face.Current())));
}

TEST(ClosedSolids, FaceWithoutTrianglesIsAGap)
{
    EXPECT_FALSE(areSolidsClosed(BRepPrimAPI_MakeBox(30, 20, 10).Shape()));
    const TopoDS_Shape most = box();
    TopTools_IndexedMapOfShape faces;
    TopExp::MapShapes(most, TopAbs_FACE, faces);
    BRep_Builder().UpdateFace(TopoDS::Face(faces(2)), Handle(Poly_Triangulation)());
    EXPECT_FALSE(areSolidsClosed(most));
}

TEST(ClosedSolids, NothingIsNot)
{
    EXPECT_FALSE(areSolidsClosed({}));
    TopoDS_Compound none;
    BRep_Builder().MakeCompound(none);
    EXPECT_FALSE(areSolidsClosed(none));
}

} // namespace
} // namespace vrk::geometry
