#include "scene/math/Trsf.h"

#include "Near.h"

#include <gp_Ax1.hxx>
#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace vrk::rob {
namespace {

TEST(Trsf, IdentityIsTheIdentityPose)
{
    EXPECT_EQ(GP_Trsf2Posef(gp_Trsf()), Posef());
}

TEST(Trsf, RotationIsTakenWithWFirstAndTheTranslationAsItIs)
{
    gp_Trsf trsf;
    trsf.SetRotation(gp_Ax1({0, 0, 0}, {0, 0, 1}), quarterTurn);
    trsf.SetTranslationPart({1.5, 2, 3});

    const Posef pose = GP_Trsf2Posef(trsf);

    EXPECT_EQ(pose.position, Posf(1.5f, 2, 3));
    EXPECT_NEAR(pose.orientation.w, std::sqrt(0.5), 1e-6);
    EXPECT_NEAR(pose.orientation.z, std::sqrt(0.5), 1e-6);
    EXPECT_TRUE(isNear(pose * Posf(1, 0, 0), Posf(1.5f, 3, 3)));
}

TEST(Trsf, PoseMovesPointsAsTheTransformationDoes)
{
    for (unsigned seed = 0; seed < 100; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        std::mt19937 random(seed);
        std::uniform_real_distribution<double> number(-10, 10);
        const auto direction = [&] { return gp_Dir(number(random), number(random), number(random) + 20); };
        gp_Trsf trsf;
        trsf.SetRotation(gp_Ax1({number(random), number(random), number(random)}, direction()), number(random));
        const gp_Pnt point(number(random), number(random), number(random));

        const Posef pose = GP_Trsf2Posef(trsf);
        const gp_Trsf back = toTrsf(Posed(pose));

        EXPECT_TRUE(isNear(pose * toPosf(point), toPosf(point.Transformed(trsf)), 1e-4));
        EXPECT_TRUE(isNear(toPosf(point.Transformed(back)), toPosf(point.Transformed(trsf)), 1e-4));
    }
}

} // namespace
} // namespace vrk::rob
