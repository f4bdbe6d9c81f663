#include "platform/measure/TriangleTree.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

namespace vrk::measure {
namespace {

using rob::Posd;
using rob::Vec3d;

Posd anyPlace(std::mt19937& random, double reach)
{
    std::uniform_real_distribution<double> coordinate(-reach, reach);
    return {coordinate(random), coordinate(random), coordinate(random)};
}

Triangle anyTriangle(std::mt19937& random, double reach, double size)
{
    const Posd at = anyPlace(random, reach);
    return {at, at + anyPlace(random, size), at + anyPlace(random, size)};
}

std::vector<Triangle> anyTriangles(std::mt19937& random, int count, double reach, const Vec3d& shift)
{
    std::vector<Triangle> all;
    for (int i = 0; i < count; ++i) {
        Triangle triangle = anyTriangle(random, reach, 10);
        for (Posd& corner : triangle)
            corner = corner + shift;
        all.push_back(triangle);
    }
    return all;
}

/// By sampling both closely: never below the distance, and above it by one step of each at most.
double sampledDistance(const Triangle& a, const Triangle& b, int steps)
{
    const auto at = [steps](const Triangle& triangle, int i, int k) {
        return triangle[0] + (triangle[1] - triangle[0]) * (1.0 * i / steps) +
               (triangle[2] - triangle[0]) * (1.0 * k / steps);
    };
    double least = std::numeric_limits<double>::infinity();
    for (int i = 0; i <= steps; ++i)
        for (int k = 0; i + k <= steps; ++k)
            for (int m = 0; m <= steps; ++m)
                for (int n = 0; m + n <= steps; ++n)
                    least = std::min(least, (at(a, i, k) - at(b, m, n)).length());
    return least;
}

double longestSide(const Triangle& triangle)
{
    return std::max({(triangle[1] - triangle[0]).length(), (triangle[2] - triangle[1]).length(),
                     (triangle[0] - triangle[2]).length()});
}

void expectOn(const Triangle& triangle, const Posd& place)
{
    EXPECT_NEAR(nearestOf(triangle, {place, place, place}).distance, 0, 1e-9);
}

TEST(NearestOfTriangles, IsWhatCloseSamplesSay)
{
    constexpr int steps = 16;
    int touching = 0;
    for (unsigned seed = 0; seed < 300; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        std::mt19937 random(seed);
        const Triangle a = anyTriangle(random, 5, 10), b = anyTriangle(random, 5, 10);
        const NearestPlaces nearest = nearestOf(a, b);
        const double sampled = sampledDistance(a, b, steps);
        EXPECT_LE(nearest.distance, sampled + 1e-9);
        EXPECT_GE(nearest.distance, sampled - (longestSide(a) + longestSide(b)) / steps);
        EXPECT_NEAR((nearest.second - nearest.first).length(), nearest.distance, 1e-9);
        expectOn(a, nearest.first);
        expectOn(b, nearest.second);
        touching += nearest.distance == 0 ? 1 : 0;
    }
    EXPECT_GT(touching, 20) << "some of them intersect";
}

TEST(NearestOfTriangles, ThoseThatPierceOrCoverEachOtherAreAtNoDistance)
{
    const Triangle flat{Posd(0, 0, 0), Posd(10, 0, 0), Posd(0, 10, 0)};

    EXPECT_EQ(nearestOf(flat, {Posd(2, 2, -5), Posd(2, 2, 5), Posd(3, 3, 5)}).distance, 0);
    EXPECT_EQ(nearestOf(flat, {Posd(1, 1, 0), Posd(2, 1, 0), Posd(1, 2, 0)}).distance, 0);
    EXPECT_EQ(nearestOf(flat, {Posd(5, 5, 0), Posd(20, 5, 0), Posd(5, 20, 0)}).distance, 0);
    EXPECT_DOUBLE_EQ(nearestOf(flat, {Posd(1, 1, 3), Posd(2, 1, 3), Posd(1, 2, 3)}).distance, 3);
}

TEST(NearestOfTriangles, ThoseWithoutAreaAreLinesAndPoints)
{
    const Posd a(0, 0, 0), b(10, 0, 0), above(5, 0, 4);

    EXPECT_DOUBLE_EQ(nearestOf({a, b, b}, {above, above, above}).distance, 4);
    EXPECT_DOUBLE_EQ(nearestOf({a, Posd(5, 0, 0), b}, {above, above, above}).distance, 4);
    EXPECT_DOUBLE_EQ(nearestOf({a, a, a}, {b, b, b}).distance, 10);
    EXPECT_EQ(nearestOf({a, a, a}, {a, a, a}).distance, 0);
}

TEST(TriangleTreeNearest, IsThatOfAllPairs)
{
    for (unsigned seed = 0; seed < 60; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        std::mt19937 random(seed);
        const auto first = anyTriangles(random, 150, 40, {});
        const auto second = anyTriangles(random, 150, 40, Vec3d(20.0 * (seed % 6), 0, 0));
        double least = std::numeric_limits<double>::infinity();
        for (const Triangle& a : first)
            for (const Triangle& b : second)
                least = std::min(least, nearestOf(a, b).distance);

        const auto found = TriangleTree::Nearest(TriangleTree(first), TriangleTree(second));

        ASSERT_TRUE(found);
        EXPECT_NEAR(found->distance, least, 1e-12);
        EXPECT_NEAR((found->second - found->first).length(), least, 1e-9);
    }
}

TEST(TriangleTreeNearest, NothingIsNearestToNothing)
{
    EXPECT_FALSE(TriangleTree::Nearest(TriangleTree(std::vector<Triangle>()), TriangleTree(std::vector<Triangle>(1))));
}

TEST(TriangleTreeNearest, StopsWhenItIsAsked)
{
    std::mt19937 random(1);
    const auto all = anyTriangles(random, 100, 40, {});
    std::stop_source stop;
    stop.request_stop();

    EXPECT_FALSE(TriangleTree::Nearest(TriangleTree(all), TriangleTree(all), stop.get_token()));
    EXPECT_FALSE(TriangleTree::Nearest(TriangleTree(all, stop.get_token()), TriangleTree(all)));
}

/// A tetrahedron whose faces look outwards.
std::vector<Triangle> tetrahedron(const Vec3d& shift)
{
    const Posd o = Posd() + shift, x = Posd(10, 0, 0) + shift, y = Posd(0, 10, 0) + shift, z = Posd(0, 0, 10) + shift;
    return {{o, y, x}, {o, x, z}, {o, z, y}, {x, y, z}};
}

TEST(IsInside, IsWhatClosedTrianglesEnclose)
{
    EXPECT_TRUE(isInside(tetrahedron({}), {1, 1, 1}));
    EXPECT_FALSE(isInside(tetrahedron({}), {5, 5, 5}));
    EXPECT_FALSE(isInside(tetrahedron({}), {-1, 1, 1}));
}

TEST(ConnectedOf, TellsThePiecesAndWhetherTheyAreClosed)
{
    std::vector<Triangle> two = tetrahedron({});
    const std::vector<Triangle> other = tetrahedron({100, 0, 0});
    two.insert(two.end(), other.begin(), other.end());

    EXPECT_EQ(connectedOf(two).places.size(), 2u);
    EXPECT_TRUE(connectedOf(two).areClosed);
    two.pop_back();
    EXPECT_EQ(connectedOf(two).places.size(), 2u);
    EXPECT_FALSE(connectedOf(two).areClosed);
}

} // namespace
} // namespace vrk::measure
