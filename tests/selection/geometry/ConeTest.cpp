#include "selection/geometry/Cone.h"

#include <gtest/gtest.h>

#include <cmath>

namespace vrk::selection {
namespace {

using rob::Posd;
using rob::Posed;

const Cone cone{4, 2, 10}; // radius 3 half way up

TEST(Cone, PointOnTheSurfaceIsOutside)
{
    EXPECT_FALSE(cone.isPointInside(Posed(), {3, 0, 5}));
    EXPECT_TRUE(cone.isPointInside(Posed(), {std::nextafter(3.0, 0.0), 0, 5}));
    EXPECT_FALSE(cone.isPointInside(Posed(), {4, 0, 0}));
}

TEST(Cone, EndDiscsBelongToTheInside)
{
    EXPECT_TRUE(cone.isPointInside(Posed(), {0, 3.9, 0}));
    EXPECT_TRUE(cone.isPointInside(Posed(), {0, 1.9, 10}));
    EXPECT_FALSE(cone.isPointInside(Posed(), {0, 0, -1e-12}));
    EXPECT_FALSE(cone.isPointInside(Posed(), {0, 0, std::nextafter(10.0, 11.0)}));
}

TEST(Cone, StandsAlongTheZAxisOfThePose)
{
    const double half = std::sqrt(0.5);
    const Posed zAlongX({100, 0, 0}, rob::Rotationd(half, 0, half, 0));

    EXPECT_TRUE(cone.isPointInside(zAlongX, {105, 2.9, 0}));
    EXPECT_FALSE(cone.isPointInside(zAlongX, {105, 3.1, 0}));
    EXPECT_FALSE(cone.isPointInside(zAlongX, {99, 0, 0}));
}

TEST(Cone, TipHasNoInside)
{
    const Cone pointed{4, 0, 10};

    EXPECT_TRUE(pointed.isPointInside(Posed(), {0, 0, 9.999}));
    EXPECT_FALSE(pointed.isPointInside(Posed(), {0, 0, 10}));
}

TEST(Cone, WithoutHeightOrOfNanHasNoInside)
{
    EXPECT_FALSE((Cone{4, 4, 0}.isPointInside(Posed(), {0, 0, 0})));
    EXPECT_FALSE(cone.isPointInside(Posed(), {std::nan(""), 0, 5}));
}

TEST(Cone, CopyAndMoveTakeAllThree)
{
    const Cone copy = cone;
    Cone moved;
    moved = Cone(copy);

    EXPECT_EQ(moved.r0, 4);
    EXPECT_EQ(moved.r1, 2);
    EXPECT_EQ(moved.h, 10);
}

} // namespace
} // namespace vrk::selection
