#include "scene/math/Vec.h"
#include "scene/math/Color.h"
#include "support/ThrowsExactly.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <type_traits>

namespace vrk::rob {
namespace {

TEST(Vec, DefaultIsZero)
{
    EXPECT_EQ(Vec3d(), Vec3d(0, 0, 0));
    EXPECT_EQ(Posf(), Posf(0, 0, 0));
    EXPECT_EQ(Dird(), Dird(0, 0, 0));
    EXPECT_EQ(Vec2f(), Vec2f(0, 0));
}

TEST(Vec, FieldsLieInTheOrderXYZ)
{
    const Posf p(1, 2, 3);
    const auto* numbers = reinterpret_cast<const float*>(&p);

    EXPECT_EQ(numbers[0], 1);
    EXPECT_EQ(numbers[1], 2);
    EXPECT_EQ(numbers[2], 3);
    EXPECT_EQ(sizeof(Dird), 3 * sizeof(double));
}

TEST(Vec, IndexNamesTheAxis)
{
    const Vec3d v(1, 2, 3);

    EXPECT_EQ(v[0], 1);
    EXPECT_EQ(v[1], 2);
    EXPECT_EQ(v[2], 3);
}

TEST(Vec, SumsAndScalesComponentByComponent)
{
    Vec3d v = Vec3d(1, 2, 3) + Vec3d(10, 20, 30) * 2.0 - Vec3d(1, 1, 1);
    v += Vec3d(0, 0, 1);
    v -= Vec3d(0, 1, 0);

    EXPECT_EQ(v, Vec3d(20, 40, 63));
    EXPECT_EQ(v / 2, Vec3d(10, 20, 31.5));
    EXPECT_EQ(-v, Vec3d(-20, -40, -63));
    EXPECT_EQ(Vec2f(1, 2) + Vec2f(3, 4) * 2 - Vec2f(1, 0), Vec2f(6, 10));
}

TEST(Vec, SumAndDifferenceOfDirectionsAreFreeVectors)
{
    const auto sum = Dirf(1, 0, 0) + Dirf(0, 1, 0);
    const auto difference = Dirf(1, 0, 0) - Dirf(0, 1, 0);

    static_assert(std::is_same_v<decltype(sum), const Vec3f> && std::is_same_v<decltype(difference), const Vec3f>);
    EXPECT_EQ(sum, Vec3f(1, 1, 0));
    EXPECT_EQ(difference, Vec3f(1, -1, 0));
}

TEST(Vec, DifferenceOfPointsIsAFreeVector)
{
    const auto difference = Posd(3, 2, 1) - Posd(1, 1, 1);

    static_assert(std::is_same_v<decltype(difference), const Vec3d>);
    EXPECT_EQ(difference, Vec3d(2, 1, 0));
    EXPECT_EQ(Posd(1, 1, 1) + difference, Posd(3, 2, 1));
}

TEST(Vec, CrossProductIsRightHandedAndAcrossKinds)
{
    EXPECT_EQ(Dird(1, 0, 0).cross(Vec3d(0, 1, 0)), Vec3d(0, 0, 1));
    EXPECT_EQ(Vec3d(0, 1, 0).cross(Posd(1, 0, 0)), Vec3d(0, 0, -1));
}

TEST(Vec, LengthAndDotProduct)
{
    EXPECT_EQ(Vec3d(2, 3, 6).length(), 7);
    EXPECT_EQ(Vec3d(2, 3, 6).squaredLength(), 49);
    EXPECT_EQ(Vec3d(2, 3, 6).dot(Dird(0, 1, 0)), 3);
    EXPECT_EQ(Vec2f(3, 4).length(), 5);
}

TEST(Vec, ConversionNarrowsComponentByComponent)
{
    const Posf narrowed(Posd(0.1, -2, 1e10));

    EXPECT_EQ(narrowed, Posf(0.1f, -2.0f, 1e10f));
}

TEST(Vec, NotANumberInAnyComponentIsNotFinite)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();

    EXPECT_TRUE(Posd(1, 2, 3).isFinite());
    EXPECT_FALSE(Posd(nan, 2, 3).isFinite());
    EXPECT_FALSE(Posd(1, nan, 3).isFinite());
    EXPECT_FALSE(Posd(1, 2, std::numeric_limits<double>::infinity()).isFinite());
}

TEST(Normalized, HasUnitLengthAndTheSameDirection)
{
    EXPECT_EQ(normalized(Vec3d(0, -8, 0)), Dird(0, -1, 0));
    EXPECT_NEAR(normalized(Posf(1, 2, 3)).length(), 1, 1e-6);
}

TEST(Normalized, LengthJustAboveTheLimitIsTaken)
{
    EXPECT_EQ(normalized(Vec3d(1.1e-7, 0, 0)), Dird(1, 0, 0));
}

TEST(Normalized, LengthAtTheLimitOrBelowIsRefused)
{
    const auto refuses = [](const Vec3d& v) {
        EXPECT_THAT([&] { normalized(v); },
                    test::throwsExactly<std::overflow_error>("0-length vector cannot be normalized."));
    };
    refuses({0, 0, 0});
    refuses({0, 1e-7, 0});
    EXPECT_THROW(normalized(Vec3f(0, 1e-7f, 0)), std::overflow_error);
}

TEST(Color, FieldsLieInTheOrderRedGreenBlue)
{
    const Colorf color(0.1f, 0.2f, 0.3f);
    const auto* numbers = reinterpret_cast<const float*>(&color);

    EXPECT_EQ(numbers[0], 0.1f);
    EXPECT_EQ(numbers[1], 0.2f);
    EXPECT_EQ(numbers[2], 0.3f);
    EXPECT_EQ(sizeof(Colorf), 3 * sizeof(float));
    EXPECT_EQ(sizeof(visual::Color), 4 * sizeof(float));
}

} // namespace
} // namespace vrk::rob
