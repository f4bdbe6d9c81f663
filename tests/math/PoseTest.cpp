#include "scene/math/Pose.h"
#include "Near.h"

#include <gtest/gtest.h>

#include <random>

namespace vrk::rob {
namespace {

Posed randomPose(std::mt19937& random)
{
    std::uniform_real_distribution<double> number(-1, 1);
    const Posd position(1000 * number(random), 1000 * number(random), 1000 * number(random));
    return {position, Rotationd(3 * number(random), normalized(Vec3d(number(random), number(random), number(random))))};
}

TEST(Pose, DefaultIsIdentity)
{
    EXPECT_EQ(Posed() * Posd(1, 2, 3), Posd(1, 2, 3));
    EXPECT_EQ(Posed(), Posed(Posd(0, 0, 0), Orientd(1, 0, 0, 0)));
}

TEST(Pose, SevenNumbersArePositionThenOrientationWithWFirst)
{
    const Posef pose(Posf(1, 2, 3), Rotationf(4, 5, 6, 7));
    const auto* numbers = reinterpret_cast<const float*>(&pose);

    for (int i = 0; i < 7; ++i)
        EXPECT_EQ(numbers[i], i + 1) << i;
    EXPECT_EQ(sizeof(Posef), 7 * sizeof(float));
}

TEST(Pose, TurnsThenMovesAPointAndOnlyTurnsADirection)
{
    const Posed pose(Posd(10, 20, 30), Rotationd(quarterTurn, Dird(0, 0, 1)));

    EXPECT_TRUE(isNear(pose * Posd(1, 0, 0), Posd(10, 21, 30)));
    EXPECT_TRUE(isNear(pose * Dird(1, 0, 0), Dird(0, 1, 0)));
}

TEST(Pose, ProductMapsThroughTheRightFactorFirst)
{
    const Posed turn(Posd(0, 0, 0), Rotationd(quarterTurn, Dird(0, 0, 1)));
    const Posed move(Posd(5, 0, 0));

    EXPECT_TRUE(isNear((turn * move).position, Posd(0, 5, 0)));
    EXPECT_TRUE(isNear((move * turn).position, Posd(5, 0, 0)));
}

TEST(Pose, ProductAndInverseAgreeWithMappingPoints)
{
    for (unsigned seed = 0; seed < 200; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        std::mt19937 random(seed);
        const Posed a = randomPose(random);
        const Posed b = randomPose(random);
        const Posd p(3, -2, 1);

        EXPECT_TRUE(isNear((a * b) * p, a * (b * p), 1e-9));
        EXPECT_TRUE(isNear(a.inverse() * (a * p), p, 1e-9));
        EXPECT_TRUE(isNear((a * a.inverse()).position, Posd(), 1e-9));
        EXPECT_TRUE((a * a.inverse()).rotation().isApprox(Rotationd()));
    }
}

TEST(Pose, NarrowingConvertsEachNumberByItself)
{
    const Posed wide(Posd(0.1, 0.2, 0.3), Orientd(0.4, 0.5, 0.6, 0.7));

    const Posef narrow(wide);

    EXPECT_EQ(narrow, Posef(Posf(0.1f, 0.2f, 0.3f), Orientf(0.4f, 0.5f, 0.6f, 0.7f)));
}

} // namespace
} // namespace vrk::rob
