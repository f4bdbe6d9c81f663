#include "task/PathSegments.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>

/// What is drawn from one target to the next.
namespace vrk::visual {
namespace {

using rob::Posf;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr float none = std::numeric_limits<float>::quiet_NaN();
constexpr float endless = std::numeric_limits<float>::infinity();

std::vector<Posf> stripOf(const PathSegment& segment, bool isFirst = true)
{
    std::vector<Posf> points;
    appendStrip(segment, isFirst, points);
    return points;
}

std::vector<Posf> dashesOf(const PathSegment& segment)
{
    std::vector<Posf> points;
    appendDashes(segment, points);
    return points;
}

testing::Matcher<Posf> Near(const Posf& expected, float room = 1e-4f)
{
    return testing::Truly([=](const Posf& p) { return (p - expected).length() <= room; });
}

const PathSegment halfCircle{{0, 0, 0}, {20, 0, 0}, Posf{10, 10, 0}};

TEST(PathSegments, StraightOneAddsItsEndsOrItsEndAlone)
{
    EXPECT_THAT(stripOf({{1, 2, 3}, {4, 5, 6}}), ElementsAre(Posf(1, 2, 3), Posf(4, 5, 6)));
    EXPECT_THAT(stripOf({{1, 2, 3}, {4, 5, 6}}, false), ElementsAre(Posf(4, 5, 6)));
}

TEST(PathSegments, OneShorterThanAThousandthAddsNothing)
{
    EXPECT_THAT(stripOf({{1, 2, 3}, {1.0009f, 2, 3}}), IsEmpty());
    EXPECT_THAT(dashesOf({{1, 2, 3}, {1.0009f, 2, 3}}), IsEmpty());
    EXPECT_THAT(stripOf({{0, 0, 0}, {0.0011f, 0, 0}}), SizeIs(2));
    EXPECT_THAT(dashesOf({{0, 0, 0}, {0.0011f, 0, 0}}), SizeIs(10));
}

TEST(PathSegments, FiveDashesOfFifteenHundredthsStandAtEachFifth)
{
    EXPECT_THAT(dashesOf({{100, 0, 0}, {200, 0, 0}}),
                ElementsAre(Near({100, 0, 0}), Near({115, 0, 0}), Near({120, 0, 0}), Near({135, 0, 0}),
                            Near({140, 0, 0}), Near({155, 0, 0}), Near({160, 0, 0}), Near({175, 0, 0}),
                            Near({180, 0, 0}), Near({195, 0, 0})));
}

TEST(PathSegments, ArcRunsOverItsViaPointInTwentySteps)
{
    const std::vector<Posf> points = stripOf(halfCircle);

    ASSERT_THAT(points, SizeIs(21));
    EXPECT_THAT(points.front(), Near({0, 0, 0}));
    EXPECT_THAT(points[10], Near({10, 10, 0}));
    EXPECT_THAT(points.back(), Near({20, 0, 0}));
    for (std::size_t i = 0; i < points.size(); ++i) {
        const float angle = std::numbers::pi_v<float> * static_cast<float>(20 - i) / 20;
        EXPECT_THAT(points[i], Near({10 + 10 * std::cos(angle), 10 * std::sin(angle), 0})) << i;
    }
    const std::vector<Posf> following = stripOf(halfCircle, false);
    EXPECT_THAT(following, SizeIs(20));
    EXPECT_THAT(following, testing::Contains(points[1]));
    EXPECT_EQ(following.front(), points[1]) << "its start is there already";
}

TEST(PathSegments, ViaPointOnTheChordOrAtAnEndMakesAStraightOne)
{
    for (const Posf& via : {Posf(10, 0, 0), Posf(0, 0, 0), Posf(20, 0, 0), Posf(30, 0, 0), Posf(-5, 0, 0)})
        EXPECT_THAT(stripOf({{0, 0, 0}, {20, 0, 0}, via}), ElementsAre(Posf(0, 0, 0), Posf(20, 0, 0))) << via.x;
}

TEST(PathSegments, LineOfThreePointsIsTakenFromTheSineOfItsAngles)
{
    // At the start, or at the via point, the squared sine of the angle is below or above 0.0001.
    EXPECT_FALSE(arcOf({{0, 0, 0}, {2000, 0, 0}, Posf{1000, 9.9f, 0}}));
    EXPECT_TRUE(arcOf({{0, 0, 0}, {2000, 0, 0}, Posf{1000, 10.1f, 0}}));
    // Far off the chord seen from the start, and at the via point all but the way back
    EXPECT_FALSE(arcOf({{0, 0, 0}, {10, 0.5f, 0}, Posf{2000, 1, 0}}));
    EXPECT_FALSE(arcOf({{0, 0, 0}, {0, 0, 0}, Posf{10, 10, 0}})) << "a full turn has no plane";
}

TEST(PathSegments, ViaPointCountsForNothingBetweenDashes)
{
    EXPECT_EQ(dashesOf(halfCircle), dashesOf({halfCircle.from, halfCircle.to}));
}

TEST(PathSegments, EndThatIsNoPlaceAddsNothingAndViaPointThatIsNoneIsLeftOut)
{
    for (const float bad : {none, endless, -endless}) {
        EXPECT_THAT(stripOf({{0, bad, 0}, {1, 2, 3}}), IsEmpty());
        EXPECT_THAT(dashesOf({{0, 0, 0}, {1, 2, bad}}), IsEmpty());
        EXPECT_FALSE(arrowOf({{0, bad, 0}, {100, 2, 3}}));
        EXPECT_FALSE(arrowOf({{0, 0, 0}, {bad, 2, 3}, Posf{50, 50, 0}}));
        EXPECT_THAT(stripOf({{0, 0, 0}, {20, 0, 0}, Posf{bad, 10, 0}}), ElementsAre(Posf(0, 0, 0), Posf(20, 0, 0)));
    }
}

struct ScaleCase {
    float length;
    double scale; // 0 for no arrow
};

TEST(PathSegments, ArrowIsOneTenthOfItsSegmentAndAtMostWhole)
{
    for (const ScaleCase& c : {ScaleCase{0.999f, 0}, {1.0f, 0.005}, {100, 0.5}, {199, 0.995}, {200, 1}, {5000, 1}}) {
        const std::optional<PathArrow> arrow = arrowOf({{10, 0, 0}, {10, c.length, 0}});
        ASSERT_EQ(arrow.has_value(), c.scale != 0) << c.length;
        if (!arrow)
            continue;
        EXPECT_NEAR(arrow->scale, c.scale, 1e-6) << c.length;
        EXPECT_THAT(arrow->position, Near({10, c.length / 2, 0}));
        EXPECT_THAT(arrow->direction, rob::Dirf(0, 1, 0));
    }
}

TEST(PathSegments, ArrowOfAnArcStandsAtItsMiddleAlongItAndIsSizedByItsLength)
{
    const std::optional<PathArrow> arrow = arrowOf(halfCircle);

    ASSERT_TRUE(arrow);
    EXPECT_THAT(arrow->position, Near({10, 10, 0}));
    EXPECT_THAT(Posf(arrow->direction.x, arrow->direction.y, arrow->direction.z), Near({1, 0, 0}));
    EXPECT_NEAR(arrow->scale, 10 * std::numbers::pi / 200, 1e-6);
}

TEST(PathSegments, ArrowOfAViaPointOnTheChordIsThatOfTheChord)
{
    const std::optional<PathArrow> arrow = arrowOf({{0, 0, 0}, {100, 0, 0}, Posf{30, 0, 0}});

    ASSERT_TRUE(arrow);
    EXPECT_THAT(arrow->position, Near({50, 0, 0}));
    EXPECT_NEAR(arrow->scale, 0.5, 1e-6);
}

TEST(PathSegments, ArcShorterThanOneHasNoArrow)
{
    EXPECT_FALSE(arrowOf({{0, 0, 0}, {0.6f, 0, 0}, Posf{0.3f, 0.3f, 0}})) << "0.94 along";
    EXPECT_TRUE(arrowOf({{0, 0, 0}, {0.64f, 0, 0}, Posf{0.32f, 0.32f, 0}})) << "1.005 along";
}

} // namespace
} // namespace vrk::visual
