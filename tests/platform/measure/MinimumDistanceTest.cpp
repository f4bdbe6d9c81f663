#include "platform/measure/Measure.h"

#include "MeasureShapes.h"

#include "support/ProcessorTime.h"
#include "support/ThrowsExactly.h"

#include <BRepAlgoAPI_Cut.hxx>
#include <BRepBuilderAPI_NurbsConvert.hxx>
#include <BRepExtrema_DistShapeShape.hxx>
#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>
#include <BRepPrimAPI_MakeHalfSpace.hxx>
#include <BRepPrimAPI_MakeSphere.hxx>
#include <BRepPrimAPI_MakeTorus.hxx>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <thread>

namespace vrk::measure {
namespace {

using test::throwsExactly;

// Seconds: a user who stops is let go within a fifth of one. Builds for debugging are slower by far.
#ifdef NDEBUG
constexpr double longestStop = 0.25;
#else
constexpr double longestStop = 5;
#endif
using testing::HasSubstr;

MeasuredThing bodyAt(const TopoDS_Shape& shape, const rob::Posd& place)
{
    return MeasuredShape{shape, rob::Posed(place), {}};
}

TopoDS_Shape box()
{
    return BRepPrimAPI_MakeBox(10, 10, 10).Shape();
}

TopoDS_Shape ball()
{
    return BRepPrimAPI_MakeSphere(10).Shape();
}

double distanceOf(const MeasuredThing& first, const MeasuredThing& second)
{
    const double there = minimumDistance(first, second)->value, back = minimumDistance(second, first)->value;
    EXPECT_NEAR(there, back, 1e-9) << "from either side";
    return there;
}

TEST(MinimumDistance, OfBodiesIsBetweenTheirNearestPlaces)
{
    const auto measured = minimumDistance(bodyAt(box(), {}), bodyAt(ball(), {50, 5, 5}));

    ASSERT_TRUE(measured);
    EXPECT_NEAR(measured->value, 30, 1e-9);
    EXPECT_NEAR((*measured->way - rob::Vec3d(30, 0, 0)).length(), 0, 1e-4) << "the kernel's places on a ball";
    EXPECT_EQ(measured->note, "nearest places");
}

TEST(MinimumDistance, BodiesThatTouchOrPenetrateOrHoldEachOtherHaveNone)
{
    for (const bool areMeshes : {false, true}) {
        SCOPED_TRACE(areMeshes ? "meshes" : "CAD");
        const auto shapeOf = [areMeshes](const TopoDS_Shape& shape) { return areMeshes ? meshOf(shape) : shape; };
        const MeasuredThing block = bodyAt(shapeOf(box()), {});
        EXPECT_NEAR(distanceOf(block, bodyAt(shapeOf(box()), {10, 0, 0})), 0, 1e-9) << "touching";
        EXPECT_NEAR(distanceOf(block, bodyAt(shapeOf(box()), {9, 1, 2})), 0, 1e-9) << "penetrating";
        EXPECT_NEAR(distanceOf(block, bodyAt(shapeOf(BRepPrimAPI_MakeBox(1, 1, 1).Shape()), {5, 5, 5})), 0, 1e-9)
            << "one in the other";
        EXPECT_NEAR(distanceOf(block, bodyAt(shapeOf(box()), {10.5, 0, 0})), 0.5, 1e-9) << "apart";
    }
}

TEST(MinimumDistance, ABodyInAHollowOfAnotherIsAtTheDistanceOfTheWall)
{
    // A hollow room of walls: the inside of the room is not inside of the walls.
    const TopoDS_Shape hole = BRepPrimAPI_MakeBox(gp_Pnt(5, 5, 5), 90, 90, 90).Shape();
    const TopoDS_Shape room = BRepAlgoAPI_Cut(BRepPrimAPI_MakeBox(100, 100, 100).Shape(), hole).Shape();
    const rob::Posd within(30, 40, 40);

    EXPECT_NEAR(distanceOf(bodyAt(room, {}), bodyAt(box(), within)), 25, 1e-9);
    EXPECT_NEAR(distanceOf(bodyAt(meshOf(room), {}), bodyAt(meshOf(box()), within)), 25, 1e-9);
}

TEST(MinimumDistance, OfMeshesIsThatOfTheTrianglesAndSaysSo)
{
    const auto meshes = minimumDistance(bodyAt(meshOf(box()), {}), bodyAt(meshOf(box()), {13, 14, 0}));
    const auto withCad = minimumDistance(bodyAt(meshOf(box()), {}), bodyAt(ball(), {50, 5, 5}));

    EXPECT_NEAR(meshes->value, 5, 1e-6);
    EXPECT_EQ(meshes->note, "nearest places of the triangles");
    EXPECT_NEAR(withCad->value, 30, 0.2);
    EXPECT_GE(withCad->value, 30 - 1e-6) << "triangles of a ball lie inside of it";
    EXPECT_THAT(withCad->note, HasSubstr("nearest places of the triangles, which lie within "));
    EXPECT_THAT(withCad->note, HasSubstr(" mm of the surfaces"));
}

TEST(MinimumDistance, MeasuringAMeshLeavesACadShapeWithoutTriangles)
{
    const TopoDS_Shape round = ball();

    minimumDistance(bodyAt(meshOf(box()), {}), bodyAt(round, {50, 5, 5}));

    TopLoc_Location location;
    EXPECT_TRUE(BRep_Tool::Triangulation(TopoDS::Face(pieceOf(round, TopAbs_FACE, 1)), location).IsNull());
}

TEST(MinimumDistance, PointsEdgesAndVerticesAreMeasuredToMeshes)
{
    const MeasuredThing mesh = bodyAt(meshOf(box()), {});

    EXPECT_NEAR(distanceOf(mesh, pointAt(5, 5, 17)), 7, 1e-6);
    EXPECT_NEAR(distanceOf(mesh, MeasuredShape{BRepBuilderAPI_MakeVertex(gp_Pnt(5, 5, 17)).Vertex(), {}, {}}), 7, 1e-6);
    const TopoDS_Shape other = box();
    BRepMesh_IncrementalMesh(other, 0.1);
    EXPECT_NEAR(distanceOf(mesh, bodyAt(pieceOf(other, TopAbs_EDGE, 1), {14, 3, 0})), 4, 1e-6);
}

TEST(MinimumDistance, IsTheKernelsUnderAnyPose)
{
    std::mt19937 random(3);
    const std::vector<TopoDS_Shape> shapes = {
        box(), BRepPrimAPI_MakeCylinder(5, 30).Shape(), BRepPrimAPI_MakeTorus(30, 5).Shape(),
        BRepBuilderAPI_NurbsConvert(BRepPrimAPI_MakeCylinder(8, 20).Shape(), true).Shape()};
    for (int round = 0; round < 24; ++round) {
        const TopoDS_Shape& a = shapes[static_cast<std::size_t>(round) % shapes.size()];
        const TopoDS_Shape& b = shapes[static_cast<std::size_t>(round / 4) % shapes.size()];
        const rob::Posed first = anyPose(random, 60), second = anyPose(random, 60), both = anyPose(random, 1e4);
        SCOPED_TRACE(testing::Message() << "round " << round);
        const BRepExtrema_DistShapeShape kernel(a.Moved(TopLoc_Location(trsfOf(first))),
                                                b.Moved(TopLoc_Location(trsfOf(second))));
        const double value = minimumDistance(MeasuredShape{a, first, {}}, MeasuredShape{b, second, {}})->value;
        EXPECT_NEAR(value, kernel.Value(), 1e-9);
        EXPECT_NEAR(minimumDistance(MeasuredShape{a, both * first, {}}, MeasuredShape{b, both * second, {}})->value,
                    value, 1e-6)
            << "one motion of both";
    }
}

TEST(MinimumDistance, ProgressRisesToTheWhole)
{
    double last = 0;
    const TopoDS_Shape ring = BRepPrimAPI_MakeTorus(30, 5).Shape();

    minimumDistance(bodyAt(ring, {}), bodyAt(ring, {100, 0, 0}), {}, [&last](double share) {
        EXPECT_GE(share, last);
        last = share;
    });

    EXPECT_DOUBLE_EQ(last, 1);
}

TEST(MinimumDistance, EndsSoonAfterItIsStopped)
{
    // Grids of splines, whose pairs of faces take seconds together.
    BRep_Builder builder;
    TopoDS_Compound grid;
    builder.MakeCompound(grid);
    const TopoDS_Shape ring = BRepBuilderAPI_NurbsConvert(BRepPrimAPI_MakeTorus(30, 5).Shape(), true).Shape();
    for (int i = 0; i < 200; ++i) {
        gp_Trsf place;
        place.SetTranslation(gp_Vec(70 * (i % 20), 70 * (i / 20), 0));
        builder.Add(grid, ring.Moved(TopLoc_Location(place)));
    }
    std::stop_source stop;
    std::thread user([&stop] {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        stop.request_stop();
    });

    std::optional<Measurement> measured;
    const double seconds = test::threadSecondsOf([&] {
        measured = minimumDistance(bodyAt(grid, {}), bodyAt(grid, {0, 0, 12}), stop.get_token());
    });
    user.join();

    EXPECT_FALSE(measured);
    EXPECT_LT(seconds, longestStop);
}

TEST(MinimumDistance, WhatCannotBeMeasuredIsRefusedInOneLine)
{
    const MeasuredThing block = bodyAt(box(), {});
    const auto asks = [&block](const TopoDS_Shape& shape) {
        return [&block, shape] { minimumDistance(block, MeasuredShape{shape, {}, {}}); };
    };
    EXPECT_THAT(asks({}), throwsExactly<MeasureError>("There is no shape to measure"));
    TopoDS_Compound empty;
    BRep_Builder().MakeCompound(empty);
    EXPECT_THAT(asks(empty), throwsExactly<MeasureError>("There is no shape to measure"));
    EXPECT_THAT(asks(BRepBuilderAPI_MakeFace(gp_Pln()).Face()),
                throwsExactly<MeasureError>("What has no end has no minimum distance"));
    const TopoDS_Face side = BRepBuilderAPI_MakeFace(gp_Pln()).Face();
    EXPECT_THAT(asks(BRepPrimAPI_MakeHalfSpace(side, gp_Pnt(0, 0, 1)).Solid()),
                throwsExactly<MeasureError>("What has no end has no minimum distance"));
    EXPECT_THAT(asks(BRepBuilderAPI_MakeEdge(gp_Lin(gp::OX())).Edge()),
                throwsExactly<MeasureError>("What has no end has no minimum distance"));
    TopoDS_Edge bare;
    BRep_Builder().MakeEdge(bare);
    EXPECT_THAT(asks(bare), throwsExactly<MeasureError>("This edge has no curve to measure"));
    TopoDS_Face without;
    BRep_Builder().MakeFace(without);
    EXPECT_THAT(asks(without), throwsExactly<MeasureError>("A face has neither a surface nor triangles to measure"));
}

} // namespace
} // namespace vrk::measure
