#include "selection/geometry/Ray.h"

#include "Geometry.h"

#include <gtest/gtest.h>

#include <cmath>

namespace vrk::selection {
namespace {

TEST(Ray, DefaultHasNoEnd)
{
    EXPECT_EQ(Ray().length, largest);
}

TEST(Ray, TransformedMovesTheOriginTurnsTheDirectionAndForgetsTheLength)
{
    const float half = std::sqrt(0.5f);
    const rob::Posef quarterTurnAboutZ({10, 20, 30}, rob::Rotationf(half, 0, 0, half));

    const Ray moved = Ray({1, 2, 3}, {1, 0, 0}, 7).transformed(quarterTurnAboutZ);

    EXPECT_NEAR(moved.origin.x, 8, 1e-5f);
    EXPECT_NEAR(moved.origin.y, 21, 1e-5f);
    EXPECT_NEAR(moved.origin.z, 33, 1e-5f);
    EXPECT_NEAR(moved.direction.x, 0, 1e-6f);
    EXPECT_NEAR(moved.direction.y, 1, 1e-6f);
    EXPECT_NEAR(moved.direction.z, 0, 1e-6f);
    EXPECT_EQ(moved.length, largest);
}

} // namespace
} // namespace vrk::selection
