#include "platform/station/SimplifyMeshes.h"

#include "platform/geometry/StlFormat.h"
#include "platform/layout/Body.h"
#include "platform/layout/Part.h"
#include "platform/station/GeometryCache.h"
#include "station/CacheFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <numbers>
#include <string>

namespace vrk::station {
namespace {

using testing::HasSubstr;
using testing::ThrowsMessage;

struct Point {
    float x, y, z;
};

std::string stlOf(const std::vector<std::array<Point, 3>>& triangles)
{
    std::string bytes(80, '\0');
    const auto append = [&bytes](const void* data, std::size_t size) {
        bytes.append(static_cast<const char*>(data), size);
    };
    const auto count = static_cast<std::uint32_t>(triangles.size());
    append(&count, sizeof(count));
    for (const std::array<Point, 3>& triangle : triangles) {
        const std::array<float, 3> normal{0, 0, 1}; // one that is left out makes a copy of the file
        append(normal.data(), sizeof(normal));
        append(triangle.data(), sizeof(triangle));
        bytes.append(2, '\0');
    }
    return bytes;
}

/// A ball of 2 * rings * (rings - 1) * 2 triangles.
std::string ball(float radius, int rings)
{
    const auto at = [&](int ring, int column) {
        const double polar = std::numbers::pi * ring / rings, around = std::numbers::pi * column / rings;
        return Point{static_cast<float>(radius * std::sin(polar) * std::cos(around)),
                     static_cast<float>(radius * std::sin(polar) * std::sin(around)),
                     static_cast<float>(radius * std::cos(polar))};
    };
    std::vector<std::array<Point, 3>> triangles;
    for (int ring = 0; ring < rings; ++ring)
        for (int column = 0; column < 2 * rings; ++column) {
            const int next = (column + 1) % (2 * rings); // the same place, to the last bit
            if (ring > 0)
                triangles.push_back({at(ring, column), at(ring + 1, column), at(ring, next)});
            if (ring + 1 < rings)
                triangles.push_back({at(ring, next), at(ring + 1, column), at(ring + 1, next)});
        }
    return stlOf(triangles);
}

/// The farthest and the nearest place of its corners from the origin.
std::pair<double, double> radiiOf(const std::filesystem::path& file)
{
    std::ifstream stream(file, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(stream), {}};
    std::pair<double, double> radii{0, std::numeric_limits<double>::max()};
    for (std::size_t record = 84; record < bytes.size(); record += 50)
        for (std::size_t corner = record + 12; corner < record + 48; corner += 12) {
            std::array<float, 3> place{};
            std::memcpy(place.data(), bytes.data() + corner, sizeof(place));
            const double radius = std::hypot(place[0], place[1], place[2]);
            radii = {std::max(radii.first, radius), std::min(radii.second, radius)};
        }
    return radii;
}

class SimplifyMeshesTest : public testing::Test {
protected:
    std::vector<std::shared_ptr<layout::Part>> import(const std::string& bytes) const
    {
        return ImportFile(folder.write("ball.stl", bytes));
    }
    static const layout::Body& bodyOf(const std::vector<std::shared_ptr<layout::Part>>& parts)
    {
        return *parts.front()->getBodies().front();
    }

    test::TempFolder folder;
    test::CacheFolder cache;
};

TEST_F(SimplifyMeshesTest, BodyIsDrawnFromAFileWithFewerTrianglesWithinTheTolerance)
{
    const auto parts = import(ball(100, 40));

    const std::vector<SimplifiedMesh> told = SimplifyMeshes(parts, 2);

    ASSERT_EQ(told.size(), 1u);
    EXPECT_EQ(told[0].body, "ball");
    EXPECT_EQ(told[0].before, 6240u);
    EXPECT_LT(told[0].after, 1500u);
    EXPECT_EQ(told[0].tolerance, 2);
    const std::filesystem::path file = bodyOf(parts).getGeometryUri();
    EXPECT_TRUE(GeometryCache::Holds(file));
    EXPECT_EQ(bodyOf(parts).getFileType(), "stl");
    EXPECT_EQ(std::filesystem::file_size(file), 84 + 50 * told[0].after);
    const auto [farthest, nearest] = radiiOf(file);
    EXPECT_LT(farthest, 102);
    EXPECT_GT(nearest, 98);
}

TEST_F(SimplifyMeshesTest, UsualToleranceIsAThousandthOfTheExtentFromTwoHundredthsToOne)
{
    EXPECT_EQ(SimplifyMeshes(import(ball(5, 12)), {}).at(0).tolerance, 0.02);
    EXPECT_NEAR(SimplifyMeshes(import(ball(50, 12)), {}).at(0).tolerance, 0.1, 1e-6);
    EXPECT_EQ(SimplifyMeshes(import(ball(2500, 12)), {}).at(0).tolerance, 1);
}

TEST_F(SimplifyMeshesTest, SameIsAskedOfTheCacheAndAnotherToleranceIsNot)
{
    const std::string bytes = ball(100, 20);
    const auto first = import(bytes);
    const auto again = ImportFile(folder.path() / "ball.stl");
    const auto other = ImportFile(folder.path() / "ball.stl");
    int steps = 0;
    const Progress count = [&steps](std::string_view step, double) { steps += step == "simplifying" ? 1 : 0; };

    SimplifyMeshes(first, 2, count);
    EXPECT_GT(steps, 0);
    steps = 0;
    SimplifyMeshes(again, 2, count);
    EXPECT_EQ(steps, 0);
    SimplifyMeshes(other, 4, count);

    EXPECT_EQ(bodyOf(first).getGeometryUri(), bodyOf(again).getGeometryUri());
    EXPECT_NE(bodyOf(first).getGeometryUri(), bodyOf(other).getGeometryUri());
}

TEST_F(SimplifyMeshesTest, FewTrianglesStayAsTheyAre)
{
    const auto parts = import(ball(100, 4)); // 48
    const std::string before = bodyOf(parts).getGeometryUri();

    const SimplifiedMesh told = SimplifyMeshes(parts, 50).at(0);

    EXPECT_EQ(told.before, 48u);
    EXPECT_EQ(told.after, 48u);
    EXPECT_EQ(bodyOf(parts).getGeometryUri(), before);
}

TEST_F(SimplifyMeshesTest, WhatComesOutNoSimplerStaysAsItIs)
{
    const auto parts = import(ball(100, 10));
    const std::string before = bodyOf(parts).getGeometryUri();

    const SimplifiedMesh told = SimplifyMeshes(parts, 1e-9).at(0);

    EXPECT_EQ(told.after, told.before);
    EXPECT_EQ(bodyOf(parts).getGeometryUri(), before);
}

TEST_F(SimplifyMeshesTest, WhatTheProgressThrowsEndsItAndTheBodyStays)
{
    struct GivenUp {};
    const auto parts = import(ball(100, 40));
    const std::string before = bodyOf(parts).getGeometryUri();

    EXPECT_THROW(SimplifyMeshes(parts, 2,
                                [](std::string_view step, double) {
                                    if (step == "simplifying")
                                        throw GivenUp();
                                }),
                 GivenUp);

    EXPECT_EQ(bodyOf(parts).getGeometryUri(), before);
}

TEST_F(SimplifyMeshesTest, FileThatIsGoneIsNamed)
{
    const auto parts = import(ball(100, 10));
    std::filesystem::remove(folder.path() / "ball.stl");

    EXPECT_THAT([&] { SimplifyMeshes(parts, 2); }, ThrowsMessage<ImportError>(HasSubstr("ball.stl: ")));
}

TEST_F(SimplifyMeshesTest, ToleranceThatIsNoneIsRefused)
{
    const auto parts = import(ball(100, 10));

    EXPECT_THROW(SimplifyMeshes(parts, -1), std::invalid_argument);
    EXPECT_THROW(SimplifyMeshes(parts, std::numeric_limits<double>::quiet_NaN()), std::invalid_argument);
}

TEST_F(SimplifyMeshesTest, TrianglesThatAreAllNoneLeaveTheBodyAsItIs)
{
    const Point place{1, 2, 3};
    const auto parts = import(stlOf(std::vector<std::array<Point, 3>>(100, {place, place, place})));

    const SimplifiedMesh told = SimplifyMeshes(parts, 1).at(0);

    EXPECT_EQ(told.before, 100u);
    EXPECT_EQ(told.after, 100u);
}

} // namespace
} // namespace vrk::station
