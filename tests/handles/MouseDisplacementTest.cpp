#include "handles/MouseDisplacement.h"

#include "MouseDisplacementOracle.h"

#include "support/ThrowsExactly.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <numbers>

namespace vrk::visual {
namespace {

using test::draggedAlong;
using test::throwsExactly;

constexpr double tolerance = 1e-9;

testing::AssertionResult isNearVec(const rob::Vec3d& actual, const rob::Vec3d& expected, double within = tolerance)
{
    if ((actual - expected).length() <= within)
        return testing::AssertionSuccess();
    return testing::AssertionFailure() << actual.x << ", " << actual.y << ", " << actual.z << " is not " << expected.x
                                       << ", " << expected.y << ", " << expected.z;
}

/// From `eye` towards a place.
Ray rayTo(const rob::Posf& eye, const rob::Posf& place)
{
    return {eye, rob::normalized(place - eye)};
}

TEST(DisplacementAlong, SameMouseTwiceMovesNothing)
{
    const Ray ray = rayTo({100, 200, 900}, {3, 4, 0});

    for (unsigned axis = 0; axis < 3; ++axis)
        EXPECT_EQ(displacementAlong(ray, ray, {}, rob::Vec3d(test::axisNumber(axis))), rob::Vec3d());
}

TEST(DisplacementAlong, AlongXSeenDownTheLocalZLiesInTheirPlaneOfXAndY)
{
    // Across the view by 30 along x and 50 along y: in the plane with the normal z the 50 are what is left out.
    const rob::Posf eye(0, 0, 1000);

    const rob::Vec3d moved = displacementAlong(rayTo(eye, {0, 0, 0}), rayTo(eye, {30, 50, 0}), {}, {1, 0, 0});

    EXPECT_TRUE(isNearVec(moved, {30, 0, 0}, 1e-4));
}

TEST(DisplacementAlong, AlongXSeenDownTheLocalYLiesInTheirPlaneOfXAndZ)
{
    const rob::Posf eye(0, -1000, 0);

    const rob::Vec3d moved = displacementAlong(rayTo(eye, {0, 0, 0}), rayTo(eye, {30, 0, 50}), {}, {1, 0, 0});

    EXPECT_TRUE(isNearVec(moved, {30, 0, 0}, 1e-4));
}

TEST(DisplacementAlong, OfPlanesThatAreSeenAlikeThePreferredOneIsTaken)
{
    // Both rays come in at the same angle to z and to y, so that the planes would answer differently.
    const Ray from({0, -1000, 1000}, rob::normalized(rob::Dirf(0, 1, -1)));
    const Ray to({20, -1000, 1040}, rob::normalized(rob::Dirf(0.1f, 1, -1)));

    const rob::Vec3d moved = displacementAlong(from, to, {}, {1, 0, 0});

    const double share = 1040.0; // how many times (0.1, 1, -1) leads to z = 0; to y = 0 it would be 1000
    EXPECT_TRUE(isNearVec(moved, {20 + 0.1 * share, 0, 0}, 1e-3));
}

TEST(DisplacementAlong, IsThatOfTheFormulaWhateverThePose)
{
    for (unsigned seed = 0; seed < 2000; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        std::mt19937 random(seed);
        std::uniform_real_distribution<float> place(-1000, 1000);
        const auto point = [&] { return rob::Posf(place(random), place(random), place(random)); };
        const rob::Posef pose(point(), test::randomRotation(random));
        const rob::Posf eye = pose.position + rob::Vec3f(rob::normalized(rob::Vec3f(point()))) * 3000.0f;
        const Ray from = rayTo(eye, point());
        const Ray to = rayTo(eye, point());
        for (unsigned axis = 0; axis < 3; ++axis) {
            rob::Vec3d moved;
            try {
                moved = displacementAlong(from, to, rob::Posed(pose), rob::Vec3d(test::axisNumber(axis)));
            } catch (const std::logic_error&) {
                continue; // parallel: has its own test
            }
            const rob::Vec3d expected = draggedAlong(axis, from, to, rob::Posed(pose));
            EXPECT_TRUE(isNearVec(moved, expected, 1e-4 * expected.length()));
        }
    }
}

TEST(DisplacementAlong, WithXAndZItIsThatOfZ)
{
    const Ray from = rayTo({500, 800, 700}, {0, 0, 0});
    const Ray to = rayTo({500, 800, 700}, {30, -40, 90});

    EXPECT_EQ(displacementAlong(from, to, {}, {1, 0, 1}), displacementAlong(from, to, {}, {0, 0, 1}));
}

TEST(DisplacementAlong, WithXAndYWhatIsLeftOutIsLongerThanAUnit)
{
    // The normal is z and what is rejected is (1, 1, 0), unscaled: of (30, 50, 0) that leaves less than nothing.
    const rob::Posf eye(0, 0, 1000);

    const rob::Vec3d moved = displacementAlong(rayTo(eye, {0, 0, 0}), rayTo(eye, {30, 50, 0}), {}, {1, 1, 0});

    EXPECT_TRUE(isNearVec(moved, {30 - 80, 50 - 80, 0}, 1e-3));
}

TEST(DisplacementAlong, RayAlongThePlaneFails)
{
    // The two planes through x have the normals y and z; along x, a ray lies in both.
    const Ray across({0, 0, 1000}, {0, 0, -1});
    const Ray along({-1000, 0, 0}, {1, 0, 0});

    EXPECT_THAT(
        [&] {
            displacementAlong(across, along, {}, {1, 0, 0});
        },
        throwsExactly<std::logic_error>("The line is parallel with the plane"));
    EXPECT_THAT(
        [&] {
            displacementAlong(along, across, {}, {1, 0, 0});
        },
        throwsExactly<std::logic_error>("The line is parallel with the plane"));
}

TEST(DisplacementAlong, RayJustOffThePlaneIsAnswered)
{
    const Ray from({-1000, 0, 2}, rob::normalized(rob::Dirf(1, 0, -0.002f)));
    const Ray to({-1000, 0, 2}, rob::normalized(rob::Dirf(1, 0, -0.0025f)));

    const rob::Vec3d moved = displacementAlong(from, to, {}, {1, 0, 0});

    EXPECT_NEAR(moved.x, -200, 0.1);
}

TEST(DisplacementAlong, AxesWithoutAPositiveComponentFail)
{
    const Ray ray({0, 0, 1000}, {0, 0, -1});

    for (const rob::Vec3d axes : {rob::Vec3d(), rob::Vec3d(-1, 0, 0), rob::Vec3d(0, -1, -1)})
        EXPECT_THAT([&] { displacementAlong(ray, ray, {}, axes); },
                    throwsExactly<std::overflow_error>("0-length vector cannot be normalized."));
}

} // namespace
} // namespace vrk::visual
