#include "selection/geometry/Plane.h"

#include "Geometry.h"
#include "support/ThrowsExactly.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vrk::selection {
namespace {

using rob::Dirf;
using rob::Posf;

const Plane ground({0, 0, 1}, 3);

TEST(Plane, DefaultSizeIsOneByOne)
{
    EXPECT_EQ(Plane().size, rob::Vec2f(1, 1));
    EXPECT_EQ(ground.size, rob::Vec2f(1, 1));
}

TEST(Plane, DistanceIsInDirectionsAndNegativeBehind)
{
    EXPECT_EQ(ground.distanceAlong({5, 5, 10}, {0, 0, -1}), 7);
    EXPECT_EQ(ground.distanceAlong({5, 5, 10}, {0, 0, 1}), -7);
    EXPECT_EQ(ground.distanceAlong({5, 5, 10}, {0, 0, -2}), 3.5f);
}

TEST(Plane, PointIsWhereTheLineMeetsThePlaneAlsoBehindTheOrigin)
{
    EXPECT_EQ(ground.pointOn({5, 6, 10}, {0, 0, -1}), Posf(5, 6, 3));
    EXPECT_EQ(ground.pointOn({5, 6, 10}, {1, 0, 1}), Posf(-2, 6, 3));
}

TEST(Plane, DistanceToAParallelLineIsZero)
{
    EXPECT_EQ(ground.distanceAlong({5, 5, 10}, {1, 0, 0}), 0);
    EXPECT_EQ(ground.distanceAlong({5, 5, 10}, {1, 0, -0.0009f}), 0);
}

TEST(Plane, PointOnAParallelLineIsRefused)
{
    EXPECT_THAT(
        [] {
            ground.pointOn({5, 5, 10}, {1, 0, 0});
        },
        test::throwsExactly<std::logic_error>("The line is parallel with the plane"));
    EXPECT_THAT(
        [] {
            ground.pointOn({5, 5, 10}, {1, 0, 0.0009f});
        },
        test::throwsExactly<std::logic_error>("The line is parallel with the plane"));
}

TEST(Plane, ComponentOfTheToleranceIsNotParallel)
{
    EXPECT_NE(ground.distanceAlong({5, 5, 10}, {1, 0, -0.001f}), 0);
    EXPECT_NO_THROW(ground.pointOn({5, 5, 10}, {1, 0, -0.001f}));
}

TEST(Plane, PointLiesOnThePlaneAndIsTheDistanceAway)
{
    for (unsigned seed = 0; seed < 500; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Dice dice(seed);
        const Plane plane(rob::normalized(dice.point()), dice.number(-5, 5));
        const Ray ray = dice.ray();
        if (std::abs(plane.normal.dot(ray.direction)) < 0.1f)
            continue;

        const Posf point = plane.pointOn(ray.origin, ray.direction);

        EXPECT_NEAR(plane.normal.dot(point), plane.d, 1e-4f);
        EXPECT_EQ(point, ray.origin + ray.direction * plane.distanceAlong(ray.origin, ray.direction));
    }
}

} // namespace
} // namespace vrk::selection
