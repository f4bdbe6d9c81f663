#include "platform/framing/Frames.h"

#include "support/ThrowsExactly.h"

#include <BRepAdaptor_Surface.hxx>
#include <BRepBuilderAPI_MakeEdge.hxx>
#include <BRepBuilderAPI_MakeFace.hxx>
#include <BRepBuilderAPI_MakeWire.hxx>
#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepPrimAPI_MakeCone.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>
#include <Geom_BezierSurface.hxx>
#include <TColgp_Array2OfPnt.hxx>
#include <TopExp_Explorer.hxx>
#include <TopoDS.hxx>
#include <gp_Circ.hxx>
#include <gp_Elips.hxx>
#include <gp_Pln.hxx>

#include <cmath>
#include <limits>
#include <numbers>
#include <random>

namespace vrk::framing {
namespace {

using rob::Dird;
using rob::Posd;
using rob::Posed;
using rob::Vec3d;
using test::throwsExactly;

constexpr double exact = 1e-12;

Vec3d axisOf(const Posed& frame, int axis)
{
    return Vec3d(frame * Dird(axis == 0, axis == 1, axis == 2));
}

void expectNear(const Vec3d& a, const Vec3d& b, double tolerance = exact)
{
    EXPECT_NEAR(a.x, b.x, tolerance);
    EXPECT_NEAR(a.y, b.y, tolerance);
    EXPECT_NEAR(a.z, b.z, tolerance);
}

void expectRightHanded(const Posed& frame)
{
    const Vec3d x = axisOf(frame, 0), y = axisOf(frame, 1), z = axisOf(frame, 2);
    EXPECT_NEAR(x.length(), 1, exact);
    EXPECT_NEAR(y.length(), 1, exact);
    EXPECT_NEAR(x.dot(y), 0, exact);
    expectNear(x.cross(y), z);
}

Posed randomPose(std::mt19937& random)
{
    std::uniform_real_distribution<double> number(-1, 1);
    const auto any = [&] { return number(random); };
    return {Posd(2000 * any(), 2000 * any(), 2000 * any()), rob::Rotationd(3 * any(), 3 * any(), 3 * any())};
}

void expectSamePose(const Posed& a, const Posed& b)
{
    expectNear(Vec3d(a.position), Vec3d(b.position), 1e-8);
    for (int axis = 0; axis < 3; ++axis)
        expectNear(axisOf(a, axis), axisOf(b, axis), 1e-11);
}

TEST(FrameFromThreePoints, OriginLiesBelowTheThirdPointOnTheLineOfTheOthers)
{
    const Posed frame = frameFromThreePoints({10, 0, 5}, {30, 0, 5}, {20, 7, 5});

    expectNear(Vec3d(frame.position), {20, 0, 5});
    expectNear(axisOf(frame, 0), {1, 0, 0});
    expectNear(axisOf(frame, 1), {0, 1, 0});
    expectNear(axisOf(frame, 2), {0, 0, 1});
}

TEST(FrameFromThreePoints, YGoesToTheThirdPointOnEitherSide)
{
    expectNear(axisOf(frameFromThreePoints({0, 0, 0}, {1, 0, 0}, {0.5, -1, 0}), 2), {0, 0, -1});
}

TEST(FrameFromAxes, OriginIsTheFirstPointAndYOnTheSideOfTheThird)
{
    const Posed frame = frameFromAxes({1, 2, 3}, {1, 2, 13}, {6, 2, -9});

    expectNear(Vec3d(frame.position), {1, 2, 3});
    expectNear(axisOf(frame, 0), {0, 0, 1});
    expectNear(axisOf(frame, 1), {1, 0, 0});
    expectNear(axisOf(frame, 2), {0, 1, 0});
}

TEST(FrameFromPoints, MovesWithThePointsAndIsRightHanded)
{
    for (unsigned seed = 0; seed < 500; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        std::mt19937 random(seed);
        const Posed pose = randomPose(random);
        std::uniform_real_distribution<double> number(-500, 500);
        const auto any = [&] { return Posd(number(random), number(random), number(random)); };
        const Posd a = any(), b = any(), c = any();

        const Posed three = frameFromThreePoints(a, b, c);
        const Posed axes = frameFromAxes(a, b, c);

        expectRightHanded(three);
        expectRightHanded(axes);
        EXPECT_EQ(three.orientation, axes.orientation) << "they differ in the origin alone";
        EXPECT_NEAR((three.inverse() * c).x, 0, 1e-9);
        EXPECT_GT((three.inverse() * c).y, 0);
        EXPECT_NEAR((axes.inverse() * c).z, 0, 1e-9);
        expectSamePose(frameFromThreePoints(pose * a, pose * b, pose * c), pose * three);
        expectSamePose(frameFromAxes(pose * a, pose * b, pose * c), pose * axes);
    }
}

struct BadPoints {
    const char* name;
    Posd a, b, c;
    const char* text;
};

class FrameFromBadPoints : public testing::TestWithParam<BadPoints> {};

TEST_P(FrameFromBadPoints, IsRefusedInOneLine)
{
    const BadPoints& bad = GetParam();
    EXPECT_THAT([&] { frameFromThreePoints(bad.a, bad.b, bad.c); }, throwsExactly<std::invalid_argument>(bad.text));
    EXPECT_THAT([&] { frameFromAxes(bad.a, bad.b, bad.c); }, throwsExactly<std::invalid_argument>(bad.text));
}

constexpr const char* same = "two of the points are the same";
constexpr const char* oneLine = "the points lie on one line";

INSTANTIATE_TEST_SUITE_P(Table, FrameFromBadPoints,
                         testing::Values(BadPoints{"FirstTwo", {1, 2, 3}, {1, 2, 3}, {4, 5, 6}, same},
                                         BadPoints{"FirstAndLast", {1, 2, 3}, {4, 5, 6}, {1, 2, 3}, same},
                                         BadPoints{"LastTwo", {1, 2, 3}, {4, 5, 6}, {4, 5, 6}, same},
                                         BadPoints{"All", {1, 2, 3}, {1, 2, 3}, {1, 2, 3}, same},
                                         BadPoints{"Between", {0, 0, 0}, {2, 2, 2}, {1, 1, 1}, oneLine},
                                         BadPoints{"Behind", {0, 0, 0}, {2, 2, 2}, {-5, -5, -5}, oneLine},
                                         BadPoints{
                                             "AlmostOnTheLine", {0, 0, 0}, {1000, 0, 0}, {500, 1e-4, 0}, oneLine}),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(FrameOnNormal, XIsNearestToTheXOfTheWorld)
{
    for (unsigned seed = 0; seed < 500; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        std::mt19937 random(seed);
        const Vec3d normal(axisOf(randomPose(random), 2) * 7);

        const Posed frame = frameOnNormal({1, 2, 3}, normal);

        expectRightHanded(frame);
        expectNear(axisOf(frame, 2), normal / 7);
        EXPECT_NEAR(axisOf(frame, 1).x, 0, exact) << "no direction at right angles to z has more of the x of the world";
        EXPECT_GT(axisOf(frame, 0).x, 0);
    }
}

TEST(FrameOnNormal, AlongTheXOfTheWorldItsYTakesOver)
{
    for (const double way : {1.0, -1.0}) {
        const Posed frame = frameOnNormal({}, {way, 1e-9, -1e-9});
        expectRightHanded(frame);
        EXPECT_NEAR(axisOf(frame, 0).y, 1, 1e-8);
    }
}

TEST(FrameOnNormal, NormalThatIsNoneIsRefused)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    for (const Vec3d& normal : {Vec3d(), Vec3d(nan, 0, 1), Vec3d(std::numeric_limits<double>::infinity(), 0, 0)})
        EXPECT_THAT([&] { frameOnNormal({}, normal); },
                    throwsExactly<std::invalid_argument>("the face has no normal there"));
}

std::vector<TopoDS_Face> facesOf(const TopoDS_Shape& shape)
{
    std::vector<TopoDS_Face> faces;
    for (TopExp_Explorer each(shape, TopAbs_FACE); each.More(); each.Next())
        faces.push_back(TopoDS::Face(each.Current()));
    return faces;
}

TEST(FrameOfFace, StandsInTheMiddleOfEachSideOfABoxAndLooksOut)
{
    for (unsigned seed = 0; seed < 50; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        std::mt19937 random(seed);
        const Posed body = randomPose(random);
        const std::vector<TopoDS_Face> faces = facesOf(BRepPrimAPI_MakeBox(20, 40, 60).Shape());
        ASSERT_EQ(faces.size(), 6u);
        Vec3d sum;
        for (const TopoDS_Face& face : faces) {
            const Posed frame = frameOfFace(face, body, body * Posd(1, 1, 1));
            expectRightHanded(frame);
            const Vec3d fromMiddle = frame.position - body * Posd(10, 20, 30);
            EXPECT_NEAR(fromMiddle.cross(axisOf(frame, 2)).length(), 0, 1e-9);
            EXPECT_GE(fromMiddle.dot(axisOf(frame, 2)), 10 - 1e-9);
            sum += fromMiddle;
        }
        expectNear(sum, {}, 1e-8);
    }
}

TEST(FrameOfFace, OfARoundFaceStandsWhereItWasPicked)
{
    const Posed body(Posd(100, 0, 0), rob::Rotationd(0.3, 0.2, 0.1));
    for (const TopoDS_Face& face : facesOf(BRepPrimAPI_MakeCylinder(10, 50).Shape())) {
        if (BRepAdaptor_Surface(face).GetType() != GeomAbs_Cylinder)
            continue;
        const Posd picked = body * Posd(6, 8, 20);
        const Posed frame = frameOfFace(face, body, picked);
        expectRightHanded(frame);
        expectNear(Vec3d(frame.position), Vec3d(picked), 1e-9);
        expectNear(axisOf(frame, 2), Vec3d(body * Dird(0.6, 0.8, 0)), 1e-9);
        const TopoDS_Face inside = TopoDS::Face(face.Reversed());
        expectNear(axisOf(frameOfFace(inside, body, picked), 2), Vec3d(body * Dird(-0.6, -0.8, 0)), 1e-9);
        return;
    }
    FAIL() << "the cylinder has a round face";
}

TEST(FrameOfFace, MiddleOfAFaceWithAHoleIsTheMiddleOfWhatIsLeft)
{
    BRepBuilderAPI_MakeFace plate(gp_Pln(), 0, 30, 0, 10);
    const gp_Circ hole(gp_Ax2(gp_Pnt(5, 5, 0), gp_Dir(0, 0, -1)), 2);
    plate.Add(BRepBuilderAPI_MakeWire(BRepBuilderAPI_MakeEdge(hole).Edge()).Wire());
    const double cut = 4 * std::numbers::pi;

    const Posed frame = frameOfFace(plate.Face(), {}, {});

    expectNear(Vec3d(frame.position), {(300 * 15 - cut * 5) / (300 - cut), 5, 0}, 1e-9);
}

TEST(FrameOfFace, PlaneOfAnotherKindOfSurfaceCountsAsOne)
{
    TColgp_Array2OfPnt corners(1, 2, 1, 2);
    corners(1, 1) = {0, 0, 3};
    corners(2, 1) = {10, 0, 3};
    corners(1, 2) = {0, 10, 3};
    corners(2, 2) = {10, 10, 3};
    const TopoDS_Face face = BRepBuilderAPI_MakeFace(new Geom_BezierSurface(corners), 1e-7).Face();

    const Posed frame = frameOfFace(face, {}, {1, 1, 3});

    expectNear(Vec3d(frame.position), {5, 5, 3}, 1e-9);
    expectNear(axisOf(frame, 2), {0, 0, 1}, 1e-9);
}

TEST(FrameOfFace, WithoutAFaceOrANormalIsRefused)
{
    EXPECT_THAT([] { frameOfFace({}, {}, {}); }, throwsExactly<std::invalid_argument>("there is no face"));
    for (const TopoDS_Face& face : facesOf(BRepPrimAPI_MakeCone(10, 0, 20).Shape()))
        if (BRepAdaptor_Surface(face).GetType() == GeomAbs_Cone) {
            EXPECT_THAT(
                [&] {
                    frameOfFace(face, {}, {0, 0, 20});
                },
                throwsExactly<std::invalid_argument>("the face has no normal there"))
                << "the tip of a cone";
        }
}

TEST(FrameOfCircle, StandsInTheCentreWithZUpwards)
{
    const gp_Circ circle(gp_Ax2(gp_Pnt(1, 2, 3), gp_Dir(0, 0, -1)), 5);
    const TopoDS_Edge edge = BRepBuilderAPI_MakeEdge(circle, 0, 1).Edge(); // an arc of it

    const Posed frame = frameOfCircle(edge, Posed(Posd(10, 0, 0)));

    expectNear(Vec3d(frame.position), {11, 2, 3});
    expectNear(axisOf(frame, 2), {0, 0, 1});
    expectNear(axisOf(frame, 0), {1, 0, 0});
}

TEST(FrameOfCircle, LevelAxisGoesTowardsPositiveYOrX)
{
    const auto zOf = [](const gp_Dir& axis) {
        const gp_Circ circle(gp_Ax2(gp_Pnt(), axis), 5);
        const Posed frame = frameOfCircle(BRepBuilderAPI_MakeEdge(circle).Edge(), {});
        expectRightHanded(frame);
        return axisOf(frame, 2);
    };
    expectNear(zOf(gp_Dir(0, -1, 0)), {0, 1, 0});
    expectNear(zOf(gp_Dir(-0.6, 0.8, 0)), {-0.6, 0.8, 0});
    expectNear(zOf(gp_Dir(-1, 0, 0)), {1, 0, 0});
    expectNear(zOf(gp_Dir(0, 0.6, -0.8)), {0, -0.6, 0.8});
}

TEST(FrameOfCircle, OtherEdgesAreRefused)
{
    const auto text = throwsExactly<std::invalid_argument>("the edge is no circle");
    EXPECT_THAT([] { frameOfCircle({}, {}); }, text);
    EXPECT_THAT([] { frameOfCircle(BRepBuilderAPI_MakeEdge(gp_Pnt(), gp_Pnt(1, 0, 0)).Edge(), {}); }, text);
    EXPECT_THAT([] { frameOfCircle(BRepBuilderAPI_MakeEdge(gp_Elips(gp::XOY(), 5, 3)).Edge(), {}); }, text);
}

} // namespace
} // namespace vrk::framing
