#include "Geometry.h"

#include "selection/geometry/Box.h"
#include "selection/geometry/Ray.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cmath>

namespace vrk::selection {
namespace {

using rob::Dirf;
using rob::Linef;
using rob::Posd;
using rob::Posf;
using rob::Trianglef;
using rob::Vec3f;
using testing::StrEq;
using testing::ThrowsMessage;

const Box unitBox(-1, -1, -1, 1, 1, 1);

/// The slab test as it is told, one axis after the other, for one box.
bool slabsOneByOne(const Box& box, const Posf& start, const Dirf& d, float length, bool sorted)
{
    float tmin = 0, tmax = length;
    for (unsigned axis = 0; axis < 3; ++axis) {
        const float lower = Vec3f(box.min)[axis], upper = Vec3f(box.max)[axis];
        if (std::abs(d[axis]) < 0.001f) {
            if (start[axis] < std::min(lower, upper) || start[axis] > std::max(lower, upper))
                return false;
            continue;
        }
        float t1 = (lower - start[axis]) / d[axis], t2 = (upper - start[axis]) / d[axis];
        if (sorted ? t1 > t2 : !(d[axis] > 0))
            std::swap(t1, t2);
        tmin = std::max(tmin, t1);
        tmax = std::min(tmax, t2);
        if (tmin > tmax)
            return false;
    }
    return true;
}

/// Whether a triangle and a box share a point: cuts the triangle by the six planes, in double.
bool clipMeets(const Trianglef& triangle, const Box& box, double margin)
{
    std::vector<Posd> polygon = {Posd(triangle.a), Posd(triangle.b), Posd(triangle.c)};
    for (unsigned axis = 0; axis < 3; ++axis) {
        for (const double sign : {1.0, -1.0}) {
            const double limit = sign > 0 ? Vec3f(box.max)[axis] : -Vec3f(box.min)[axis];
            const auto outside = [&](const Posd& p) { return sign * p[axis] - limit - margin; };
            std::vector<Posd> cut;
            for (std::size_t i = 0; i < polygon.size(); ++i) {
                const Posd &p = polygon[i], &q = polygon[(i + 1) % polygon.size()];
                const double dp = outside(p), dq = outside(q);
                if (dp <= 0)
                    cut.push_back(p);
                if ((dp < 0 && dq > 0) || (dp > 0 && dq < 0))
                    cut.push_back(p + (q - p) * (dp / (dp - dq)));
            }
            polygon = cut;
        }
    }
    return !polygon.empty();
}

TEST(BoxMeetsBox, TouchingCounts)
{
    EXPECT_TRUE(unitBox.intersect(Box(1, 1, 1, 2, 2, 2)));
    EXPECT_TRUE(unitBox.intersect(Box(-2, -2, -2, -1, -1, -1)));
    EXPECT_TRUE(unitBox.intersect(Box(-0.5f, -0.5f, -0.5f, 0.5f, 0.5f, 0.5f)));
}

TEST(BoxMeetsBox, GapOnOneAxisIsEnoughToMiss)
{
    EXPECT_FALSE(unitBox.intersect(Box(1.001f, -1, -1, 2, 1, 1)));
    EXPECT_FALSE(unitBox.intersect(Box(-1, -3, -1, 1, -1.001f, 1)));
    EXPECT_FALSE(unitBox.intersect(Box(-1, -1, 1.001f, 1, 1, 2)));
    EXPECT_FALSE(unitBox.intersect(Box()));
    EXPECT_FALSE(Box().intersect(unitBox));
}

TEST(BoxMeetsLine, OnlyTheSegmentCounts)
{
    EXPECT_TRUE(unitBox.intersect(Linef({-5, 0, 0}, {5, 0, 0})));
    EXPECT_FALSE(unitBox.intersect(Linef({-5, 0, 0}, {-2, 0, 0})));
    EXPECT_FALSE(unitBox.intersect(Linef({5, 0, 0}, {2, 0, 0})));
}

TEST(BoxMeetsLine, EndOnAFaceTouches)
{
    EXPECT_TRUE(unitBox.intersect(Linef({-5, 0, 0}, {-1, 0, 0})));
    EXPECT_TRUE(unitBox.intersect(Linef({1, 0, 0}, {4, 0, 0})));
}

TEST(BoxMeetsLine, ParallelLineOnAFaceTouches)
{
    EXPECT_TRUE(unitBox.intersect(Linef({-5, 1, -1}, {5, 1, -1})));
    EXPECT_FALSE(unitBox.intersect(Linef({-5, 1.0001f, 0}, {5, 1.0001f, 0})));
    EXPECT_FALSE(unitBox.intersect(Linef({-5, 0, -1.0001f}, {5, 0, -1.0001f})));
}

TEST(BoxMeetsLine, InsideOfTheBoxCounts)
{
    EXPECT_TRUE(unitBox.intersect(Linef({0, 0, 0}, {0.1f, 0.1f, 0.1f})));
}

TEST(BoxMeetsLine, LineOfNoLengthIsRefused)
{
    EXPECT_THAT(
        [] {
            unitBox.intersect(Linef({0, 0, 0}, {0, 0, 0}));
        },
        ThrowsMessage<std::overflow_error>(StrEq("0-length vector cannot be normalized.")));
}

TEST(BoxMeetsLine, AnswerIsThatOfOneAxisAfterTheOther)
{
    int met = 0;
    for (unsigned seed = 0; seed < 20000; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Dice dice(seed);
        const Box box = dice.box(6);
        Linef line = dice.line();
        if (seed % 3 == 0) // parallel to an axis
            line.end = line.start + Vec3f(seed % 2 ? 4.0f : 0.0f, seed % 2 ? 0.0f : -4.0f, 0);

        const bool expected = slabsOneByOne(box, line.start, line.getDirection(), line.getLength(), true);

        ASSERT_EQ(box.intersect(line), expected);
        met += expected;
    }
    EXPECT_GT(met, 1000);
}

TEST(BoxMeetsRay, StartInsidePasses)
{
    for (unsigned seed = 0; seed < 50; ++seed) {
        Dice dice(seed);
        EXPECT_TRUE(unitBox.intersect(Ray({0.9f, -0.9f, 0}, rob::normalized(dice.point()))));
    }
}

TEST(BoxMeetsRay, BoxBehindIsMissed)
{
    EXPECT_FALSE(unitBox.intersect(Ray({5, 0, 0}, {1, 0, 0})));
    EXPECT_TRUE(unitBox.intersect(Ray({5, 0, 0}, {-1, 0, 0})));
}

TEST(BoxMeetsRay, LengthEndsTheRay)
{
    EXPECT_FALSE(unitBox.intersect(Ray({5, 0, 0}, {-1, 0, 0}, 3.9f)));
    EXPECT_TRUE(unitBox.intersect(Ray({5, 0, 0}, {-1, 0, 0}, 4.0f)));
}

TEST(BoxMeetsRay, ComponentOfTheToleranceIsNotParallel)
{
    // Starts above the box: as a parallel ray it would be rejected, but it sinks by 0.001 for each unit.
    const Posf above(-5, 1.002f, 0);

    EXPECT_TRUE(unitBox.intersect(Ray(above, {1, -0.001f, 0})));
    EXPECT_FALSE(unitBox.intersect(Ray(above, {1, -0.000999f, 0})));
}

TEST(BoxMeetsRay, AnswerIsThatOfOneAxisAfterTheOther)
{
    int met = 0;
    for (unsigned seed = 0; seed < 20000; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Dice dice(seed);
        const Box box = dice.box(6);
        Ray ray = dice.ray();
        if (seed % 3 == 0)
            ray.direction.x = 0;
        if (seed % 6 == 0)
            ray.direction.z = 0.001f;
        if (seed % 5 == 0)
            ray.length = dice.number(0, 10);

        const bool expected = slabsOneByOne(box, ray.origin, ray.direction, ray.length, false);

        ASSERT_EQ(box.intersect(ray), expected);
        met += expected;
    }
    EXPECT_GT(met, 1000);
}

TEST(BoxMeetsPlane, PointIsRelativeToTheCentre)
{
    const Box box(9, 9, 9, 11, 11, 11);

    EXPECT_TRUE(box.intersect(Vec3f(1, 0, 0), Posf(0, 0, 0)));
    EXPECT_TRUE(box.intersect(Vec3f(1, 0, 0), Posf(1, 50, 50)));
    EXPECT_TRUE(box.intersect(Vec3f(1, 0, 0), Posf(-1, 0, 0)));
    EXPECT_FALSE(box.intersect(Vec3f(1, 0, 0), Posf(1.001f, 0, 0)));
    EXPECT_FALSE(box.intersect(Vec3f(1, 0, 0), Posf(-1.001f, 0, 0)));
}

TEST(BoxMeetsPlane, AnyLengthAndSignOfTheNormalGivesTheSameAnswer)
{
    for (unsigned seed = 0; seed < 2000; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Dice dice(seed);
        const Box box = dice.box(4);
        const Vec3f normal(dice.point());
        const Posf point(dice.point() * 0.5f);

        // On both sides there is a corner, as doubles tell.
        double lowest = 1e30, highest = -1e30;
        for (unsigned i = 0; i < 8; ++i) {
            const rob::Vec3d corner(box.getCorner(i) - box.center);
            const double side = rob::Vec3d(normal).dot(corner - rob::Vec3d(point));
            lowest = std::min(lowest, side);
            highest = std::max(highest, side);
        }
        if (std::min(std::abs(lowest), std::abs(highest)) < 1e-3)
            continue;
        const bool expected = lowest < 0 && highest > 0;

        EXPECT_EQ(box.intersect(normal, point), expected);
        EXPECT_EQ(box.intersect(normal * -2.0f, point), expected);
    }
}

TEST(BoxMeetsTriangle, FlatOneOnAFaceTouches)
{
    EXPECT_TRUE(unitBox.intersect(Trianglef({-3, -3, 1}, {3, -3, 1}, {0, 5, 1})));
    EXPECT_FALSE(unitBox.intersect(Trianglef({-3, -3, 1.001f}, {3, -3, 1.001f}, {0, 5, 1.001f})));
}

TEST(BoxMeetsTriangle, CornerThatTouchesAFaceCounts)
{
    EXPECT_TRUE(unitBox.intersect(Trianglef({1, 0, 0}, {3, 1, 0}, {3, -1, 1})));
}

TEST(BoxMeetsTriangle, LargeOneAroundAndSmallOneWithinMeet)
{
    EXPECT_TRUE(unitBox.intersect(Trianglef({-100, -100, 0.5f}, {100, -100, 0}, {0, 100, -0.5f})));
    EXPECT_TRUE(unitBox.intersect(Trianglef({0, 0, 0}, {0.1f, 0, 0}, {0, 0.1f, 0})));
}

TEST(BoxMeetsTriangle, OneThatPassesAnEdgeDiagonallyIsMissed)
{
    // Its box meets the unit box; only an axis across edges parts them.
    EXPECT_FALSE(unitBox.intersect(Trianglef({2.2f, 0, 0}, {0, 2.2f, 0}, {2.2f, 2.2f, 3})));
    EXPECT_TRUE(unitBox.intersect(Trianglef({1.8f, 0, 0}, {0, 1.8f, 0}, {2.2f, 2.2f, 3})));
}

TEST(BoxMeetsTriangle, SinglePointIsMetWhereItLiesInTheBox)
{
    EXPECT_TRUE(unitBox.intersect(Trianglef({1, 1, 1}, {1, 1, 1}, {1, 1, 1})));
    EXPECT_FALSE(unitBox.intersect(Trianglef({1, 1, 1.01f}, {1, 1, 1.01f}, {1, 1, 1.01f})));
}

TEST(BoxMeetsTriangle, AnswerIsThatOfClipping)
{
    int met = 0, compared = 0;
    for (unsigned seed = 0; seed < 20000; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Dice dice(seed);
        const Box box = dice.box(4);
        const Trianglef triangle = dice.triangle();
        const bool expected = clipMeets(triangle, box, 0);
        if (clipMeets(triangle, box, 1e-3) != clipMeets(triangle, box, -1e-3))
            continue; // too close to call in single precision

        ASSERT_EQ(box.intersect(triangle), expected);
        met += expected;
        ++compared;
    }
    EXPECT_GT(met, 2000);
    EXPECT_GT(compared, 19000);
}

TEST(BoxMeetsTriangle, MovingBothAlikeChangesNothing)
{
    for (unsigned seed = 0; seed < 2000; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Dice dice(seed);
        const Box box = dice.box(4);
        const Trianglef triangle = dice.triangle();
        if (clipMeets(triangle, box, 1e-2) != clipMeets(triangle, box, -1e-2))
            continue;
        const Vec3f by(64, -32, 16);
        const Posf min = box.min + by, max = box.max + by;

        EXPECT_EQ(Box(min.x, min.y, min.z, max.x, max.y, max.z)
                      .intersect(Trianglef(triangle.a + by, triangle.b + by, triangle.c + by)),
                  box.intersect(triangle));
    }
}

} // namespace
} // namespace vrk::selection
