#include "scene/math/Rotation.h"
#include "Near.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

namespace vrk::rob {
namespace {

Dird randomDirection(std::mt19937& random)
{
    std::normal_distribution<double> normal;
    return normalized(Vec3d(normal(random), normal(random), normal(random)));
}

Rotationd randomRotation(std::mt19937& random)
{
    return Rotationd(std::uniform_real_distribution<double>(-halfTurn, halfTurn)(random), randomDirection(random));
}

TEST(Rotation, DefaultIsIdentity)
{
    EXPECT_EQ(Rotationd(), Rotationd(1, 0, 0, 0));
    EXPECT_EQ(Rotationd() * Posd(1, 2, 3), Posd(1, 2, 3));
    EXPECT_EQ(Orientd(), Orientd(1, 0, 0, 0));
}

TEST(Rotation, IsMadeWithWFirstAndStoredWithWLast)
{
    const Rotationf rotation(0.1f, 0.2f, 0.3f, 0.4f);
    const auto* numbers = reinterpret_cast<const float*>(&rotation);

    EXPECT_EQ(numbers[0], 0.2f);
    EXPECT_EQ(numbers[1], 0.3f);
    EXPECT_EQ(numbers[2], 0.4f);
    EXPECT_EQ(numbers[3], 0.1f);
}

TEST(Rotation, OrientationIsStoredWithWFirst)
{
    const Orientf orientation = Rotationf(0.1f, 0.2f, 0.3f, 0.4f).orient();
    const auto* numbers = reinterpret_cast<const float*>(&orientation);

    EXPECT_EQ(numbers[0], 0.1f);
    EXPECT_EQ(numbers[1], 0.2f);
    EXPECT_EQ(numbers[3], 0.4f);
    EXPECT_EQ(Rotationf(orientation), Rotationf(0.1f, 0.2f, 0.3f, 0.4f));
}

TEST(Rotation, PositiveAngleTurnsCounterClockwiseAboutTheAxis)
{
    EXPECT_TRUE(isNear(Rotationd(quarterTurn, Dird(0, 0, 1)) * Posd(1, 0, 0), Posd(0, 1, 0)));
    EXPECT_TRUE(isNear(Rotationd(quarterTurn, Vec3d(1, 0, 0)) * Vec3d(0, 1, 0), Vec3d(0, 0, 1)));
    EXPECT_TRUE(isNear(Rotationf(float(quarterTurn), Dirf(0, 1, 0)).rotateDir(Dirf(0, 0, 1)), Dirf(1, 0, 0)));
}

TEST(Rotation, ThreeAnglesTurnAboutZThenYThenX)
{
    const double a = quarterTurn;

    EXPECT_TRUE(isNear(Rotationd(a, 0.0, a) * Posd(1, 0, 0), Posd(0, 0, 1)));
    EXPECT_TRUE(isNear(Rotationd(0.0, a, a) * Posd(0, 1, 0), Posd(0, 0, 1)));
    EXPECT_TRUE(isNear(Rotationd(a, a, 0.0) * Posd(0, 0, 1), Posd(1, 0, 0)));
}

TEST(Rotation, ThreeAnglesAreTheProductOfTheTurnsAboutXYZ)
{
    const Rotationd product =
        Rotationd(0.3, Dird(1, 0, 0)) * Rotationd(-1.1, Dird(0, 1, 0)) * Rotationd(2.0, Dird(0, 0, 1));

    EXPECT_TRUE(Rotationd(0.3, -1.1, 2.0).isApprox(product));
}

TEST(Rotation, ProductTurnsByTheRightFactorFirst)
{
    const Rotationd aboutX(quarterTurn, Dird(1, 0, 0));
    const Rotationd aboutZ(quarterTurn, Dird(0, 0, 1));

    EXPECT_TRUE(isNear((aboutX * aboutZ) * Posd(1, 0, 0), aboutX * (aboutZ * Posd(1, 0, 0))));
    EXPECT_TRUE(isNear((aboutX * aboutZ) * Posd(1, 0, 0), Posd(0, 0, 1)));
}

TEST(Rotation, InverseUndoesIt)
{
    for (unsigned seed = 0; seed < 100; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        std::mt19937 random(seed);
        const Rotationd rotation = randomRotation(random);

        EXPECT_TRUE((rotation * rotation.inverse()).isApprox(Rotationd()));
        EXPECT_TRUE(isNear(rotation.inverse() * (rotation * Posd(1, 2, 3)), Posd(1, 2, 3), 1e-12));
    }
}

TEST(From2Dirs, TakesTheFirstDirectionToTheSecond)
{
    for (unsigned seed = 0; seed < 200; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        std::mt19937 random(seed);
        const Dird from = randomDirection(random);
        const Dird to = randomDirection(random);

        const Rotationd rotation = Rotationd::From2Dirs(from, to);

        EXPECT_TRUE(isNear(rotation * from, to, 1e-9));
        // The shortest way turns about an axis at right angles to both.
        EXPECT_NEAR(Vec3d(rotation.x, rotation.y, rotation.z).dot(from), 0, 1e-9);
    }
}

/// Checks `From2Dirs` of two directions whose length is 1 but for rounding.
template <typename T>
void expectShortestTurn(const DirTemplate<T>& from, const DirTemplate<T>& to, double tolerance)
{
    const auto rotation = RotationTemplate<T>::From2Dirs(from, to);

    const Rotationd turn(rotation.w, rotation.x, rotation.y, rotation.z);
    const Dird a = normalized(Dird(from));
    const Dird b = normalized(Dird(to));
    EXPECT_NEAR(Vec3d(turn.x, turn.y, turn.z).squaredLength() + turn.w * turn.w, 1, tolerance);
    EXPECT_TRUE(isNear(turn * a, b, tolerance));
    // The shortest way turns about an axis at right angles to both, and no farther than half a circle.
    EXPECT_NEAR(Vec3d(turn.x, turn.y, turn.z).dot(a), 0, tolerance);
    EXPECT_NEAR(Vec3d(turn.x, turn.y, turn.z).dot(b), 0, tolerance);
    EXPECT_GE(turn.w, 0);
}

/// What the rounding of a quaternion and of a turn by it comes to.
template <typename T>
constexpr double roundingOf = 8 * std::numeric_limits<T>::epsilon();

template <typename T>
class From2DirsOfAny : public testing::Test {
};
using Numbers = testing::Types<float, double>;
TYPED_TEST_SUITE(From2DirsOfAny, Numbers);

TYPED_TEST(From2DirsOfAny, DirectionsTurnsTheOneToTheOther)
{
    for (unsigned seed = 0; seed < 20000; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        std::mt19937 random(seed);

        expectShortestTurn(DirTemplate<TypeParam>(randomDirection(random)),
                           DirTemplate<TypeParam>(randomDirection(random)), roundingOf<TypeParam>);
        if (this->HasFailure())
            break;
    }
}

TYPED_TEST(From2DirsOfAny, OppositeDirectionsTurnsHalfACircle)
{
    for (unsigned seed = 0; seed < 20000; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        std::mt19937 random(seed);
        const DirTemplate<TypeParam> from(randomDirection(random));

        expectShortestTurn(from, -from, roundingOf<TypeParam>);
        EXPECT_NEAR((RotationTemplate<TypeParam>::From2Dirs(from, -from).w), 0, roundingOf<TypeParam>);
        if (this->HasFailure())
            break;
    }
}

TYPED_TEST(From2DirsOfAny, AlmostEqualAndAlmostOppositeDirectionsTurnsTheOneToTheOther)
{
    for (unsigned seed = 0; seed < 40000; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        std::mt19937 random(seed);
        const Dird from = randomDirection(random);
        const double off = std::pow(10, std::uniform_real_distribution<double>(-18, -0.5)(random));
        const Dird near = normalized(Vec3d(from) + Vec3d(randomDirection(random)) * off);

        expectShortestTurn(DirTemplate<TypeParam>(from), DirTemplate<TypeParam>(near), roundingOf<TypeParam>);
        expectShortestTurn(DirTemplate<TypeParam>(from), DirTemplate<TypeParam>(-near), roundingOf<TypeParam>);
        if (this->HasFailure())
            break;
    }
}

TYPED_TEST(From2DirsOfAny, NeighboursOfTheOppositeAreOppositeButForRounding)
{
    for (const DirTemplate<TypeParam>& from :
         {DirTemplate<TypeParam>(1, 0, 0), DirTemplate<TypeParam>(0, 1, 0), DirTemplate<TypeParam>(0, 0, -1)})
        for (const TypeParam off : {std::numeric_limits<TypeParam>::denorm_min(), std::numeric_limits<TypeParam>::min(),
                                    std::numeric_limits<TypeParam>::epsilon()})
            expectShortestTurn(from, {-from.x + off, -from.y + off, -from.z - off}, roundingOf<TypeParam>);
}

TEST(From2Dirs, EqualDirectionsGiveIdentity)
{
    EXPECT_TRUE(Rotationf::From2Dirs(Dirf(0, 0, 1), Dirf(0, 0, 1)).isApprox(Rotationf()));
}

struct OppositeCase {
    const char* name;
    Dirf from;
};
class From2DirsOpposite : public testing::TestWithParam<OppositeCase> {};

TEST_P(From2DirsOpposite, TurnsHalfACircle)
{
    const Dirf from = GetParam().from;

    const Rotationf rotation = Rotationf::From2Dirs(from, -from);

    EXPECT_TRUE(isNear(rotation * from, -from));
    EXPECT_NEAR(rotation.w, 0, 1e-6);
    EXPECT_NEAR(rotation.x * rotation.x + rotation.y * rotation.y + rotation.z * rotation.z, 1, 1e-6);
}

INSTANTIATE_TEST_SUITE_P(Axes, From2DirsOpposite,
                         testing::Values(OppositeCase{"X", {1, 0, 0}}, OppositeCase{"Y", {0, 1, 0}},
                                         OppositeCase{"Z", {0, 0, 1}}, OppositeCase{"MinusX", {-1, 0, 0}},
                                         OppositeCase{"Oblique", {0.6f, 0.8f, 0}}),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(FromAxes, GivesTheRotationWhoseLocalAxesTheyAre)
{
    for (unsigned seed = 0; seed < 500; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        std::mt19937 random(seed);
        const Rotationd wanted = randomRotation(random);
        const Dird ax = wanted * Dird(1, 0, 0);
        const Dird ay = wanted * Dird(0, 1, 0);
        const Dird az = wanted * Dird(0, 0, 1);

        EXPECT_TRUE(Rotationd::FromAxes(ax, ay, az).isApprox(wanted));
    }
}

TEST(FromAxes, HalfTurnsAboutEachAxisKeepUnitLength)
{
    const Rotationd aboutX = Rotationd::FromAxes({1, 0, 0}, {0, -1, 0}, {0, 0, -1});
    const Rotationd aboutY = Rotationd::FromAxes({-1, 0, 0}, {0, 1, 0}, {0, 0, -1});
    const Rotationd aboutZ = Rotationd::FromAxes({-1, 0, 0}, {0, -1, 0}, {0, 0, 1});

    EXPECT_TRUE(aboutX.isApprox(Rotationd(0, 1, 0, 0)));
    EXPECT_TRUE(aboutY.isApprox(Rotationd(0, 0, 1, 0)));
    EXPECT_TRUE(aboutZ.isApprox(Rotationd(0, 0, 0, 1)));
}

TEST(IsApprox, SignOfTheQuaternionDoesNotMatter)
{
    EXPECT_TRUE(Rotationd(-1, 0, 0, 0).isApprox(Rotationd()));
    EXPECT_TRUE(Rotationd(0, 1, 0, 0).isApprox(Rotationd(0, -1, 0, 0)));
}

TEST(IsApprox, ToleranceIsAMillionthPerComponent)
{
    EXPECT_TRUE(Rotationd(1, 0.9e-6, 0, 0).isApprox(Rotationd()));
    EXPECT_FALSE(Rotationd(1, 1.1e-6, 0, 0).isApprox(Rotationd()));
    EXPECT_FALSE(Rotationd(1, 0, 1.1e-6, 0).isApprox(Rotationd()));
    EXPECT_FALSE(Rotationd(1, 0, 0, 1.1e-6).isApprox(Rotationd()));
    EXPECT_FALSE(Rotationd(1 - 1.1e-6, 0, 0, 0).isApprox(Rotationd()));
}

} // namespace
} // namespace vrk::rob
