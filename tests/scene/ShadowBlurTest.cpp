#include "scene/ShadowBlur.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>

namespace vrk::visual {
namespace {

/// Nothing over a square of this many places, each of length 1.
HeightMap emptyMap(unsigned side)
{
    return {side, side, 1, 100, 100, std::vector<float>(std::size_t{side} * side, 1.0f)};
}

/// What is this high over a square of 20 in its middle.
HeightMap squareAt(float height)
{
    HeightMap map = emptyMap(100);
    for (unsigned y = 40; y < 60; ++y)
        for (unsigned x = 40; x < 60; ++x)
            map.heights[y * map.width + x] = height;
    return map;
}

TEST(SoftShadow, NothingThrowsNone)
{
    EXPECT_EQ(std::ranges::max(softShadow(emptyMap(30))), 0);
}

TEST(SoftShadow, WhatIsHigherThanTheReachThrowsNone)
{
    HeightMap map = squareAt(0.9f);
    map.reach = 50;
    EXPECT_EQ(std::ranges::max(softShadow(map)), 0);
}

TEST(SoftShadow, WhatStandsOnTheGroundIsDarkestAndFadesOutward)
{
    const HeightMap map = squareAt(0);
    const std::vector<std::uint8_t> shadow = softShadow(map);
    const auto at = [&](unsigned x, unsigned y) { return int{shadow[y * map.width + x]}; };

    EXPECT_GT(at(50, 50), 130);
    EXPECT_LT(at(50, 50), 200) << "the ground is seen through it";
    for (unsigned x = 51; x < 100; ++x)
        EXPECT_LE(at(x, 50), at(x - 1, 50)) << x;
    EXPECT_GT(at(62, 50), 15);
    EXPECT_LT(at(61, 50), at(58, 50) * 0.75);
    EXPECT_EQ(at(99, 50), 0);
}

TEST(SoftShadow, IsLighterAndSofterBelowWhatIsHigher)
{
    const std::vector<std::uint8_t> standing = softShadow(squareAt(0)), above = softShadow(squareAt(0.3f));
    const auto at = [](const std::vector<std::uint8_t>& shadow, unsigned x) { return double(shadow[50 * 100 + x]); };

    EXPECT_LT(at(above, 50), at(standing, 50) / 2);
    EXPECT_GT(at(above, 50), 15);
    EXPECT_GT(at(above, 62) / at(above, 50), 1.5 * at(standing, 62) / at(standing, 50));
}

TEST(SoftShadow, IsTheSameToAllSides)
{
    const HeightMap map = squareAt(0);
    const std::vector<std::uint8_t> shadow = softShadow(map);
    for (unsigned y = 0; y < 100; ++y)
        for (unsigned x = 0; x < 100; ++x) {
            ASSERT_NEAR(shadow[y * 100 + x], shadow[y * 100 + 99 - x], 1) << x << ' ' << y;
            ASSERT_NEAR(shadow[y * 100 + x], shadow[x * 100 + y], 1) << x << ' ' << y;
        }
}

TEST(SoftShadow, OfAnOblongThatIsTurnedOverIsTurnedOver)
{
    HeightMap wide{90, 50, 1, 100, 100, std::vector<float>(std::size_t{90} * 50, 1.0f)};
    HeightMap high{50, 90, 1, 100, 100, wide.heights};
    for (unsigned y = 10; y < 30; ++y)
        for (unsigned x = 20; x < 75; ++x)
            wide.heights[y * 90 + x] = high.heights[x * 50 + y] = 0.002f * static_cast<float>(x);

    const std::vector<std::uint8_t> ofWide = softShadow(wide), ofHigh = softShadow(high);

    EXPECT_GT(std::ranges::max(ofWide), 60);
    for (unsigned y = 0; y < 50; ++y)
        for (unsigned x = 0; x < 90; ++x)
            ASSERT_NEAR(ofWide[y * 90 + x], ofHigh[x * 50 + y], 1) << x << ' ' << y;
}

TEST(SoftShadow, OnePlaceIsEnough)
{
    EXPECT_EQ(softShadow({1, 1, 1, 1, 1, {0.0f}}).size(), 1u);
    EXPECT_TRUE(softShadow({}).empty());
}

} // namespace
} // namespace vrk::visual
