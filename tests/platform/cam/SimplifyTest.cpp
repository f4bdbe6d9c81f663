#include "platform/cam/Simplify.h"

#include "CamSurfaces.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <limits>
#include <numbers>
#include <random>
#include <stdexcept>

namespace vrk::cam {
namespace {

using testing::TestWithParam;
using testing::Values;

TriangleSurface simplified(const TriangleSurface& surface, double tolerance)
{
    SimplifyOptions options;
    options.tolerance = tolerance;
    return simplify(surface, options).value();
}

TriangleSurface simplifiedTo(const TriangleSurface& surface, std::size_t triangles)
{
    SimplifyOptions options;
    options.triangles = triangles;
    return simplify(surface, options).value();
}

struct ShapeCase {
    const char* name;
    TriangleSurface (*make)();
    double tolerance;
};
class SimplifiedShape : public TestWithParam<ShapeCase> {};

TEST_P(SimplifiedShape, LiesWithinTheToleranceBothWays)
{
    const TriangleSurface surface = GetParam().make();

    const TriangleSurface result = simplified(surface, GetParam().tolerance);

    EXPECT_LT(result.triangles.size(), surface.triangles.size() * 9 / 10);
    EXPECT_LE(test::farthest(result, surface), GetParam().tolerance);
    EXPECT_LE(test::farthest(surface, result), GetParam().tolerance);
}

TEST_P(SimplifiedShape, KeepsItsTopologyAndHasNoTriangleWithoutArea)
{
    const TriangleSurface surface = GetParam().make();

    const TriangleSurface result = simplified(surface, GetParam().tolerance);

    EXPECT_EQ(test::eulerNumber(result), test::eulerNumber(surface));
    EXPECT_EQ(test::edgesOf(result).borders == 0, test::edgesOf(surface).borders == 0);
    EXPECT_EQ(test::edgesOf(result).more == 0, test::edgesOf(surface).more == 0);
    EXPECT_GT(test::leastArea(result), 0);
}

/// Its triangles are as long as the tolerance, so that the middle of a large one may be far from all edges.
TEST(Simplify, RoughSheetIsWithinTheToleranceBothWays)
{
    for (unsigned seed = 0; seed < 5; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        TriangleSurface surface = test::waveSheet(50);
        std::mt19937 random(seed);
        for (rob::Posd& vertex : surface.vertices)
            vertex.z += random() % 1000 / 1000.0;

        const TriangleSurface result = simplified(surface, 0.3);

        EXPECT_LE(test::farthest(result, surface), 0.3);
        EXPECT_LE(test::farthest(surface, result), 0.3);
    }
}

INSTANTIATE_TEST_SUITE_P(Shapes, SimplifiedShape,
                         Values(ShapeCase{"WaveTorus", [] { return test::waveTorus(120, 60); }, 0.1},
                                ShapeCase{"WaveTorusFine", [] { return test::waveTorus(120, 60); }, 0.02},
                                ShapeCase{"Box", [] { return test::boxOf(12); }, 0.01},
                                ShapeCase{"OpenSheet", [] { return test::waveSheet(50); }, 0.05},
                                ShapeCase{"FinOnSheet", [] { return test::finOnSheet(20); }, 0.01}),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(Simplify, SharpEdgesOfABoxStay)
{
    const TriangleSurface result = simplifiedTo(test::boxOf(12), 12);

    EXPECT_EQ(result.triangles.size(), 12u);
    EXPECT_NEAR(test::volumeOf(result), 40 * 20 * 10, 1e-6);
}

TEST(Simplify, EndsKeepTheirLines)
{
    const TriangleSurface surface = test::finOnSheet(20);

    const TriangleSurface result = simplifiedTo(surface, 20);

    EXPECT_LE(result.triangles.size(), 40u);
    EXPECT_NEAR(test::endsLength(result), test::endsLength(surface), 1e-6);
    EXPECT_NEAR(test::areaOf(result), test::areaOf(surface), 1e-6);
}

TEST(Simplify, WantedNumberIsReachedAndNoTriangleTurnsOver)
{
    const TriangleSurface surface = test::waveTorus(120, 60);

    const TriangleSurface result = simplifiedTo(surface, 2000);

    EXPECT_EQ(result.triangles.size(), 2000u);
    // A triangle that lay on its face would take as much from the volume as it has area.
    EXPECT_NEAR(test::volumeOf(result), test::volumeOf(surface), 0.01 * test::volumeOf(surface));
    EXPECT_NEAR(test::areaOf(result), test::areaOf(surface), 0.01 * test::areaOf(surface));
}

/// A flat disc with a wavy border, whose places are not even.
TriangleSurface wavyDisc(unsigned rings, unsigned spokes)
{
    TriangleSurface surface{{{0, 0, 0}}, {}};
    for (unsigned i = 1; i <= rings; ++i)
        for (unsigned k = 0; k < spokes; ++k) {
            const double angle = 2 * std::numbers::pi * (k + 0.3 * std::sin(i * 7 + k * 3)) / spokes;
            const double radius = (20 + 12 * std::sin(7 * angle)) * i / rings;
            surface.vertices.emplace_back(radius * std::cos(angle), radius * std::sin(angle), 0);
        }
    for (unsigned i = 0; i < rings; ++i)
        for (unsigned k = 0; k < spokes; ++k) {
            const unsigned next = (k + 1) % spokes, outer = 1 + i * spokes, inner = outer - spokes;
            surface.triangles.push_back({i == 0 ? 0 : inner + k, outer + k, outer + next});
            if (i > 0)
                surface.triangles.push_back({inner + k, outer + next, inner + next});
        }
    return surface;
}

TEST(Simplify, FlatTrianglesNeverTurnOver)
{
    const TriangleSurface surface = wavyDisc(12, 90);
    for (const std::size_t count : {1500u, 1000u, 500u, 200u, 100u, 60u, 30u, 10u}) {
        SCOPED_TRACE(testing::Message() << "to " << count);

        const TriangleSurface result = simplifiedTo(surface, count);

        EXPECT_LT(result.triangles.size(), surface.triangles.size());
        for (const auto& [a, b, c] : result.triangles) {
            const rob::Posd& corner = result.vertices[a];
            ASSERT_GT((result.vertices[b] - corner).cross(result.vertices[c] - corner).z, 0);
        }
        if (count >= 200) {
            EXPECT_NEAR(test::areaOf(result), test::areaOf(surface), 0.001 * test::areaOf(surface)) << "by the border";
        }
    }
}

TEST(Simplify, NarrowStripKeepsItsTwoSides)
{
    TriangleSurface strip;
    for (std::uint32_t i = 0; i <= 40; ++i) {
        for (const double y : {0.0, 0.1})
            strip.vertices.emplace_back(i, y, std::sin(i));
        if (i > 0) {
            strip.triangles.push_back({2 * i - 2, 2 * i, 2 * i + 1});
            strip.triangles.push_back({2 * i - 2, 2 * i + 1, 2 * i - 1});
        }
    }

    const TriangleSurface result = simplifiedTo(strip, 30);

    EXPECT_EQ(result.triangles.size(), 30u);
    EXPECT_EQ(test::edgesOf(result).borders, 32u) << "it is one polygon";
    EXPECT_EQ(test::eulerNumber(result), 1);
}

TEST(Simplify, ThinRingStaysARing)
{
    SimplifyOptions options;
    options.sharp = std::numbers::pi;
    for (const std::size_t count : {120u, 60u, 30u, 14u}) {
        options.triangles = count;

        const TriangleSurface result = simplify(test::waveTorus(40, 3), options).value();

        EXPECT_EQ(test::eulerNumber(result), 0) << "to " << count;
        EXPECT_EQ(test::edgesOf(result), (test::EdgeCounts{0, 3 * result.triangles.size() / 2, 0})) << "to " << count;
    }
}

TEST(Simplify, PointInWhichTwoSheetsMeetStays)
{
    TriangleSurface cones{{{0, 0, 0}}, {}};
    constexpr std::uint32_t spokes = 24;
    for (const int way : {1, -1}) {
        auto inner = static_cast<std::uint32_t>(cones.vertices.size());
        for (std::uint32_t i = 1; i <= 10; ++i) {
            const auto outer = static_cast<std::uint32_t>(cones.vertices.size());
            for (std::uint32_t k = 0; k < spokes; ++k) {
                const double angle = 2 * std::numbers::pi * k / spokes;
                cones.vertices.emplace_back(i * std::cos(angle), i * std::sin(angle), way * 0.1 * i);
            }
            for (std::uint32_t k = 0; k < spokes; ++k) {
                const std::uint32_t next = (k + 1) % spokes;
                cones.triangles.push_back({i == 1 ? 0 : inner + k, outer + k, outer + next});
                if (i > 1)
                    cones.triangles.push_back({inner + k, outer + next, inner + next});
            }
            inner = outer;
        }
    }

    const TriangleSurface result = simplifiedTo(cones, 60);

    EXPECT_LT(result.triangles.size(), 100u);
    EXPECT_THAT(result.vertices, testing::Contains(rob::Posd(0, 0, 0)));
    EXPECT_EQ(test::eulerNumber(result), 1);
}

/// The mean distance of a tenth of the triangles, and how few are left within a distance: what a poorer choice of edges or
/// places, or edges that are refused for nothing, would make worse.
TEST(Simplify, FewTrianglesDescribeTheSurfaceWell)
{
    const TriangleSurface surface = test::waveTorus(120, 60);

    EXPECT_LE(test::rms(surface, simplifiedTo(surface, 1440)), 0.029);
    EXPECT_LE(simplified(surface, 0.1).triangles.size(), 1600u);
    EXPECT_LE(simplified(surface, 0.02).triangles.size(), 9050u);
}

TEST(Simplify, SameSurfaceGivesTheSameResult)
{
    const TriangleSurface surface = test::waveTorus(60, 40);

    EXPECT_TRUE(test::isSame(simplifiedTo(surface, 500), simplifiedTo(surface, 500)));
    EXPECT_TRUE(test::isSame(simplified(surface, 0.1), simplified(surface, 0.1)));
}

TEST(Simplify, ToleranceOfZeroLosesNothing)
{
    const TriangleSurface surface = test::waveTorus(30, 20);

    EXPECT_TRUE(test::isSame(simplified(surface, 0), surface));
}

TEST(Simplify, ToleranceBelowWhatCanBeReckonedComesToItsEnd)
{
    for (const double tolerance : {1e-300, 1e-17, 1e-14})
        EXPECT_LE(test::farthest(simplified(test::boxOf(4), tolerance), test::boxOf(4), 100), 1e-13);
}

TEST(Simplify, ToleranceThatIsNoneIsRefused)
{
    for (const double tolerance :
         {-1.0, -std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN()})
        EXPECT_THROW(simplified(test::boxOf(1), tolerance), std::invalid_argument);
}

TEST(Simplify, NothingAndOneTriangleStayWhatTheyAre)
{
    const TriangleSurface one{{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, {{0, 1, 2}}};

    EXPECT_TRUE(simplified({}, 1).triangles.empty());
    EXPECT_TRUE(test::isSame(simplified(one, 1), one));
    EXPECT_TRUE(test::isSame(simplifiedTo(one, 0), one));
}

TEST(Simplify, StoppedItIsEmpty)
{
    std::stop_source source;
    SimplifyOptions options;
    options.triangles = 10;
    options.stop = source.get_token();
    options.progress = [&source](double fraction) {
        if (fraction > 0.3)
            source.request_stop();
    };

    EXPECT_FALSE(simplify(test::waveTorus(120, 60), options).has_value());
}

TEST(Simplify, ProgressNeverFallsAndEndsAtOne)
{
    for (const double tolerance : {0.05, std::numeric_limits<double>::infinity()}) {
        SCOPED_TRACE(testing::Message() << "tolerance " << tolerance);
        std::vector<double> told;
        SimplifyOptions options;
        options.triangles = 1000;
        options.tolerance = tolerance;
        options.progress = [&told](double fraction) { told.push_back(fraction); };

        simplify(test::waveTorus(120, 60), options);

        ASSERT_GT(told.size(), 5u);
        EXPECT_TRUE(std::ranges::is_sorted(told));
        EXPECT_GE(told.front(), 0);
        EXPECT_LT(told[told.size() - 2], 1);
        EXPECT_EQ(told.back(), 1);
        EXPECT_GT(std::ranges::count_if(told, [](double f) { return f > 0.1 && f < 0.9; }), 2);
    }
}

/// What is left of the work after a moment in it, as a share of all of it.
TEST(Simplify, WhatProgressThrowsEndsItSoon)
{
    using Clock = std::chrono::steady_clock;
    struct Enough {};
    const TriangleSurface surface = test::waveTorus(200, 100);
    SimplifyOptions options;
    options.tolerance = 0.05;
    const auto begun = Clock::now();
    simplify(surface, options);
    const auto whole = Clock::now() - begun;

    unsigned calls = 0;
    Clock::time_point thrown;
    options.progress = [&](double) {
        if (++calls < 3)
            return;
        thrown = Clock::now();
        throw Enough();
    };
    EXPECT_THROW(simplify(surface, options), Enough);

    EXPECT_EQ(calls, 3u);
    EXPECT_LT(Clock::now() - thrown, whole / 4);
}

TEST(Simplify, StoppedItEndsSoon)
{
    using Clock = std::chrono::steady_clock;
    const TriangleSurface surface = test::waveTorus(200, 100);
    std::stop_source source;
    SimplifyOptions options;
    options.tolerance = 0.05;
    options.stop = source.get_token();
    const auto begun = Clock::now();
    simplify(surface, options);
    const auto whole = Clock::now() - begun;

    Clock::time_point asked;
    options.progress = [&](double fraction) {
        if (fraction > 0.5 && source.request_stop())
            asked = Clock::now();
    };
    EXPECT_FALSE(simplify(surface, options).has_value());

    EXPECT_LT(Clock::now() - asked, whole / 4);
}

} // namespace
} // namespace vrk::cam
