#include "CamSurfaces.h"

#include <gmock/gmock.h>

#include <cmath>
#include <limits>
#include <stdexcept>

namespace vrk::cam {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(Weld, SoupBecomesTheSurfaceThatItCameFrom)
{
    const TriangleSurface torus = test::waveTorus(30, 20);

    const TriangleSurface welded = weld(test::soupOf(torus));

    EXPECT_EQ(welded.vertices.size(), torus.vertices.size());
    EXPECT_EQ(test::edgesOf(welded), test::edgesOf(torus));
}

TEST(Weld, BothZerosAreOnePlace)
{
    const TriangleSurface welded =
        weld({{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {-0.0, 0, -0.0}, {0, 1, 0}, {-1, 0, 0}}, {{0, 1, 2}, {3, 4, 5}}});

    EXPECT_EQ(welded.vertices.size(), 4u);
}

TEST(Weld, WhatIsNoTriangleIsLeftOut)
{
    constexpr double nan = std::numeric_limits<double>::quiet_NaN(), inf = std::numeric_limits<double>::infinity();
    const TriangleSurface soup{
        {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {2, 0, 0}, {nan, 0, 0}, {inf, 0, 0}, {1e200, 1e200, 0}},
        {{0, 1, 2}, {0, 1, 3}, {0, 0, 1}, {0, 1, 4}, {0, 5, 2}, {1, 2, 0}, {0, 1, 6}}};

    const TriangleSurface welded = weld(soup);

    EXPECT_THAT(welded.triangles, ElementsAre(TriangleSurface::Triangle{0, 1, 2}));
    EXPECT_EQ(welded.vertices.size(), 3u);
}

TEST(Weld, TriangleOfAVertexThatThereIsNotIsRefused)
{
    EXPECT_THROW(weld({{{0, 0, 0}}, {{0, 0, 1}}}), std::out_of_range);
}

TEST(Weld, NothingStaysNothing)
{
    EXPECT_THAT(weld({}).triangles, IsEmpty());
}

} // namespace
} // namespace vrk::cam
