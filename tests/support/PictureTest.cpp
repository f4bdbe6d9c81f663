#include "support/Picture.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <map>
#include <tuple>

namespace vrk::test {
namespace {

using testing::IsEmpty;
using testing::Not;

/// The colour that most of the picture has.
Pixel backgroundOf(const Picture& picture)
{
    std::map<std::tuple<int, int, int>, std::size_t> counts;
    for (unsigned y = 0; y < picture.height; ++y)
        for (unsigned x = 0; x < picture.width; ++x) {
            const Pixel pixel = picture.at(x, y);
            ++counts[{pixel.r, pixel.g, pixel.b}];
        }
    const auto most = std::ranges::max_element(counts, {}, [](const auto& count) { return count.second; });
    const auto [r, g, b] = most->first;
    return {r, g, b};
}

/// A part of a picture that ends with the picture.
struct Part {
    unsigned left = 0;
    unsigned top = 0;
    unsigned width = tileSize;
    unsigned height = tileSize;
    int strength = 0; ///< the sum of its pixels' differences from the background
};

template <typename Call>
void forEachPixel(const Picture& picture, const Part& part, const Call& call)
{
    for (unsigned y = part.top; y < std::min(part.top + part.height, picture.height); ++y)
        for (unsigned x = part.left; x < std::min(part.left + part.width, picture.width); ++x)
            call(x, y);
}

Picture wiped(Picture picture, const Part& part, const Pixel& color)
{
    forEachPixel(picture, part, [&](unsigned x, unsigned y) {
        const std::size_t i = 3 * (std::size_t{y} * picture.width + x);
        picture.rgb[i] = static_cast<std::uint8_t>(color.r);
        picture.rgb[i + 1] = static_cast<std::uint8_t>(color.g);
        picture.rgb[i + 2] = static_cast<std::uint8_t>(color.b);
    });
    return picture;
}

/// Where something is seen: as much as a thin line that crosses the tile.
std::vector<Part> tilesWithContent(const Picture& picture, const Pixel& background)
{
    std::vector<Part> found;
    for (unsigned top = 0; top < picture.height; top += tileSize)
        for (unsigned left = 0; left < picture.width; left += tileSize) {
            unsigned seen = 0;
            Part tile{.left = left, .top = top};
            forEachPixel(picture, tile, [&](unsigned x, unsigned y) {
                const int off = difference(picture.at(x, y), background);
                seen += off > 24 ? 1 : 0;
                tile.strength += off;
            });
            if (seen >= tileSize)
                found.push_back(tile);
        }
    return found;
}

TEST(Baselines, MatchThemselves)
{
    ASSERT_THAT(baselineNames(), Not(IsEmpty()));
    for (const std::string& name : baselineNames()) {
        const Picture baseline = readBaseline(name);

        EXPECT_TRUE(isWithinTolerance(baseline, baseline, name));
    }
}

TEST(Baselines, RefuseAnEmptyPicture)
{
    for (const std::string& name : baselineNames()) {
        const Picture baseline = readBaseline(name);

        const Picture empty =
            wiped(baseline, {.width = baseline.width, .height = baseline.height}, backgroundOf(baseline));

        EXPECT_FALSE(isWithinTolerance(empty, baseline, name)) << name;
    }
}

TEST(Baselines, RefuseAPictureInWhichOneTileWithContentIsWiped)
{
    for (const std::string& name : baselineNames()) {
        const Picture baseline = readBaseline(name);
        const Pixel background = backgroundOf(baseline);
        std::vector<Part> tiles = tilesWithContent(baseline, background);
        ASSERT_THAT(tiles, Not(IsEmpty())) << name;

        // One of the faintest: of ten tiles, nine are more than it.
        const auto faint = tiles.begin() + std::ssize(tiles) / 10;
        std::ranges::nth_element(tiles, faint, {}, &Part::strength);

        EXPECT_FALSE(isWithinTolerance(wiped(baseline, *faint, background), baseline, name))
            << name << " at (" << faint->left << ", " << faint->top << ")";
    }
}

TEST(Baselines, RefuseAPictureOfAnotherSize)
{
    const std::string name = baselineNames().front();
    const Picture baseline = readBaseline(name);

    EXPECT_FALSE(isWithinTolerance({1, 1, {0, 0, 0}}, baseline, name));
}

TEST(Deviation, IsTakenOverTheWholePictureAndOverTheWorstTile)
{
    const Picture black{40, 20, std::vector<std::uint8_t>(3 * 40 * 20)};
    const Picture corner = wiped(black, {.left = 32, .top = 16}, {30, 60, 90}); // of 8 x 4 pixels: the border cuts it

    const Deviation deviation = deviationOf(corner, black);

    EXPECT_DOUBLE_EQ(deviation.worstTile, 60);
    EXPECT_EQ(deviation.column, 32u);
    EXPECT_EQ(deviation.row, 16u);
    EXPECT_DOUBLE_EQ(deviation.mean, 60.0 * 8 * 4 / (40 * 20));
}

} // namespace
} // namespace vrk::test
