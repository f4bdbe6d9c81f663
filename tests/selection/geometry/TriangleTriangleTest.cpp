#include "Geometry.h"
#include "MathSteps.h"
#include "support/ThrowsExactly.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>

namespace vrk::selection {
namespace {

using rob::Posd;
using rob::Posf;
using rob::Trianglef;
using rob::Vec3d;

const Trianglef flat({0, 0, 0}, {10, 0, 0}, {0, 10, 0});

/// Both orders give one answer.
bool meet(const Trianglef& a, const Trianglef& b)
{
    const bool answer = Math::Intersect(a, b);
    EXPECT_EQ(Math::Intersect(b, a), answer);
    return answer;
}

Posf commonPoint(const Trianglef& a, const Trianglef& b)
{
    return Math::GetIntersectionPoint(a.a, a.b, a.c, b.a, b.b, b.c);
}

double volume(const Posd& a, const Posd& b, const Posd& c, const Posd& d)
{
    return (b - a).cross(c - a).dot(d - a);
}

/// Whether a side of either triangle goes through the other, in double. Clears `clear` where it is close.
bool meetInDouble(const Trianglef& s, const Trianglef& t, bool& clear)
{
    const std::array<std::array<Posd, 3>, 2> both = {
        {{Posd(s.a), Posd(s.b), Posd(s.c)}, {Posd(t.a), Posd(t.b), Posd(t.c)}}};
    clear = true;
    bool found = false;
    for (int which = 0; which < 2; ++which) {
        const auto &p = both[which], &q = both[1 - which];
        for (int i = 0; i < 3; ++i) {
            const Posd &from = p[i], &to = p[(i + 1) % 3];
            const double v[] = {volume(q[0], q[1], q[2], from), volume(q[0], q[1], q[2], to),
                                volume(from, to, q[0], q[1]), volume(from, to, q[1], q[2]),
                                volume(from, to, q[2], q[0])};
            for (const double x : v)
                clear = clear && std::abs(x) > 2;
            const bool sidesDiffer = (v[0] > 0) != (v[1] > 0);
            found = found || (sidesDiffer && (v[2] > 0) == (v[3] > 0) && (v[3] > 0) == (v[4] > 0));
        }
    }
    return found;
}

TEST(TriangleMeetsTriangle, CrossingOnesMeet)
{
    EXPECT_TRUE(meet(flat, {{2, 2, -5}, {2, 2, 5}, {3, 20, 0}}));
    EXPECT_FALSE(meet(flat, {{20, 2, -5}, {20, 2, 5}, {30, 20, 0}}));
}

TEST(TriangleMeetsTriangle, OneWhollyOnOneSideOfThePlaneIsMissed)
{
    EXPECT_FALSE(meet(flat, {{1, 1, 1}, {2, 1, 3}, {1, 2, 2}}));
    EXPECT_FALSE(meet(flat, {{1, 1, -1}, {2, 1, -3}, {1, 2, -2}}));
}

TEST(TriangleMeetsTriangle, TouchAtACornerOnlyMeets)
{
    EXPECT_TRUE(meet(flat, {{3, 3, 0}, {3, 4, 5}, {4, 3, 5}}));
    EXPECT_TRUE(meet(flat, {{3, 3, 0}, {3, 4, -5}, {4, 3, -5}}));
    EXPECT_TRUE(meet(flat, {{10, 0, 0}, {15, 0, 5}, {15, 5, -5}}));
    EXPECT_FALSE(meet(flat, {{10.1f, 0, 0}, {15, 0, 5}, {15, 5, -5}}));
}

TEST(TriangleMeetsTriangle, SectionsOfTheCommonLineThatTouchMeet)
{
    // Each is cut along x, the one from 0 to 2 and the other from 2 on.
    const Trianglef ground({0, -1, 0}, {0, 1, 0}, {2, 0, 0});
    EXPECT_TRUE(meet(ground, {{2, 0, 0}, {4, 0, 1}, {4, 0, -1}}));
    EXPECT_FALSE(meet(ground, {{2.5f, 0, 0}, {4, 0, 1}, {4, 0, -1}}));
}

TEST(TriangleMeetsTriangle, TouchAlongAnEdgeMeets)
{
    EXPECT_TRUE(meet(flat, {{0, 0, 0}, {10, 0, 0}, {5, 0, 5}}));
    EXPECT_TRUE(meet(flat, {{3, 0, 0}, {20, 0, 0}, {5, -5, 5}}));
}

TEST(TriangleMeetsTriangle, CoplanarOnesMeetWhereTheyOverlap)
{
    EXPECT_TRUE(meet(flat, {{1, 1, 0}, {20, 1, 0}, {1, 20, 0}}));
    EXPECT_TRUE(meet(flat, {{1, 1, 0}, {2, 1, 0}, {1, 2, 0}}));
    EXPECT_TRUE(meet(flat, {{-5, -5, 0}, {40, -5, 0}, {-5, 40, 0}}));
    EXPECT_FALSE(meet(flat, {{6, 6, 0}, {20, 6, 0}, {6, 20, 0}}));
}

TEST(TriangleMeetsTriangle, CoplanarOnesMeetAcrossAnySideWithTheirFirstCornersApart)
{
    // A wedge that reaches in across one side only, with its second corner.
    EXPECT_TRUE(meet(flat, {{3, -4, 0}, {4, 1, 0}, {5, -4, 0}}));
    EXPECT_TRUE(meet(flat, {{9, 9, 0}, {4, 4, 0}, {10, 8, 0}}));
    EXPECT_TRUE(meet(flat, {{-4, 3, 0}, {1, 4, 0}, {-4, 5, 0}}));
}

TEST(TriangleMeetsTriangle, CoplanarOnesMeetInEveryPlane)
{
    EXPECT_TRUE(meet({{3, 0, 0}, {3, 10, 0}, {3, 0, 10}}, {{3, 1, 1}, {3, 20, 1}, {3, 1, 20}}));
    EXPECT_FALSE(meet({{3, 0, 0}, {3, 10, 0}, {3, 0, 10}}, {{3, 6, 6}, {3, 20, 6}, {3, 6, 20}}));
    EXPECT_TRUE(meet({{0, 3, 0}, {10, 3, 0}, {0, 3, 10}}, {{1, 3, 1}, {20, 3, 1}, {1, 3, 20}}));
    EXPECT_FALSE(meet({{0, 3, 0}, {10, 3, 0}, {0, 3, 10}}, {{6, 3, 6}, {20, 3, 6}, {6, 3, 20}}));
}

TEST(TriangleMeetsTriangle, OnesThatCutEachOthersPlaneApartAreMissedAlongEveryAxis)
{
    // Powers of two, so that rounding cannot make up for a wrong axis.
    const Trianglef ground({0, 0, 0}, {8, 0, 0}, {0, 8, 0});
    EXPECT_FALSE(meet(ground, {{16, 2, -4}, {16, 2, 4}, {32, 2, 0}}));
    EXPECT_FALSE(meet(ground, {{2, 16, -4}, {2, 16, 4}, {2, 32, 0}}));
    EXPECT_FALSE(meet({{0, 0, 0}, {0, 8, 0}, {0, 0, 8}}, {{-4, 2, 16}, {4, 2, 16}, {0, 2, 32}}));
}

TEST(TriangleMeetsTriangle, CornersWithinTheToleranceOfThePlaneCountAsInIt)
{
    // Exactly, the second lies above the first where they overlap. All six corners are closer than 0.001 to the other
    // plane, which makes the two coplanar.
    EXPECT_TRUE(meet(flat, {{1, 1, 0.0005f}, {12, 9, -0.0003f}, {12, 10, -0.0003f}}));
    // Here only the corners of the small one are.
    const Trianglef large({0, 0, 0}, {1000, 0, 0}, {0, 1000, 0});
    EXPECT_TRUE(meet(large, {{1, 1, 0.0005f}, {2, -10, -0.0003f}, {3, -10, -0.0007f}}));
    EXPECT_FALSE(meet(large, {{1, 1, 0.05f}, {2, -10, -0.03f}, {3, -10, -0.07f}}));
}

TEST(TriangleMeetsTriangle, CornersBeyondTheToleranceOfThePlaneDoNot)
{
    // The second lies above a corner of the first, but where it goes through the plane it is past the first's end.
    const Trianglef small({0, 0, 0}, {1, 0, 0}, {0, 1, 0});
    EXPECT_FALSE(meet(small, {{0.05f, 0.1f, -0.0045f}, {1, 2, 0.005f}, {1, 2.1f, 0.005f}}));
    EXPECT_TRUE(meet(small, {{0.05f, 0.1f, -0.00045f}, {1, 2, 0.0005f}, {1, 2.1f, 0.0005f}}));
}

TEST(TriangleMeetsTriangle, ParallelOnesApartAreMissed)
{
    EXPECT_FALSE(meet(flat, {{0, 0, 1}, {10, 0, 1}, {0, 10, 1}}));
}

TEST(TriangleMeetsTriangle, TriangleOfNoAreaRaisesNothing)
{
    const Posf inside(2, 2, 0);

    EXPECT_NO_THROW(Math::Intersect(flat, Trianglef(inside, inside, inside)));
    EXPECT_NO_THROW(Math::Intersect(Trianglef(inside, inside, inside), flat));
    EXPECT_NO_THROW(Math::Intersect(Trianglef(), Trianglef()));
    EXPECT_FALSE(meet(flat, {{2, 2, 1}, {2, 2, 1}, {2, 2, 1}}));
}

TEST(TriangleMeetsTriangle, NanRaisesNothing)
{
    const Trianglef broken({nan, 1, 1}, {1, 2, 3}, {4, 5, -6});

    EXPECT_NO_THROW(Math::Intersect(flat, broken));
    EXPECT_NO_THROW(Math::Intersect(broken, flat));
}

TEST(TriangleMeetsTriangle, AnswerIsThatOfDoublePrecision)
{
    int met = 0, compared = 0;
    for (unsigned seed = 0; seed < 20000; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Dice dice(seed);
        const Trianglef a = dice.triangle(), b = dice.triangle();
        bool clear = false;
        const bool expected = meetInDouble(a, b, clear);
        if (!clear)
            continue;

        ASSERT_EQ(meet(a, b), expected);
        met += expected;
        ++compared;
    }
    EXPECT_GT(met, 2000);
    EXPECT_GT(compared, 15000);
}

struct IntervalCase {
    const char* name;
    std::array<float, 3> d;
    int alone; // the corner that both cut edges share
};
class TriangleInterval : public testing::TestWithParam<IntervalCase> {};
TEST_P(TriangleInterval, StartsAtTheCornerThatIsAloneOnItsSide)
{
    const IntervalCase& c = GetParam();
    const float p[3] = {1, 20, 300};
    const float d[3] = {c.d[0], c.d[1], c.d[2]};
    static constexpr int others[3][2] = {{1, 2}, {0, 2}, {0, 1}};
    const int k = c.alone, i = others[k][0], j = others[k][1];

    const MathSteps::Interval interval = MathSteps::computeTrianIntervals(p, d);

    EXPECT_EQ(interval.a, p[k]);
    EXPECT_EQ(interval.b, (p[i] - p[k]) * d[k]);
    EXPECT_EQ(interval.c, (p[j] - p[k]) * d[k]);
    EXPECT_EQ(interval.x0, d[k] - d[i]);
    EXPECT_EQ(interval.x1, d[k] - d[j]);
}
INSTANTIATE_TEST_SUITE_P(Table, TriangleInterval,
                         testing::Values(IntervalCase{"FirstTwoTogether", {1, 2, -3}, 2},
                                         IntervalCase{"FirstTwoTogetherBelow", {-1, -2, 0}, 2},
                                         IntervalCase{"FirstAndLastTogether", {1, -2, 3}, 1},
                                         IntervalCase{"LastTwoTogether", {-1, 2, 3}, 0},
                                         IntervalCase{"LastTwoTogetherFirstOnThePlane", {0, 2, 3}, 0},
                                         IntervalCase{"OnlyFirstOffThePlane", {5, 0, 0}, 0},
                                         IntervalCase{"FirstOffThePlaneOthersApart", {5, 0, -1}, 0},
                                         IntervalCase{"OnlyMiddleOffThePlane", {0, 2, 0}, 1},
                                         IntervalCase{"FirstOnThePlaneOthersApart", {0, 2, -3}, 1},
                                         IntervalCase{"OnlyLastOffThePlane", {0, 0, 3}, 2}),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(TriangleMeetsTriangle, IntervalOfATriangleInThePlaneIsRefused)
{
    EXPECT_THAT(
        [] {
            MathSteps::computeTrianIntervals({1, 2, 3}, {0, 0, 0});
        },
        test::throwsExactly<std::logic_error>("Two triangles are on the same plane"));
}

TEST(IntersectionPoint, CornerOfOneInTheOtherComesFirst)
{
    EXPECT_EQ(commonPoint(flat, {{3, 3, 0}, {3, 4, 5}, {4, 3, 5}}), Posf(3, 3, 0));
    EXPECT_EQ(commonPoint({{3, 3, 0.0005f}, {3, 4, 5}, {4, 3, 5}}, flat), Posf(3, 3, 0.0005f));
}

TEST(IntersectionPoint, CrossingOfAnEdgeIsReturned)
{
    const Trianglef upright({2, 2, -1}, {2, 2, 3}, {50, 50, 1});

    EXPECT_EQ(commonPoint(upright, flat), Posf(2, 2, 0));
    // Of several, the edges of the first triangle are looked at first.
    EXPECT_EQ(commonPoint(flat, upright), Posf(5, 5, 0));
}

TEST(IntersectionPoint, EdgesAreTriedInTheirOrder)
{
    const Posf top(2, 2, 4), low(1, 2, -4), other(2, 3, -4);

    EXPECT_EQ(commonPoint({top, low, other}, flat), Posf(1.5f, 2, 0));
    EXPECT_EQ(commonPoint({top, other, low}, flat), Posf(2, 2.5f, 0));
    EXPECT_EQ(commonPoint({low, other, top}, flat), Posf(1.5f, 2, 0));
}

TEST(IntersectionPoint, IsTheOriginWhereThereIsNone)
{
    EXPECT_EQ(commonPoint(flat, {{20, 2, -5}, {20, 2, 5}, {30, 20, 0}}), Posf(0, 0, 0));
}

TEST(IntersectionPoint, TriangleOfNoAreaIsRefused)
{
    const Posf p(1, 1, 1);

    EXPECT_THAT(
        [&] {
            commonPoint(flat, {p, p, p});
        },
        test::throwsExactly<std::overflow_error>("0-length vector cannot be normalized."));
    EXPECT_THAT(
        [&] {
            commonPoint({p, p, p}, flat);
        },
        test::throwsExactly<std::overflow_error>("0-length vector cannot be normalized."));
}

TEST(IntersectionPoint, LiesOnBothPlanesAndExistsWhereTheTrianglesMeet)
{
    int met = 0;
    for (unsigned seed = 0; seed < 20000; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Dice dice(seed);
        const Trianglef a = dice.triangle(), b = dice.triangle();
        bool clear = false;
        const bool expected = meetInDouble(a, b, clear);
        if (!clear)
            continue;

        const Posf point = commonPoint(a, b);

        if (!expected) {
            ASSERT_EQ(point, Posf(0, 0, 0));
            continue;
        }
        ++met;
        EXPECT_LT(Math::DistancePointPlane(point, a.a, a.b, a.c), 1e-3f);
        EXPECT_LT(Math::DistancePointPlane(point, b.a, b.b, b.c), 1e-3f);
    }
    EXPECT_GT(met, 2000);
}

} // namespace
} // namespace vrk::selection
