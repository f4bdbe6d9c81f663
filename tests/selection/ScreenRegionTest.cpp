#include "selection/region/ScreenRegion.h"

#include "selection/CloudPoints.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

namespace vrk::selection {
namespace {

using Place = ScreenRegion::Place;
using Coverage = ScreenRegion::Coverage;
using Polygon = std::vector<Place>;

constexpr double width = 400, height = 300;

double uniform(std::mt19937& random, double from, double to)
{
    return std::uniform_real_distribution<double>(from, to)(random);
}

Place anyPlace(std::mt19937& random)
{
    const double x = uniform(random, -50, width + 50), y = uniform(random, -50, height + 50);
    return {x, y};
}

Polygon anyPolygon(std::mt19937& random, int corners)
{
    Polygon polygon;
    for (int i = 0; i < corners; ++i)
        polygon.push_back(anyPlace(random));
    return polygon;
}

/// By the sum of the angles under which the edges are seen, modulo two turns.
bool isInside(const Polygon& polygon, const Place& p)
{
    if (p.x < 0 || p.x > width || p.y < 0 || p.y > height)
        return false;
    double turns = 0;
    for (std::size_t i = 0; i < polygon.size(); ++i) {
        const Place a = polygon[i] - p, b = polygon[(i + 1) % polygon.size()] - p;
        turns += std::atan2(a.x * b.y - a.y * b.x, a.dot(b));
    }
    return std::lround(turns / (2 * std::acos(-1.0))) % 2 != 0;
}

TEST(ScreenRegion, PlacesAreInsideAsALoopOverTheWholePolygonSays)
{
    int inside = 0;
    for (unsigned seed = 0; seed < 60; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        std::mt19937 random(seed);
        const Polygon polygon = anyPolygon(random, 3 + static_cast<int>(seed) % 30);
        const ScreenRegion region(polygon, width, height);
        for (int i = 0; i < 2000; ++i) {
            const Place p = anyPlace(random);
            ASSERT_EQ(region.holds(p), isInside(polygon, p)) << p.x << ", " << p.y;
            inside += region.holds(p) ? 1 : 0;
        }
    }
    EXPECT_GT(inside, 10000);
}

/// What is told of a whole rectangle or triangle holds for each place in it.
TEST(ScreenRegion, WhatIsToldOfAPartHoldsForItsPlaces)
{
    int whole = 0, outside = 0, touched = 0;
    for (unsigned seed = 0; seed < 300; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        std::mt19937 random(seed);
        const Polygon polygon = anyPolygon(random, 3 + static_cast<int>(seed) % 9);
        const ScreenRegion region(polygon, width, height);
        for (int k = 0; k < 20; ++k) {
            const Place at = anyPlace(random);
            const double size = uniform(random, 1, 40);
            const Polygon triangle{at, at + Place(size, uniform(random, -5, 5)),
                                   at + Place(uniform(random, -5, 5), size)};
            const ScreenRegion::Rectangle box{at.x, at.y, at.x + size, at.y + size};
            const Coverage coverage = region.classify(box);
            const bool touches = region.touches(triangle), holdsAll = region.holdsAll(triangle);
            whole += holdsAll ? 1 : 0;
            touched += touches && !holdsAll ? 1 : 0;
            outside += touches ? 0 : 1;
            ASSERT_TRUE(touches || !holdsAll);
            for (int i = 0; i < 50; ++i) {
                const double u = uniform(random, 0, 1), v = uniform(random, 0, 1 - u);
                const bool isIn =
                    isInside(polygon, triangle[0] + (triangle[1] - triangle[0]) * u + (triangle[2] - triangle[0]) * v);
                ASSERT_FALSE(holdsAll && !isIn);
                ASSERT_FALSE(!touches && isIn);
                const bool isBoxPlaceIn = isInside(polygon, at + Place(u * size, uniform(random, 0, size)));
                ASSERT_FALSE(coverage == Coverage::Inside && !isBoxPlaceIn);
                ASSERT_FALSE(coverage == Coverage::Outside && isBoxPlaceIn);
            }
        }
    }
    EXPECT_GT(whole, 300);
    EXPECT_GT(outside, 300);
    EXPECT_GT(touched, 300);
}

TEST(ScreenRegion, NumbersWithoutMeasureDoNoHarm)
{
    const double most = std::numeric_limits<double>::max();
    const ScreenRegion huge(Polygon{{-most, -most}, {most, -most / 2}, {most, most}}, width, height);
    huge.holds({5, 5});
    EXPECT_FALSE(huge.holds({-5, 5}));
    const ScreenRegion flat(Polygon{{10, 10}, {50, 10}, {90, 10}}, width, height);
    EXPECT_FALSE(flat.holds({50, 11}));
    EXPECT_TRUE(flat.touches(Polygon{{40, 0}, {60, 0}, {50, 20}}));
    EXPECT_FALSE(flat.touches(Polygon{{40, 0}, {60, 0}, {50, 9}}));
    const ScreenRegion outside(Polygon{{-10, -10}, {-50, -10}, {-90, -70}}, width, height);
    EXPECT_TRUE(outside.getBounds().isEmpty());
    EXPECT_EQ(outside.classify({0, 0, 400, 300}), Coverage::Outside);
}

/// Halving as the class tells it, in the plainest way.
void splitPlainly(const std::vector<rob::Posf>& points, std::vector<unsigned> numbers, Box box,
                  std::vector<std::vector<unsigned>>& groups)
{
    if (numbers.empty())
        return;
    const unsigned axis = box.maxDim();
    const float from = rob::Vec3f(box.min)[axis], to = rob::Vec3f(box.max)[axis], border = (from + to) * 0.5f;
    if (numbers.size() <= 1000 || !(border > from && border < to)) {
        groups.push_back(std::move(numbers));
        return;
    }
    std::vector<unsigned> lower, upper;
    for (const unsigned n : numbers)
        (border > rob::Vec3f(points[n])[axis] ? lower : upper).push_back(n);
    Box below = box, above = box;
    (axis == 0 ? below.max.x : axis == 1 ? below.max.y : below.max.z) = border;
    (axis == 0 ? above.min.x : axis == 1 ? above.min.y : above.min.z) = border;
    splitPlainly(points, std::move(lower), below, groups);
    splitPlainly(points, std::move(upper), above, groups);
}

TEST(CloudPoints, GroupsAreThoseOfPlainHalving)
{
    for (const unsigned count : {1u, 1000u, 1001u, 30000u, 400000u}) {
        std::mt19937 random(count);
        std::vector<rob::Posf> points;
        std::vector<unsigned> finite;
        Box box;
        for (unsigned i = 0; i < count; ++i) {
            const auto number = [&](double to) { return static_cast<float>(uniform(random, -to, to)); };
            const float x = number(2000), y = number(900), z = number(i % 3 == 0 ? 2 : 700);
            points.emplace_back(x, y, z);
            if (i % 1000 == 7)
                points.back().y = std::numeric_limits<float>::quiet_NaN();
            if (!points.back().isFinite())
                continue;
            finite.push_back(i);
            box.addPoint(points.back());
        }
        std::vector<std::vector<unsigned>> expected;
        splitPlainly(points, finite, box, expected);

        const CloudPoints cloud(points, box);

        EXPECT_EQ(cloud.getCloudSize(), count);
        std::vector<std::vector<unsigned>> groups;
        const auto nodes = cloud.getNodes();
        for (std::size_t i = 0; i < nodes.size(); ++i) {
            ASSERT_LE(nodes[i].next, nodes.size());
            Box drawn;
            for (std::uint32_t at = nodes[i].begin; at < nodes[i].end; ++at) {
                ASSERT_EQ(cloud.getPlaces()[at], points[cloud.getNumbers()[at]]);
                drawn.addPoint(cloud.getPlaces()[at]);
            }
            ASSERT_EQ(drawn.min, nodes[i].min);
            ASSERT_EQ(drawn.max, nodes[i].max);
            if (nodes[i].isGroup(i))
                groups.emplace_back(cloud.getNumbers().begin() + nodes[i].begin,
                                    cloud.getNumbers().begin() + nodes[i].end);
        }
        EXPECT_EQ(groups, expected) << count;
    }
    EXPECT_TRUE(CloudPoints({}, Box()).getNodes().empty());
}

} // namespace
} // namespace vrk::selection
