#include "platform/station/Import.h"

#include <BRepBndLib.hxx>
#include <BRepBuilderAPI_MakeEdge.hxx>
#include <BRepBuilderAPI_MakeFace.hxx>
#include <BRepMesh_IncrementalMesh.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>
#include <BRepPrimAPI_MakeHalfSpace.hxx>
#include <BRepPrimAPI_MakeSphere.hxx>
#include <BRep_Builder.hxx>
#include <BRep_Tool.hxx>
#include <Poly_Polygon3D.hxx>
#include <Poly_PolygonOnTriangulation.hxx>
#include <Poly_Triangulation.hxx>
#include <TColgp_Array1OfPnt.hxx>
#include <TopExp.hxx>
#include <TopExp_Explorer.hxx>
#include <TopTools_IndexedMapOfShape.hxx>
#include <TopoDS.hxx>
#include <gp.hxx>
#include <gp_Circ.hxx>
#include <gp_Lin.hxx>
#include <gp_Pln.hxx>

#include <gtest/gtest.h>

#include <cmath>

namespace vrk::station {
namespace {

Handle(Poly_Triangulation) trianglesOf(const TopoDS_Shape& face)
{
    TopLoc_Location location;
    return BRep_Tool::Triangulation(TopoDS::Face(face), location);
}

TEST(DeflectionFor, IsATwoThousandthOfTheSizeWithinItsLimits)
{
    EXPECT_DOUBLE_EQ(deflectionFor(1000), 0.5);
    EXPECT_DOUBLE_EQ(deflectionFor(10), 0.005);
    EXPECT_DOUBLE_EQ(deflectionFor(1), 0.005);
    EXPECT_DOUBLE_EQ(deflectionFor(0), 0.005);
    EXPECT_DOUBLE_EQ(deflectionFor(2000), 1);
    EXPECT_DOUBLE_EQ(deflectionFor(1e6), 1);
}

TEST(MeshShape, EveryFaceGetsTrianglesAndNormals)
{
    const TopoDS_Shape pin = BRepPrimAPI_MakeCylinder(20, 50).Shape();

    meshShape(pin);

    TopTools_IndexedMapOfShape faces;
    TopExp::MapShapes(pin, TopAbs_FACE, faces);
    ASSERT_EQ(faces.Extent(), 3);
    for (int i = 1; i <= 3; ++i) {
        ASSERT_FALSE(trianglesOf(faces(i)).IsNull());
        EXPECT_TRUE(trianglesOf(faces(i))->HasNormals());
    }
}

TEST(MeshShape, TrianglesLieWithinTheDeflection)
{
    const double radius = 20;
    const TopoDS_Shape pin = BRepPrimAPI_MakeCylinder(radius, 50).Shape();
    const double deflection = deflectionFor(std::hypot(40, 40, 50));

    meshShape(pin);

    TopTools_IndexedMapOfShape faces;
    TopExp::MapShapes(pin, TopAbs_FACE, faces);
    const Handle(Poly_Triangulation) side = trianglesOf(faces(1));
    for (int t = 1; t <= side->NbTriangles(); ++t) {
        int n[3];
        side->Triangle(t).Get(n[0], n[1], n[2]);
        for (int k = 0; k < 3; ++k) { // a chord is nearest to the axis in its middle
            const gp_XYZ middle = (side->Node(n[k]).XYZ() + side->Node(n[(k + 1) % 3]).XYZ()) / 2;
            EXPECT_LE(radius - std::hypot(middle.X(), middle.Y()), deflection * 1.01);
        }
    }
}

TEST(MeshShape, SmallCirclesAreRoundToo)
{
    const TopoDS_Shape pin = BRepPrimAPI_MakeCylinder(0.5, 2000).Shape();

    meshShape(pin);

    TopTools_IndexedMapOfShape edges;
    TopExp::MapShapes(pin, TopAbs_EDGE, edges);
    int circles = 0;
    for (int i = 1; i <= edges.Extent(); ++i) {
        TopLoc_Location location;
        const Handle(Poly_Polygon3D) polygon = BRep_Tool::Polygon3D(TopoDS::Edge(edges(i)), location);
        ASSERT_FALSE(polygon.IsNull());
        if (polygon->NbNodes() == 2)
            continue; // the seam
        ++circles;
        EXPECT_GE(polygon->NbNodes() - 1, 32) << "0.2 radians each at most";
    }
    EXPECT_EQ(circles, 2);
}

TEST(MeshShape, FacesWithTrianglesKeepThem)
{
    const TopoDS_Shape pin = BRepPrimAPI_MakeCylinder(20, 50).Shape();
    TopTools_IndexedMapOfShape faces;
    TopExp::MapShapes(pin, TopAbs_FACE, faces);
    const BRepMesh_IncrementalMesh coarse(faces(1), 10, false, 1.5); // far coarser than what is asked for below
    const Handle(Poly_Triangulation) before = trianglesOf(faces(1));
    ASSERT_FALSE(before.IsNull());
    const int triangles = before->NbTriangles();

    meshShape(pin);

    EXPECT_EQ(trianglesOf(faces(1)), before);
    EXPECT_EQ(before->NbTriangles(), triangles);
    EXPECT_FALSE(trianglesOf(faces(2)).IsNull());
    EXPECT_FALSE(trianglesOf(faces(3)).IsNull());
}

TEST(MeshShape, SecondRunChangesNothing)
{
    const TopoDS_Shape pin = BRepPrimAPI_MakeCylinder(20, 50).Shape();
    meshShape(pin);
    TopTools_IndexedMapOfShape faces;
    TopExp::MapShapes(pin, TopAbs_FACE, faces);
    const Handle(Poly_Triangulation) before = trianglesOf(faces(1));

    meshShape(pin);

    EXPECT_EQ(trianglesOf(faces(1)), before);
}

TEST(MeshShape, ShapeWithoutEndIsLeftAlone)
{
    const TopoDS_Face plane = BRepBuilderAPI_MakeFace(gp_Pln());
    const TopoDS_Shape space = BRepPrimAPI_MakeHalfSpace(plane, gp_Pnt(0, 0, 1)).Solid();

    meshShape(space);

    EXPECT_TRUE(trianglesOf(plane).IsNull());
}

TEST(MeshShape, EdgeWithoutFaceGetsAPolygonWithinTheDeflection)
{
    const double radius = 50;
    const TopoDS_Edge edge = BRepBuilderAPI_MakeEdge(gp_Circ(gp::XOY(), radius)).Edge();
    const double deflection = deflectionFor(std::hypot(2 * radius, 2 * radius));

    meshShape(edge);

    TopLoc_Location location;
    const Handle(Poly_Polygon3D) polygon = BRep_Tool::Polygon3D(edge, location);
    ASSERT_FALSE(polygon.IsNull());
    for (int i = 1; i < polygon->NbNodes(); ++i) {
        const gp_Pnt middle((polygon->Nodes()(i).XYZ() + polygon->Nodes()(i + 1).XYZ()) / 2);
        EXPECT_LE(radius - middle.Distance(gp::Origin()), 1.1 * deflection);
    }
}

TEST(MeshShape, PolygonOfAMovedEdgeLiesOnTheEdge)
{
    gp_Trsf away;
    away.SetTranslation(gp_Vec(100, 0, 0));
    const TopoDS_Shape moved = BRepBuilderAPI_MakeEdge(gp_Pnt(0, 0, 0), gp_Pnt(10, 0, 0)).Shape().Moved(away);

    meshShape(moved);

    TopLoc_Location location;
    const Handle(Poly_Polygon3D) polygon = BRep_Tool::Polygon3D(TopoDS::Edge(moved), location);
    ASSERT_FALSE(polygon.IsNull());
    EXPECT_NEAR(polygon->Nodes().First().Transformed(location.Transformation()).X(), 100, 1e-9);
    EXPECT_NEAR(polygon->Nodes().Last().Transformed(location.Transformation()).X(), 110, 1e-9);
}

TEST(MeshShape, EdgesOfABodyGetThePointsOfItsTriangles)
{
    gp_Trsf away;
    away.SetTranslation(gp_Vec(100, 0, 0));
    const TopoDS_Shape pin = BRepPrimAPI_MakeCylinder(20, 50).Shape().Moved(away);

    meshShape(pin);

    TopTools_IndexedMapOfShape edges;
    TopExp::MapShapes(pin, TopAbs_EDGE, edges);
    ASSERT_EQ(edges.Extent(), 3);
    for (int i = 1; i <= edges.Extent(); ++i) {
        const TopoDS_Edge edge = TopoDS::Edge(edges(i));
        TopLoc_Location location, ofTriangles;
        const Handle(Poly_Polygon3D) polygon = BRep_Tool::Polygon3D(edge, location);
        ASSERT_FALSE(polygon.IsNull());
        Handle(Poly_PolygonOnTriangulation) onTriangles;
        Handle(Poly_Triangulation) triangles;
        BRep_Tool::PolygonOnTriangulation(edge, onTriangles, triangles, ofTriangles);
        ASSERT_EQ(polygon->NbNodes(), onTriangles->NbNodes());
        for (int node = 1; node <= polygon->NbNodes(); ++node) {
            const gp_Pnt drawn = polygon->Nodes()(node).Transformed(location.Transformation());
            const gp_Pnt corner = triangles->Node(onTriangles->Node(node)).Transformed(ofTriangles.Transformation());
            EXPECT_NEAR(drawn.Distance(corner), 0, 1e-9);
            EXPECT_GE(drawn.X(), 80 - 1e-9);
        }
    }
}

TEST(MeshShape, EdgeWithoutLengthStaysWithoutPolygon)
{
    const TopoDS_Shape ball = BRepPrimAPI_MakeSphere(20).Shape();

    meshShape(ball);

    int poles = 0;
    for (TopExp_Explorer edge(ball, TopAbs_EDGE); edge.More(); edge.Next()) {
        TopLoc_Location location;
        const bool isPole = BRep_Tool::Degenerated(TopoDS::Edge(edge.Current()));
        poles += isPole ? 1 : 0;
        EXPECT_EQ(BRep_Tool::Polygon3D(TopoDS::Edge(edge.Current()), location).IsNull(), isPole);
    }
    EXPECT_EQ(poles, 2);
}

TEST(MeshShape, PolygonThatIsThereIsKept)
{
    const TopoDS_Edge edge = BRepBuilderAPI_MakeEdge(gp_Circ(gp::XOY(), 50)).Edge();
    TColgp_Array1OfPnt nodes(1, 2);
    const Handle(Poly_Polygon3D) own = new Poly_Polygon3D(nodes);
    BRep_Builder().UpdateEdge(edge, own);

    meshShape(edge);

    TopLoc_Location location;
    EXPECT_EQ(BRep_Tool::Polygon3D(edge, location), own);
}

TEST(MeshShape, EdgeWithoutEndStaysWithoutPolygon)
{
    const TopoDS_Edge edge = BRepBuilderAPI_MakeEdge(gp_Lin(gp::OX())).Edge();

    meshShape(edge);

    TopLoc_Location location;
    EXPECT_TRUE(BRep_Tool::Polygon3D(edge, location).IsNull());
}

} // namespace
} // namespace vrk::station
