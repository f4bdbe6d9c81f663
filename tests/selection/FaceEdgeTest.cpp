#include "selection/geometry/Result.h"

#include <BRepAdaptor_Curve.hxx>
#include <BRepBuilderAPI_MakeEdge.hxx>
#include <BRepBuilderAPI_MakeFace.hxx>
#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepPrimAPI_MakeCone.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>
#include <BRepPrimAPI_MakeSphere.hxx>
#include <BRepTools.hxx>
#include <BRep_Builder.hxx>
#include <TopExp.hxx>
#include <TopLoc_Location.hxx>
#include <TopTools_IndexedMapOfShape.hxx>
#include <TopoDS.hxx>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <optional>

/// The edge of the face under a hit, without a camera: the tolerance is 25 units.
namespace vrk::selection {
namespace {

using rob::Posf;

/// A hit on a face, at a place in the coordinates of the shape.
Result hitOn(const TopoDS_Shape& face, const Posf& at)
{
    Result result;
    result.hit = true;
    result.face = face;
    result.localPosition = at;
    result.position = at + rob::Vec3f(5000, 0, 0); // the object stands somewhere else
    return result;
}

TopTools_IndexedMapOfShape mapOf(const TopoDS_Shape& shape, TopAbs_ShapeEnum type)
{
    TopTools_IndexedMapOfShape map;
    TopExp::MapShapes(shape, type, map);
    return map;
}

/// Where a result's edge has its parameter.
Posf pointOf(const Result::EdgeRes& edge)
{
    const gp_Pnt p = BRepAdaptor_Curve(TopoDS::Edge(edge.edge)).Value(edge.param);
    return {static_cast<float>(p.X()), static_cast<float>(p.Y()), static_cast<float>(p.Z())};
}

/// The face of a box from (0, 0, 0) to (200, 160, 100) that lies in the plane z = 100.
TopoDS_Shape topOfBox()
{
    return BRepPrimAPI_MakeBox(200, 160, 100).TopFace();
}

TEST(FaceEdge, IsTheOneNearestToTheHit)
{
    const TopoDS_Shape top = topOfBox();

    const std::optional<Result::EdgeRes> edge = hitOn(top, {50, 3, 100}).getFaceEdge();

    ASSERT_TRUE(edge.has_value());
    EXPECT_NEAR((pointOf(*edge) - Posf(50, 0, 100)).length(), 0, 1e-4);
    const TopTools_IndexedMapOfShape edges = mapOf(top, TopAbs_EDGE);
    EXPECT_TRUE(edges(edge->index).IsSame(edge->edge));
    EXPECT_EQ(edges.FindIndex(edge->edge), edge->index);
}

TEST(FaceEdge, EachEdgeOfAFaceCanBeFound)
{
    const TopoDS_Shape top = topOfBox();
    for (const auto& [at, on] : {std::pair{Posf(50, 157, 100), Posf(50, 160, 100)},
                                 {Posf(3, 50, 100), Posf(0, 50, 100)},
                                 {Posf(197, 50, 100), Posf(200, 50, 100)}}) {
        const std::optional<Result::EdgeRes> edge = hitOn(top, at).getFaceEdge();

        ASSERT_TRUE(edge.has_value());
        EXPECT_NEAR((pointOf(*edge) - on).length(), 0, 1e-4);
    }
}

TEST(FaceEdge, FirstOfEquallyNearEdgesIsTaken)
{
    // A square about the origin: its middle is equally far from all edges.
    const TopoDS_Shape square = BRepBuilderAPI_MakeFace(gp_Pln(), -8, 8, -8, 8).Face();

    const std::optional<Result::EdgeRes> edge = hitOn(square, {0, 0, 0}).getFaceEdge();

    ASSERT_TRUE(edge.has_value());
    EXPECT_EQ(edge->index, 1);
}

TEST(FaceEdge, WithoutAViewItIsAtMostTwentyFiveUnitsAway)
{
    const TopoDS_Shape top = topOfBox();

    EXPECT_TRUE(hitOn(top, {100, 24.99f, 100}).getFaceEdge().has_value());
    EXPECT_TRUE(hitOn(top, {100, 25, 100}).getFaceEdge().has_value());
    EXPECT_FALSE(hitOn(top, {100, 25.01f, 100}).getFaceEdge().has_value());
}

TEST(FaceEdge, DistanceIsMeasuredFromTheSurfaceNotFromTheTriangle)
{
    const TopoDS_Shape top = topOfBox();

    EXPECT_TRUE(hitOn(top, {100, 20, 140}).getFaceEdge().has_value());
}

TEST(FaceEdge, IsEmptyWithoutAHitOnAFace)
{
    const TopoDS_Shape top = topOfBox();
    Result refused = hitOn(top, {50, 3, 100});
    refused.valid = false;
    Result missed = hitOn(top, {50, 3, 100});
    missed.hit = false;

    EXPECT_FALSE(refused.getFaceEdge().has_value());
    EXPECT_FALSE(missed.getFaceEdge().has_value());
    EXPECT_FALSE(hitOn({}, {50, 3, 100}).getFaceEdge().has_value()); // as of a mesh
    EXPECT_FALSE(Result().getFaceEdge().has_value());
}

TEST(FaceEdge, IsEmptyWithoutASurface)
{
    TopoDS_Face face;
    BRep_Builder().MakeFace(face);

    EXPECT_FALSE(hitOn(face, {0, 0, 0}).getFaceEdge().has_value());
}

TEST(FaceEdge, PlaceThatIsNoNumberHasNone)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();

    EXPECT_FALSE(hitOn(topOfBox(), {nan, 3, 100}).getFaceEdge().has_value());
}

TEST(FaceEdge, IsFoundOnALocatedFace)
{
    gp_Trsf trsf;
    trsf.SetTranslation({1000, 0, 0});
    const TopoDS_Shape top = topOfBox().Moved(TopLoc_Location(trsf));

    const std::optional<Result::EdgeRes> edge = hitOn(top, {1050, 3, 100}).getFaceEdge();

    ASSERT_TRUE(edge.has_value());
    EXPECT_NEAR((pointOf(*edge) - Posf(1050, 0, 100)).length(), 0, 1e-3);
}

TEST(FaceEdge, RimOfACylinderHasTheAngleForParameter)
{
    const TopoDS_Shape cylinder = BRepPrimAPI_MakeCylinder(100, 300).Shape();
    const TopoDS_Shape side = mapOf(cylinder, TopAbs_FACE)(1);

    const float at = std::sqrt(0.5f) * 100;
    const std::optional<Result::EdgeRes> edge = hitOn(side, {-at, at, 290}).getFaceEdge();

    ASSERT_TRUE(edge.has_value());
    EXPECT_NEAR(edge->param, 0.75 * std::numbers::pi, 1e-5);
    EXPECT_NEAR((pointOf(*edge) - Posf(-at, at, 300)).length(), 0, 1e-3);
}

TEST(FaceEdge, SeamOfACylinderIsAnEdgeToo)
{
    const TopoDS_Shape side = mapOf(BRepPrimAPI_MakeCylinder(100, 300).Shape(), TopAbs_FACE)(1);

    for (const float y : {-5.0f, 5.0f}) {
        const std::optional<Result::EdgeRes> edge = hitOn(side, {std::sqrt(100 * 100 - y * y), y, 150}).getFaceEdge();

        ASSERT_TRUE(edge.has_value());
        EXPECT_NEAR((pointOf(*edge) - Posf(100, 0, 150)).length(), 0, 1e-3);
    }
}

TEST(FaceEdge, BesideThePoleOfASphereItIsTheSeamOrThePole)
{
    const TopoDS_Shape ball = mapOf(BRepPrimAPI_MakeSphere(100).Shape(), TopAbs_FACE)(1);
    for (const Posf& at : {Posf(0, 0, 100), Posf(3, 0, 99.955f), Posf(-3, 0, 99.955f), Posf(0, -3, -99.955f)}) {
        const std::optional<Result::EdgeRes> edge = hitOn(ball, at).getFaceEdge();

        if (edge) { // else no edge stands square to the way: the seam ends at the pole
            EXPECT_LE((pointOf(*edge) - at).length(), 25);
        }
    }
    const std::optional<Result::EdgeRes> seam = hitOn(ball, {99.955f, 3, 0}).getFaceEdge();
    ASSERT_TRUE(seam.has_value());
    EXPECT_NEAR((pointOf(*seam) - Posf(100, 0, 0)).length(), 0, 0.01);
}

TEST(FaceEdge, TipOfAConeIsNoFailure)
{
    const TopoDS_Shape side = mapOf(BRepPrimAPI_MakeCone(100, 0, 200).Shape(), TopAbs_FACE)(1);

    EXPECT_NO_THROW(hitOn(side, {0, 0, 200}).getFaceEdge());
    EXPECT_NO_THROW(hitOn(side, {-1, 0, 198}).getFaceEdge());
    EXPECT_FALSE(hitOn(side, {-50, 0, 100}).getFaceEdge().has_value()); // the rim and the seam are far
}

TEST(FaceEdge, EdgeWithoutGeometryIsPassedOver)
{
    const TopoDS_Face face = TopoDS::Face(topOfBox());
    TopoDS_Edge bare;
    BRep_Builder().MakeEdge(bare);
    TopoDS_Wire wire;
    BRep_Builder().MakeWire(wire);
    BRep_Builder().Add(wire, bare);
    TopoDS_Shape more = face.EmptyCopied();
    BRep_Builder().Add(more, wire);
    BRep_Builder().Add(more, BRepTools::OuterWire(face));

    const std::optional<Result::EdgeRes> edge = hitOn(more, {50, 3, 100}).getFaceEdge();

    ASSERT_TRUE(edge.has_value());
    EXPECT_NEAR((pointOf(*edge) - Posf(50, 0, 100)).length(), 0, 1e-4);
    EXPECT_GT(edge->index, 1);
}

Result hitOnEdge(const TopoDS_Shape& edge, const Posf& at)
{
    Result result;
    result.hit = true;
    result.edge = edge;
    result.localPosition = at;
    return result;
}

TEST(EdgeParam, IsThatOfTheNearestPoint)
{
    const TopoDS_Edge edge = BRepBuilderAPI_MakeEdge(gp_Pnt(0, 0, 0), gp_Pnt(100, 0, 0)).Edge();

    const std::optional<double> param = hitOnEdge(edge, {30, 5, 0}).getEdgeParam();

    ASSERT_TRUE(param.has_value());
    EXPECT_NEAR(*param, 30, 1e-6);
}

TEST(EdgeParam, FollowsTheLocationOfTheEdge)
{
    gp_Trsf trsf;
    trsf.SetTranslation({1000, 0, 0});
    const TopoDS_Shape edge =
        BRepBuilderAPI_MakeEdge(gp_Pnt(0, 0, 0), gp_Pnt(100, 0, 0)).Edge().Moved(TopLoc_Location(trsf));

    EXPECT_NEAR(hitOnEdge(edge, {1030, 5, 0}).getEdgeParam().value_or(-1), 30, 1e-4);
}

TEST(EdgeParam, IsEmptyWithoutAHitOnAnEdge)
{
    const TopoDS_Edge edge = BRepBuilderAPI_MakeEdge(gp_Pnt(0, 0, 0), gp_Pnt(100, 0, 0)).Edge();
    Result missed = hitOnEdge(edge, {30, 5, 0});
    missed.hit = false;

    EXPECT_FALSE(missed.getEdgeParam().has_value());
    EXPECT_FALSE(hitOnEdge({}, {30, 5, 0}).getEdgeParam().has_value());
    EXPECT_FALSE(Result().getEdgeParam().has_value());
}

TEST(EdgeParam, IsEmptyWhereNoPointOfTheEdgeIsSquareToTheHit)
{
    const TopoDS_Edge edge = BRepBuilderAPI_MakeEdge(gp_Pnt(0, 0, 0), gp_Pnt(100, 0, 0)).Edge();

    EXPECT_FALSE(hitOnEdge(edge, {130, 5, 0}).getEdgeParam().has_value()); // past its end
}

TEST(EdgeParam, EdgeWithoutGeometryHasNone)
{
    TopoDS_Edge bare;
    BRep_Builder().MakeEdge(bare);

    EXPECT_FALSE(hitOnEdge(bare, {0, 0, 0}).getEdgeParam().has_value());
}

} // namespace
} // namespace vrk::selection
