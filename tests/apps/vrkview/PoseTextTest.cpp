#include "docks/PoseText.h"

#include <gtest/gtest.h>

#include <numbers>
#include <random>

namespace vrkview::test {
namespace {

using vrk::rob::Rotationd;

constexpr double radians = std::numbers::pi / 180;

Rotationd fromAngles(double x, double y, double z)
{
    return {x * radians, y * radians, z * radians};
}

TEST(AnglesOf, AreThoseThatMadeTheRotation)
{
    const std::array<double, 3> angles = anglesOf(fromAngles(30, -40, 110));

    EXPECT_NEAR(angles[0], 30, 1e-9);
    EXPECT_NEAR(angles[1], -40, 1e-9);
    EXPECT_NEAR(angles[2], 110, 1e-9);
}

TEST(AnglesOf, MakeTheSameRotationAgain)
{
    for (unsigned seed = 0; seed < 200; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        std::mt19937 random(seed);
        std::uniform_real_distribution<double> any(-180, 180);
        const Rotationd rotation = fromAngles(any(random), any(random), any(random));
        const std::array<double, 3> angles = anglesOf(rotation);
        EXPECT_TRUE(fromAngles(angles[0], angles[1], angles[2]).isApprox(rotation));
    }
}

TEST(AnglesOf, WithAQuarterTurnAboutYZIsZero)
{
    for (const double y : {90.0, -90.0}) {
        const Rotationd rotation = fromAngles(20, y, 35);

        const std::array<double, 3> angles = anglesOf(rotation);

        EXPECT_NEAR(angles[1], y, 1e-4);
        EXPECT_EQ(angles[2], 0);
        EXPECT_TRUE(fromAngles(angles[0], angles[1], angles[2]).isApprox(rotation));
    }
}

} // namespace
} // namespace vrkview::test
