#include "platform/geometry/SmoothEdges.h"

#include <BRepBuilderAPI_MakeEdge.hxx>
#include <BRepBuilderAPI_MakeFace.hxx>
#include <BRepBuilderAPI_MakePolygon.hxx>
#include <BRepFilletAPI_MakeFillet.hxx>
#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>
#include <BRepPrimAPI_MakeRevol.hxx>
#include <BRep_Tool.hxx>
#include <TopExp_Explorer.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Edge.hxx>
#include <gp_Ax1.hxx>
#include <gp_Trsf.hxx>

#include <gtest/gtest.h>

namespace vrk::geometry {
namespace {

struct Counts {
    int smooth = 0;
    int sharp = 0;
};

/// Of the edges that have a length.
Counts countsOf(const TopoDS_Shape& shape)
{
    Counts counts;
    const auto all = facesOfEdges(shape);
    for (int i = 1; i <= all.Extent(); ++i) {
        const TopoDS_Edge& edge = TopoDS::Edge(all.FindKey(i));
        if (BRep_Tool::Degenerated(edge))
            continue;
        ++(isSmoothEdge(edge, all(i)) ? counts.smooth : counts.sharp);
    }
    return counts;
}

TEST(SmoothEdges, BoxHasNone)
{
    const Counts counts = countsOf(BRepPrimAPI_MakeBox(1, 2, 3).Shape());
    EXPECT_EQ(counts.smooth, 0);
    EXPECT_EQ(counts.sharp, 12);
}

TEST(SmoothEdges, SeamOfACylinderIsOneAndItsRimsAreNot)
{
    const Counts counts = countsOf(BRepPrimAPI_MakeCylinder(10, 30).Shape());
    EXPECT_EQ(counts.smooth, 1);
    EXPECT_EQ(counts.sharp, 2);
}

TEST(SmoothEdges, RingHasSeamsAndRims)
{
    BRepBuilderAPI_MakePolygon line;
    for (const gp_Pnt& point : {gp_Pnt(1, 0, 0), gp_Pnt(2, 0, 0), gp_Pnt(2, 0, 1), gp_Pnt(1, 0, 1)})
        line.Add(point);
    line.Close();
    const TopoDS_Shape ring =
        BRepPrimAPI_MakeRevol(BRepBuilderAPI_MakeFace(line.Wire()).Face(), gp_Ax1(gp_Pnt(0, 0, 0), gp_Dir(0, 0, 1)))
            .Shape();
    const Counts counts = countsOf(ring);
    EXPECT_EQ(counts.sharp, 4) << "the rims";
    EXPECT_EQ(counts.smooth, 2) << "where each of the round faces meets itself";
}

TEST(SmoothEdges, RoundingsMeetTheirFacesInThem)
{
    const TopoDS_Shape box = BRepPrimAPI_MakeBox(20, 20, 20).Shape();
    BRepFilletAPI_MakeFillet fillet(box);
    fillet.Add(3, TopoDS::Edge(TopExp_Explorer(box, TopAbs_EDGE).Current()));

    const Counts counts = countsOf(fillet.Shape());

    EXPECT_EQ(counts.smooth, 2);
    EXPECT_EQ(counts.sharp, 13);
}

TEST(SmoothEdges, PlaceOfAShapeDoesNotMatter)
{
    gp_Trsf turn;
    turn.SetRotation(gp_Ax1(gp_Pnt(5, 4, 3), gp_Dir(1, 2, 3)), 1.2);
    const TopoDS_Shape moved = BRepPrimAPI_MakeCylinder(10, 30).Shape().Moved(TopLoc_Location(turn));
    const Counts counts = countsOf(moved);
    EXPECT_EQ(counts.smooth, 1);
    EXPECT_EQ(counts.sharp, 2);
}

TEST(SmoothEdges, BladeWhoseSidesFoldBackIsSharp)
{
    // Two triangles that lie on each other and face away from each other.
    const TopoDS_Shape thin = BRepPrimAPI_MakeBox(gp_Pnt(0, 0, 0), gp_Pnt(10, 10, 1e-3)).Shape();
    EXPECT_EQ(countsOf(thin).smooth, 0);
}

TEST(SmoothEdges, EdgeWithoutFacesIsSharp)
{
    const TopoDS_Edge edge = BRepBuilderAPI_MakeEdge(gp_Pnt(0, 0, 0), gp_Pnt(1, 0, 0)).Edge();
    EXPECT_FALSE(isSmoothEdge(edge, {}));
    const auto all = facesOfEdges(edge);
    EXPECT_EQ(all.Extent(), 1);
}

} // namespace
} // namespace vrk::geometry
