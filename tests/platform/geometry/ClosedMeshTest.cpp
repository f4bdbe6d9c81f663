#include "platform/geometry/MeshEdges.h"

#include "Surfaces.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <limits>
#include <utility>

namespace vrk::geometry {
namespace {

using test::Surface;

bool isClosed(const Surface& surface)
{
    return test::edgesOf(surface).isClosed;
}

Surface turned(Surface surface)
{
    for (std::size_t i = 0; i < surface.indices.size(); i += 3)
        std::swap(surface.indices[i], surface.indices[i + 1]);
    return surface;
}

Surface shifted(Surface surface, float by)
{
    for (rob::Posf& point : surface.points)
        point = {point.x + by, point.y + by, point.z + by};
    return surface;
}

Surface both(Surface one, const Surface& other)
{
    const auto first = static_cast<unsigned>(one.points.size());
    one.points.insert(one.points.end(), other.points.begin(), other.points.end());
    for (const unsigned index : other.indices)
        one.indices.push_back(first + index);
    return one;
}

TEST(ClosedMesh, CubeIsWithSharedVerticesAndAsASoup)
{
    EXPECT_TRUE(isClosed(test::cube()));
    EXPECT_TRUE(isClosed(test::soupOf(test::cube())));
}

TEST(ClosedMesh, RoundBodyThatHasNoLinesIsToo)
{
    EXPECT_TRUE(isClosed(test::cylinder(64)));
}

TEST(ClosedMesh, WithoutOneTriangleItIsNot)
{
    Surface open = test::cube();
    open.indices.resize(open.indices.size() - 3);
    EXPECT_FALSE(isClosed(open));
}

TEST(ClosedMesh, WithOneTriangleTurnedItIsNot)
{
    Surface surface = test::cube();
    std::swap(surface.indices[0], surface.indices[1]);
    EXPECT_FALSE(isClosed(surface));
}

TEST(ClosedMesh, InsideOutItIsNot)
{
    EXPECT_FALSE(isClosed(turned(test::cube())));
}

TEST(ClosedMesh, CavityOfABodyMayBe)
{
    EXPECT_TRUE(isClosed(both(test::cube(10), shifted(turned(test::cube(2)), 4))));
}

TEST(ClosedMesh, BodyInsideOutBesideAnotherIsNot)
{
    EXPECT_FALSE(isClosed(both(test::cube(10), shifted(turned(test::cube(2)), 20))));
}

TEST(ClosedMesh, FarFromTheOriginItIsToo)
{
    EXPECT_TRUE(isClosed(shifted(test::cube(100), 1e6f)));
}

TEST(ClosedMesh, SheetOfTwoSidesAloneEnclosesNothing)
{
    Surface sheet;
    sheet.points = {{0, 0, 0}, {10, 0, 0}, {10, 10, 0}, {0, 10, 0}};
    sheet.addQuad(0, 1, 2, 3);
    sheet.addQuad(3, 2, 1, 0);
    EXPECT_FALSE(isClosed(sheet));
    EXPECT_TRUE(isClosed(both(sheet, shifted(test::cube(2), 20)))) << "each side has its triangles";
}

TEST(ClosedMesh, TwoCubesThatTouchAlongAnEdgeAre)
{
    Surface other = test::cube(10);
    for (rob::Posf& point : other.points)
        point = {point.x + 10, point.y + 10, point.z};
    EXPECT_TRUE(isClosed(both(test::cube(10), other)));
}

TEST(ClosedMesh, RubbishIsNot)
{
    EXPECT_FALSE(isClosed({}));
    Surface surface = test::cube();
    surface.points[3].x = std::numeric_limits<float>::quiet_NaN();
    EXPECT_FALSE(isClosed(surface));
    surface = test::cube();
    surface.indices[4] = 1000;
    EXPECT_FALSE(isClosed(surface));
}

} // namespace
} // namespace vrk::geometry
