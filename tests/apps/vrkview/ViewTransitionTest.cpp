#include "canvas/ViewTransition.h"

#include <gtest/gtest.h>

#include <numbers>

namespace vrkview::test {
namespace {

using vrk::rob::Dirf;
using vrk::rob::Posef;
using vrk::rob::Posf;
using vrk::rob::Rotationf;

constexpr float quarter = std::numbers::pi_v<float> / 2;

/// A camera that looks at `target` from this far off.
Posef lookingAt(const Posf& target, const Rotationf& rotation, float distance)
{
    return {target + rotation * Posf(0, 0, distance), rotation};
}

TEST(ViewTransition, BeginsAtTheOnePoseAndEndsExactlyAtTheOther)
{
    const Posef from = lookingAt({1, 2, 3}, {0.3f, Dirf(1, 0, 0)}, 40);
    const Posef to = lookingAt({-7, 8, 9}, {2.0f, Dirf(0, 0, 1)}, 900);
    const ViewTransition way(from, 40, to, 900);

    EXPECT_LT((way.at(0).position - from.position).length(), 1e-4f);
    EXPECT_TRUE(way.at(0).rotation().isApprox(from.rotation()));
    EXPECT_EQ(way.at(1), to);
    EXPECT_EQ(way.at(7), to);
}

TEST(ViewTransition, TurnAboutWhatIsLookedAtKeepsItsDistance)
{
    const Posf target(10, 20, 30);
    const ViewTransition way(lookingAt(target, {}, 500), 500, lookingAt(target, {quarter, Dirf(0, 1, 0)}, 500), 500);

    for (const float time : {0.1f, 0.5f, 0.8f}) {
        const Posef pose = way.at(time);
        EXPECT_NEAR((pose.position - target).length(), 500, 0.01f);
        EXPECT_LT((pose * Posf(0, 0, -500) - target).length(), 0.01f); // still in the middle of the view
    }
}

TEST(ViewTransition, HalfWayTheDistanceIsTheGeometricMean)
{
    const ViewTransition way(lookingAt({}, {}, 10), 10, lookingAt({}, {}, 1000), 1000);

    EXPECT_NEAR(way.at(0.5f).position.z, 100, 0.01f);
}

TEST(Eased, RisesFromZeroToOneAndIsSlowAtBothEnds)
{
    EXPECT_EQ(eased(-1), 0);
    EXPECT_EQ(eased(0), 0);
    EXPECT_EQ(eased(0.5f), 0.5f);
    EXPECT_EQ(eased(1), 1);
    EXPECT_EQ(eased(2), 1);
    EXPECT_LT(eased(0.1f), 0.05f);
    EXPECT_GT(eased(0.9f), 0.95f);
    for (float time = 0; time < 1; time += 0.05f)
        EXPECT_LE(eased(time), eased(time + 0.05f));
}

TEST(Slerp, TurnsByEqualAnglesAboutOneAxis)
{
    const Rotationf a(0.2f, Dirf(0, 0, 1)), b(1.2f, Dirf(0, 0, 1));

    EXPECT_TRUE(slerp(a, b, 0.25f).isApprox(Rotationf(0.45f, Dirf(0, 0, 1))));
    EXPECT_TRUE(slerp(a, b, 0.75f).isApprox(Rotationf(0.95f, Dirf(0, 0, 1))));
}

TEST(Slerp, GoesTheShortWay)
{
    const Rotationf a(-0.1f, Dirf(0, 0, 1)), b(0.1f, Dirf(0, 0, 1));
    const Rotationf opposite(-b.w, -b.x, -b.y, -b.z); // turns as b does

    EXPECT_TRUE(slerp(a, opposite, 0.5f).isApprox(Rotationf()));
}

TEST(Slerp, OfNearlyEqualRotationsIsOneOfThem)
{
    const Rotationf a(0.5f, Dirf(1, 0, 0)), b(0.5f + 1e-7f, Dirf(1, 0, 0));

    EXPECT_TRUE(slerp(a, b, 0.5f).isApprox(a));
}

} // namespace
} // namespace vrkview::test
