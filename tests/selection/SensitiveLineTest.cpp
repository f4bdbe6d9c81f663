#include "selection/SensitiveLine.h"

#include "geometry/Geometry.h"

#include "selection/ViewPixels.h"

#include <gtest/gtest.h>

#include <cmath>

/// Without a camera: the tolerance is five units everywhere.
namespace vrk::selection {
namespace {

using rob::Posf;

Result hitOf(const SensitiveLine& line, const Ray& ray)
{
    Result result;
    result.hit = true;
    line.intersectRay(result, ray);
    return result;
}

const SensitiveLine alongX({0, 0, 0}, {100, 0, 0});

Ray downAt(float x, float y, float z = 50)
{
    return {{x, y, z}, {0, 0, -1}};
}

TEST(WorldUnitsPerPixel, IsEmptyWithoutACamera)
{
    EXPECT_FALSE(worldUnitsPerPixel(1000).has_value());
}

TEST(SensitiveLine, HitWithinFiveUnitsIsNearerByHalfOfThem)
{
    const Result result = hitOf(alongX, downAt(30, 4));

    ASSERT_TRUE(result.hit);
    EXPECT_FLOAT_EQ(result.distance, 47.5f);
    EXPECT_NEAR((result.position - Posf(30, 0, 0)).length(), 0, 1e-5);
    EXPECT_NEAR((result.localPosition - Posf(30, 0, 0)).length(), 0, 1e-4);
}

TEST(SensitiveLine, ToleranceItselfIsAMiss)
{
    EXPECT_TRUE(hitOf(alongX, downAt(30, 4.999f)).hit);
    EXPECT_FALSE(hitOf(alongX, downAt(30, 5)).hit);
    EXPECT_FALSE(hitOf(alongX, downAt(30, -5)).hit);
}

TEST(SensitiveLine, PastAnEndTheEndIsWhatCounts)
{
    const Result before = hitOf(alongX, downAt(-3, 3));
    const Result after = hitOf(alongX, downAt(103, 3));

    EXPECT_TRUE(before.hit && after.hit);
    EXPECT_EQ(before.position, Posf(0, 0, 0));
    EXPECT_EQ(after.position, Posf(100, 0, 0));
    EXPECT_FALSE(hitOf(alongX, downAt(-4, 4)).hit);
    EXPECT_FALSE(hitOf(alongX, downAt(104, 4)).hit);
}

TEST(SensitiveLine, PastAnEndTheDistanceIsToWhereTheRayIsNearestToTheEnd)
{
    // Ten units along the rays they pass four units beyond an end, and 2.4 units later they are nearest to it.
    const Result before = hitOf(alongX, Ray({-10, 0, 8}, {0.6f, 0, -0.8f}));
    const Result after = hitOf(alongX, Ray({110, 0, 8}, {-0.6f, 0, -0.8f}));

    EXPECT_TRUE(before.hit && after.hit);
    EXPECT_NEAR(before.distance, 12.4 - 2.5, 1e-4);
    EXPECT_NEAR(after.distance, 12.4 - 2.5, 1e-4);
}

TEST(SensitiveLine, BehindTheOriginOnlyTheOriginItselfReaches)
{
    const Result close = hitOf(alongX, Ray({30, 0, 2}, {0, 0, 1}));

    ASSERT_TRUE(close.hit); // two units from the origin of the ray
    EXPECT_FLOAT_EQ(close.distance, -2.5f);
    EXPECT_NEAR((close.position - Posf(30, 0, 0)).length(), 0, 1e-5);
    EXPECT_FALSE(hitOf(alongX, Ray({30, 0, 6}, {0, 0, 1})).hit);
}

TEST(SensitiveLine, ParallelRayHitsOnlyFromBesideTheStart)
{
    const Result beside = hitOf(alongX, Ray({0, 3, 0}, {1, 0, 0}));

    EXPECT_TRUE(beside.hit);
    EXPECT_FLOAT_EQ(beside.distance, -2.5f);
    EXPECT_EQ(beside.position, Posf(0, 0, 0));
    EXPECT_FALSE(hitOf(alongX, Ray({40, 3, 0}, {1, 0, 0})).hit);
    EXPECT_FALSE(hitOf(alongX, Ray({-70, 3, 0}, {1, 0, 0})).hit);
}

TEST(SensitiveLine, BoxHasRoomForTheTolerance)
{
    EXPECT_NEAR((alongX.box.min - Posf(0, -5, -5)).length(), 0, 1e-5);
    EXPECT_NEAR((alongX.box.max - Posf(100, 5, 5)).length(), 0, 1e-5);
    EXPECT_FALSE(alongX.box.centerDirty);
    const SensitiveLine alongZ({0, 0, 10}, {0, 0, -10});
    EXPECT_NEAR((alongZ.box.min - Posf(-5, -5, -10)).length(), 0, 1e-5);
    EXPECT_NEAR((alongZ.box.max - Posf(5, 5, 10)).length(), 0, 1e-5);
}

TEST(SensitiveLine, BoxOfAnObliqueLineIsThatOfASquareTubeThatLeansOnX)
{
    // One side of the tube is at right angles to the line and to x, unless the line all but follows x.
    const double w[] = {0, 2 / std::sqrt(5.0), -1 / std::sqrt(5.0)};
    const double v[] = {(w[2] - 2 * w[1]) / 3, -2 * w[2] / 3, 2 * w[1] / 3};
    const auto half = [&](int axis) { return static_cast<float>(5 * (std::abs(w[axis]) + std::abs(v[axis]))); };
    const SensitiveLine oblique({0, 0, 0}, {30, 15, 30});

    EXPECT_NEAR((oblique.box.min - Posf(-half(0), -half(1), -half(2))).length(), 0, 1e-4);
    EXPECT_NEAR((oblique.box.max - Posf(30 + half(0), 15 + half(1), 30 + half(2))).length(), 0, 1e-4);
}

TEST(SensitiveLine, LineOfNoLengthIsNeverHitAndHasABox)
{
    const SensitiveLine point({1, 2, 3}, {1, 2, 3});

    EXPECT_NEAR((point.box.min - Posf(1, -3, -2)).length(), 0, 1e-5); // as for a line along x
    EXPECT_NEAR((point.box.max - Posf(1, 7, 8)).length(), 0, 1e-5);
    EXPECT_FALSE(hitOf(point, downAt(1, 2)).hit);
}

TEST(SensitiveLine, WhatIsNoNumberIsNeverHit)
{
    EXPECT_FALSE(hitOf(SensitiveLine({0, 0, 0}, {nan, 0, 0}), downAt(0, 0)).hit);
    EXPECT_FALSE(hitOf(alongX, downAt(nan, 0)).hit);
}

TEST(SensitiveLine, PointsBetweenTheEndsAreThoseOfASearch)
{
    unsigned hits = 0;
    for (unsigned seed = 0; seed < 300; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Dice dice(seed, 20);
        const rob::Linef section = dice.line();
        const Ray ray = dice.ray();
        double best = 1e30, bestT = 0;
        int bestStep = 0;
        for (int i = 0; i <= 20000; ++i) {
            const rob::Vec3d p = rob::Vec3d(rob::Posd(section.start)) +
                                 (rob::Posd(section.end) - rob::Posd(section.start)) * (i / 20000.0);
            const rob::Vec3d to = p - rob::Vec3d(rob::Posd(ray.origin));
            const rob::Vec3d d(ray.direction.x, ray.direction.y, ray.direction.z);
            const double t = std::max(0.0, to.dot(d));
            if ((to - d * t).length() < best) {
                best = (to - d * t).length();
                bestT = t;
                bestStep = i;
            }
        }
        // What is nearest at an end of one of them has tests of its own: an end is taken, not always the nearest point.
        if (std::abs(best - 5) < 0.01 || bestT < 0.01 || bestStep == 0 || bestStep == 20000)
            continue;

        const Result result = hitOf(SensitiveLine(section.start, section.end), ray);

        EXPECT_EQ(result.hit, best < 5);
        if (result.hit) {
            ++hits;
            const Posf onRay = ray.origin + ray.direction * (result.distance + 2.5f);
            EXPECT_NEAR((result.position - onRay).length(), best, 0.01);
        }
    }
    EXPECT_GT(hits, 20u);
}

} // namespace
} // namespace vrk::selection
