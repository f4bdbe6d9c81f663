#include "selection/geometry/Math.h"

#include "Geometry.h"
#include "MathSteps.h"

#include "selection/geometry/Result.h"
#include "support/ThrowsExactly.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <optional>

namespace vrk::selection {
namespace {

using rob::Dirf;
using rob::Linef;
using rob::Posd;
using rob::Posf;
using rob::Trianglef;
using rob::Vec3d;
using rob::Vec3f;

constexpr const char* zeroLengthText = "0-length vector cannot be normalized.";

const Trianglef corner({0, 0, 0}, {10, 0, 0}, {0, 10, 0}); // right angle at the origin, in the plane z = 0

TEST(Math, EpsilonIsAThousandth)
{
    EXPECT_EQ(Math::epsilon, 0.001f);
}

TEST(Math, ZeroIsStrictlyBetweenTheTolerances)
{
    EXPECT_TRUE(Math::isZero(0));
    EXPECT_TRUE(Math::isZero(std::nextafter(0.001f, 0.0f)));
    EXPECT_TRUE(Math::isZero(std::nextafter(-0.001f, 0.0f)));
    EXPECT_FALSE(Math::isZero(0.001f));
    EXPECT_FALSE(Math::isZero(-0.001f));
    EXPECT_FALSE(Math::isZero(nan));
}

TEST(Math, EqualityIsThatOfTheRoundedDifference)
{
    EXPECT_EQ(Math::isEqual(1.0f, 1.001f), 0.001f > std::abs(1.0f - 1.001f));
    EXPECT_TRUE(Math::isEqual(5.0f, 5.0009f));
    EXPECT_TRUE(Math::isEqual(5.0009f, 5.0f));
    EXPECT_FALSE(Math::isEqual(5.0f, 5.002f));
    EXPECT_FALSE(Math::isEqual(0.001f, 0.0f));
    EXPECT_FALSE(Math::isEqual(nan, nan));
}

TEST(Math, SortPutsTheSmallerFirst)
{
    float a = 2, b = 1;
    Math::sort(a, b);
    EXPECT_EQ(a, 1);
    EXPECT_EQ(b, 2);
    Math::sort(a, b);
    EXPECT_EQ(a, 1);
    EXPECT_EQ(b, 2);
}

TEST(DistancePointLine, IsToTheEndlessLineThroughBothPoints)
{
    EXPECT_FLOAT_EQ(Math::DistancePointLine({5, 3, 4}, {0, 0, 0}, Posf(1, 0, 0)), 5);
    EXPECT_FLOAT_EQ(Math::DistancePointLine({-50, 3, 4}, {0, 0, 0}, Posf(1, 0, 0)), 5);
    EXPECT_EQ(Math::DistancePointLine({0, 0, 0}, {0, 0, 0}, Posf(1, 0, 0)), 0);
}

TEST(DistancePointLine, IsMeasuredFromTheEndThatIsFurtherAway)
{
    for (unsigned seed = 0; seed < 500; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Dice dice(seed, 1000);
        const Posf p = dice.point();
        const Linef line = dice.line();
        const Vec3f r1 = p - line.start, r2 = p - line.end, r = r1.length() > r2.length() ? r1 : r2;
        const Dirf u = rob::normalized(line.end - line.start);

        EXPECT_EQ(Math::DistancePointLine(p, line.start, line.end), (r - u * r.dot(u)).length());
    }
}

TEST(DistancePointLine, EqualPointsAreRefused)
{
    EXPECT_THAT(
        [] {
            Math::DistancePointLine({1, 2, 3}, Posf(4, 5, 6), Posf(4, 5, 6));
        },
        test::throwsExactly<std::overflow_error>(zeroLengthText));
}

TEST(DistancePointLine, DirectionMayHaveAnyLengthButZero)
{
    EXPECT_FLOAT_EQ(Math::DistancePointLine({5, 3, 4}, {0, 0, 0}, Dirf(100, 0, 0)), 5);
    EXPECT_THAT(
        [] {
            Math::DistancePointLine({1, 2, 3}, {0, 0, 0}, Dirf(0, 0, 0));
        },
        test::throwsExactly<std::overflow_error>(zeroLengthText));
}

TEST(DistancePointLine, BothFormsAgree)
{
    for (unsigned seed = 0; seed < 500; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Dice dice(seed);
        const Posf p = dice.point();
        const Linef line = dice.line();

        EXPECT_NEAR(Math::DistancePointLine(p, line.start, line.end),
                    Math::DistancePointLine(p, line.start, Dirf(line.end - line.start)), 2e-5f);
    }
}

TEST(DistancePointPlane, SignIsThatOfTheSideOnWhichTheCornersTurnCounterClockwise)
{
    const Trianglef& t = corner;

    EXPECT_FLOAT_EQ(Math::SignedDistancePointPlane({3, 3, 7}, t.a, t.b, t.c), 7);
    EXPECT_FLOAT_EQ(Math::SignedDistancePointPlane({50, -3, -7}, t.a, t.b, t.c), -7);
    EXPECT_FLOAT_EQ(Math::SignedDistancePointPlane({3, 3, 7}, t.a, t.c, t.b), -7);
    EXPECT_FLOAT_EQ(Math::DistancePointPlane({3, 3, -7}, t.a, t.b, t.c), 7);
}

TEST(DistancePointPlane, PointsOnOneLineAreRefused)
{
    EXPECT_THAT(
        [] {
            Math::DistancePointPlane({1, 2, 3}, {0, 0, 0}, {1, 1, 1}, {2, 2, 2});
        },
        test::throwsExactly<std::overflow_error>(zeroLengthText));
    EXPECT_THAT(
        [] {
            Math::SignedDistancePointPlane({1, 2, 3}, {4, 4, 4}, {4, 4, 4}, {4, 4, 4});
        },
        test::throwsExactly<std::overflow_error>(zeroLengthText));
}

TEST(PointOutsideOfPlane, PlaneItselfIsNotOutside)
{
    EXPECT_TRUE(Math::PointOutsideOfPlane({5, 5, 1.0001f}, {0, 0, 1}, Dirf(0, 0, 1)));
    EXPECT_FALSE(Math::PointOutsideOfPlane({5, 5, 1}, {0, 0, 1}, Dirf(0, 0, 1)));
    EXPECT_FALSE(Math::PointOutsideOfPlane({5, 5, 0}, {0, 0, 1}, Dirf(0, 0, 1)));
}

TEST(PointOutsideOfPlane, ThreePointsGiveTheDistanceToo)
{
    const Trianglef& t = corner;

    EXPECT_EQ(Math::PointOutsideOfPlane({1, 1, 3}, t.a, t.b, t.c), std::make_pair(true, 3.0f));
    EXPECT_EQ(Math::PointOutsideOfPlane({1, 1, -3}, t.a, t.b, t.c), std::make_pair(false, 0.0f));
    EXPECT_EQ(Math::PointOutsideOfPlane({1, 1, 0}, t.a, t.b, t.c), std::make_pair(false, 0.0f));
}

TEST(PointOutsideOfPlane, FlatAngleIsNotOutside)
{
    const Trianglef& t = corner;

    EXPECT_FALSE(Math::PointOutsideOfPlane({1000, 0, 0.9f}, t.a, t.b, t.c).first);
    EXPECT_TRUE(Math::PointOutsideOfPlane({1000, 0, 1.1f}, t.a, t.b, t.c).first);
}

TEST(PointOutsideOfPlane, WithoutAPlaneOrAtItsFirstPointIsNotOutside)
{
    const std::pair<bool, float> no(false, 0.0f);

    EXPECT_EQ(Math::PointOutsideOfPlane({1, 1, 3}, {0, 0, 0}, {1, 1, 1}, {2, 2, 2}), no);
    EXPECT_EQ(Math::PointOutsideOfPlane({1, 1, 3}, {0, 0, 0}, {0.03f, 0, 0}, {0, 0.03f, 0}), no);
    EXPECT_EQ(Math::PointOutsideOfPlane({0, 0, 0.0009f}, corner.a, corner.b, corner.c), no);
}

TEST(PointInTriangle, BorderIsOutside)
{
    using P = rob::Vec2f;
    for (const bool turned : {false, true}) {
        const P a(0, 0), b = turned ? P(0, 4) : P(4, 0), c = turned ? P(4, 0) : P(0, 4);
        EXPECT_TRUE(MathSteps::pointInTriangle2D({1, 1}, a, b, c));
        EXPECT_FALSE(MathSteps::pointInTriangle2D({2, 2}, a, b, c));
        EXPECT_FALSE(MathSteps::pointInTriangle2D({0, 2}, a, b, c));
        EXPECT_FALSE(MathSteps::pointInTriangle2D({2, 0}, a, b, c));
        EXPECT_FALSE(MathSteps::pointInTriangle2D({0, 0}, a, b, c));
        EXPECT_FALSE(MathSteps::pointInTriangle2D({3, 3}, a, b, c));
        EXPECT_FALSE(MathSteps::pointInTriangle2D({nan, 1}, a, b, c));
        EXPECT_FALSE(MathSteps::pointInTriangle2D({1, 1}, a, a, a));
    }
}

TEST(PointInTriangle, SpaceIsFlattenedAlongTheLargestNormalComponent)
{
    // One triangle for each axis that is dropped; the point is off the plane, along that axis.
    EXPECT_TRUE(MathSteps::pointInTriangle3D({9, 1, 1}, {0, 0, 0}, {1, 4, 0}, {1, 0, 4}));
    EXPECT_TRUE(MathSteps::pointInTriangle3D({1, 9, 1}, {0, 0, 0}, {4, 1, 0}, {0, 1, 4}));
    EXPECT_TRUE(MathSteps::pointInTriangle3D({1, 1, 9}, {0, 0, 0}, {4, 0, 1}, {0, 4, 1}));
    EXPECT_FALSE(MathSteps::pointInTriangle3D({9, 3, 3}, {0, 0, 0}, {1, 4, 0}, {1, 0, 4}));
}

TEST(PointInTriangle, EqualComponentsDropTheLaterAxis)
{
    // The normal is (1, 1, 1) over its length: z goes. Along z, (1, 1, 50) falls inside; along x or y it would not.
    EXPECT_TRUE(MathSteps::pointInTriangle3D({1, 1, 50}, {4, 0, 0}, {0, 4, 0}, {0, 0, 4}));
    // (1, 1, 0): the tie of x and y drops y.
    EXPECT_TRUE(MathSteps::pointInTriangle3D({1, 50, 1}, {4, 0, 0}, {0, 4, 0}, {0, 4, 8}));
}

TEST(EdgeMeetsEdge, EndsCountAndParallelsNeverMeet)
{
    EXPECT_TRUE(MathSteps::edge2Edge2D({0, 0}, {4, 0}, {2, -1}, {2, 1}));
    EXPECT_TRUE(MathSteps::edge2Edge2D({0, 0}, {4, 0}, {4, 0}, {5, 7}));
    EXPECT_TRUE(MathSteps::edge2Edge2D({4, 0}, {0, 0}, {2, 0}, {2, 1}));
    EXPECT_FALSE(MathSteps::edge2Edge2D({0, 0}, {4, 0}, {5, -1}, {5, 1}));
    EXPECT_FALSE(MathSteps::edge2Edge2D({0, 0}, {4, 0}, {2, 1}, {2, 2}));
    EXPECT_FALSE(MathSteps::edge2Edge2D({0, 0}, {4, 0}, {1, 0}, {3, 0}));
    EXPECT_TRUE(MathSteps::edge2TrianEdges({0.5f, 0.5f}, {9, 9}, {0, 0}, {4, 0}, {0, 4}));
    EXPECT_FALSE(MathSteps::edge2TrianEdges({0.5f, 0.5f}, {1, 1}, {0, 0}, {4, 0}, {0, 4}));
}

TEST(EdgeToEdge, DistanceIsTheFractionOfTheFirst)
{
    const Result crossing = MathSteps::edgeToEdge2D({0, 0}, {4, 0}, {1, -1}, {1, 1});
    EXPECT_TRUE(crossing.hit);
    EXPECT_EQ(crossing.distance, 0.25f);
    EXPECT_EQ(MathSteps::edgeToEdge2D({0, 0}, {4, 0}, {1, 1}, {1, -1}).distance, 0.25f);
    EXPECT_FALSE(MathSteps::edgeToEdge2D({0, 0}, {4, 0}, {1, 1}, {1, 2}).hit);
    EXPECT_FALSE(MathSteps::edgeToEdge2D({0, 0}, {4, 0}, {5, -1}, {5, 1}).hit);
    EXPECT_FALSE(MathSteps::edgeToEdge2D({0, 0}, {4, 0}, {0, 1}, {4, 1}).hit);
}

TEST(EdgeToEdge, OverlapBeginsAtItsFirstPoint)
{
    EXPECT_EQ(MathSteps::edgeToEdge2D({0, 0}, {4, 0}, {3, 0}, {1, 0}).distance, 0.25f);
    EXPECT_EQ(MathSteps::edgeToEdge2D({0, 0}, {0, 4}, {0, 1}, {0, 9}).distance, 0.25f);
    EXPECT_EQ(MathSteps::edgeToEdge2D({0, 0}, {4, 0}, {-3, 0}, {1, 0}).distance, 0);
    EXPECT_FALSE(MathSteps::edgeToEdge2D({0, 0}, {4, 0}, {5, 0}, {9, 0}).hit);
    EXPECT_FALSE(MathSteps::edgeToEdge2D({0, 0}, {4, 0}, {-5, 0}, {-1, 0}).hit);
}

TEST(EdgeToEdge, ShortOverlapAcrossIsMeasuredAcross)
{
    EXPECT_FLOAT_EQ(MathSteps::edgeToEdge2D({0, 0}, {0, 0.05f}, {0, 0.02f}, {0, 1}).distance, 0.4f);
}

TEST(EdgeToEdge, ParallelsALittleApartDoNotOverlap)
{
    EXPECT_FALSE(MathSteps::edgeToEdge2D({0, 0}, {1, 0}, {0.25f, 0.0005f}, {1, 0.0005f}).hit);
}

TEST(DistanceToSurface, ShortestNormalIsOneAllTheSame)
{
    EXPECT_FLOAT_EQ(MathSteps::distanceOfPointToSurface({0, 0, 5}, {1, 1, 2}, {0, 0, 1e-9f}), 3);
}

TEST(DistanceToSurface, NormalOfNoLengthIsRefused)
{
    EXPECT_EQ(MathSteps::distanceOfPointToSurface({0, 0, 5}, {1, 1, 2}, {0, 0, 4}), 3);
    EXPECT_THAT(
        [] {
            MathSteps::distanceOfPointToSurface({0, 0, 5}, {1, 1, 2}, {0, 0, 0});
        },
        test::throwsExactly<SurfaceNormalNotAvailable>("Surface normal is not available"));
}

TEST(LineMeetsTriangle, HitCarriesTheFractionAndBothPositions)
{
    const Result result = Math::Intersect(Linef({2, 3, 6}, {2, 3, -2}), corner);

    EXPECT_TRUE(result.valid);
    EXPECT_TRUE(result.hit);
    EXPECT_FLOAT_EQ(result.distance, 0.75f);
    EXPECT_EQ(result.position, Posf(2, 3, 0));
    EXPECT_EQ(result.localPosition, Posf(2, 3, 0));
}

TEST(LineMeetsTriangle, BothSidesAreHit)
{
    EXPECT_TRUE(Math::Intersect(Linef({2, 3, -6}, {2, 3, 6}), corner).hit);
    EXPECT_TRUE(Math::Intersect(Linef({2, 3, -6}, {2, 3, 6}), {corner.a, corner.c, corner.b}).hit);
}

TEST(LineMeetsTriangle, CornersAndEdgesBelongToIt)
{
    for (const Posf& p : {corner.a, corner.b, corner.c, Posf(5, 0, 0), Posf(0, 5, 0), Posf(5, 5, 0)})
        EXPECT_TRUE(Math::Intersect(Linef({p.x, p.y, 1}, {p.x, p.y, -1}), corner).hit);
    EXPECT_FALSE(Math::Intersect(Linef({-0.001f, 5, 1}, {-0.001f, 5, -1}), corner).hit);
    EXPECT_FALSE(Math::Intersect(Linef({5, -0.001f, 1}, {5, -0.001f, -1}), corner).hit);
    EXPECT_FALSE(Math::Intersect(Linef({5.001f, 5, 1}, {5.001f, 5, -1}), corner).hit);
}

TEST(LineMeetsTriangle, EndsOfTheLineCountAndNothingBeyondThem)
{
    EXPECT_EQ(Math::Intersect(Linef({1, 1, 0}, {1, 1, 5}), corner).distance, 0);
    EXPECT_EQ(Math::Intersect(Linef({1, 1, 5}, {1, 1, 0}), corner).distance, 1);
    EXPECT_FALSE(Math::Intersect(Linef({1, 1, 5}, {1, 1, 0.001f}), corner).hit);
    EXPECT_FALSE(Math::Intersect(Linef({1, 1, 0.001f}, {1, 1, 5}), corner).hit);
}

TEST(LineMeetsTriangle, LineAlongThePlaneIsTakenAsInItUpToTheTolerance)
{
    EXPECT_FALSE(Math::Intersect(Linef({-5, 1, 0.002f}, {5, 1, 0.002f}), corner).hit);

    const Result near = Math::Intersect(Linef({-5, 1, 0.0005f}, {5, 1, 0.0005f}), corner);
    EXPECT_TRUE(near.hit);
    EXPECT_FLOAT_EQ(near.distance, 0.5f);
    EXPECT_EQ(near.position, Posf(0, 1, 0.0005f));
    EXPECT_EQ(near.localPosition, near.position);
}

TEST(LineMeetsTriangle, LineInThePlaneThatStartsInsideIsHitAtItsStart)
{
    const Result result = Math::Intersect(Linef({1, 1, 0}, {50, 1, 0}), corner);

    EXPECT_TRUE(result.hit);
    EXPECT_EQ(result.distance, 0);
    EXPECT_EQ(result.position, Posf(1, 1, 0));
}

TEST(LineMeetsTriangle, LineInThePlaneThatEndsInsideIsHitAtTheBorder)
{
    EXPECT_FLOAT_EQ(Math::Intersect(Linef({-1, 1, 0}, {3, 1, 0}), corner).distance, 0.25f);
    EXPECT_FALSE(Math::Intersect(Linef({-5, 1, 0}, {-1, 1, 0}), corner).hit);
}

TEST(LineMeetsTriangle, LineAlongAnEdgeIsHitWhereTheEdgeBegins)
{
    EXPECT_FLOAT_EQ(Math::Intersect(Linef({-10, 0, 0}, {10, 0, 0}), corner).distance, 0.5f);
}

TEST(LineMeetsTriangle, VerySmallTriangleIsParallelToEveryLine)
{
    const Trianglef small({0, 0, 0}, {0.01f, 0, 0}, {0, 0.01f, 0});

    EXPECT_FALSE(Math::Intersect(Linef({0.002f, 0.002f, 1}, {0.002f, 0.002f, -1}), small).hit);
    EXPECT_TRUE(Math::Intersect(Linef({0.002f, 0.002f, 0}, {0.002f, 0.002f, -1}), small).hit);
}

TEST(LineMeetsTriangle, TriangleOfNoAreaIsMissedWithoutAnException)
{
    const Posf p(1, 2, 3);
    const Linef through({0, 2, 3}, {2, 2, 3});

    EXPECT_NO_THROW(EXPECT_FALSE(Math::Intersect(through, Trianglef(p, p, p)).hit));
    EXPECT_NO_THROW(EXPECT_FALSE(Math::Intersect(through, {{0, 2, 3}, {1, 2, 3}, {4, 2, 3}}).hit));
}

TEST(LineMeetsTriangle, NanIsMissed)
{
    EXPECT_FALSE(Math::Intersect(Linef({1, 1, 5}, {1, 1, -5}), {{0, 0, nan}, {10, 0, 0}, {0, 10, 0}}).hit);
    EXPECT_FALSE(Math::Intersect(Linef({1, nan, 5}, {1, 1, -5}), corner).hit);
}

TEST(LineMeetsTriangle, LineOfNoLengthIsRefused)
{
    EXPECT_THAT(
        [] {
            Math::Intersect(Linef({1, 1, 0}, {1, 1, 0}), corner);
        },
        test::throwsExactly<std::overflow_error>(zeroLengthText));
}

/// The fraction of the line at which it meets the triangle, in double; nothing where that is too close to call.
std::optional<double> fractionInDouble(const Linef& line, const Trianglef& t, bool& clear)
{
    const Posd start(line.start), a(t.a);
    const Vec3d d = Posd(line.end) - start, e1 = Posd(t.b) - a, e2 = Posd(t.c) - a;
    const Vec3d p = d.cross(e2);
    const double det = e1.dot(p);
    const double u = (start - a).dot(p) / det, w = d.dot((start - a).cross(e1)) / det;
    const double f = e2.dot((start - a).cross(e1)) / det;
    clear = std::abs(det) > 1;
    for (const double margin : {u, w, 1 - u - w, f, 1 - f})
        clear = clear && std::abs(margin) > 1e-3;
    return u >= 0 && w >= 0 && u + w <= 1 && f >= 0 && f <= 1 ? std::optional(f) : std::nullopt;
}

TEST(LineMeetsTriangle, AnswerIsThatOfDoublePrecision)
{
    int hits = 0, compared = 0;
    for (unsigned seed = 0; seed < 20000; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Dice dice(seed);
        const Linef line = dice.line();
        const Trianglef triangle = dice.triangle();
        bool clear = false;
        const std::optional<double> expected = fractionInDouble(line, triangle, clear);
        if (!clear)
            continue;

        const Result result = Math::Intersect(line, triangle);

        ASSERT_EQ(result.hit, expected.has_value());
        ++compared;
        if (!expected)
            continue;
        ++hits;
        EXPECT_NEAR(result.distance, *expected, 1e-4);
        const Posf point = line.start + (line.end - line.start) * static_cast<float>(*expected);
        EXPECT_LT((result.position - point).length(), 2e-3f);
        EXPECT_EQ(result.localPosition, result.position);
    }
    EXPECT_GT(hits, 800);
    EXPECT_GT(compared, 19000);
}

} // namespace
} // namespace vrk::selection
