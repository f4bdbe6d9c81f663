#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace vrk::test {

struct Pixel {
    int r = 0;
    int g = 0;
    int b = 0;
};

/// A picture of red, green and blue bytes, rows from the top.
struct Picture {
    unsigned width = 0;
    unsigned height = 0;
    std::vector<std::uint8_t> rgb;

    Pixel at(unsigned x, unsigned y) const;
};

/// The largest difference of a channel.
int difference(const Pixel& a, const Pixel& b);
/// The same over all pixels of two pictures of one size.
int largestDifference(const Picture& a, const Picture& b);
testing::AssertionResult isNear(const Pixel& actual, const Pixel& expected, int tolerance = 12);

Picture readPng(const std::filesystem::path& file);
void writePng(const std::filesystem::path& file, const Picture& picture);

/// Edge of the squares that pictures are compared by; those at the right and lower border may be cut.
constexpr unsigned tileSize = 16;

/// What two pictures of one size differ by, in steps of 0 to 255.
struct Deviation {
    double mean = 0;      ///< over all channels of all pixels
    double worstTile = 0; ///< the same within the tile where it is largest
    unsigned column = 0;  ///< of that tile's first pixel
    unsigned row = 0;
};
Deviation deviationOf(const Picture& picture, const Picture& expected);

/// How far a picture may deviate from its baseline.
struct Tolerance {
    double mean;
    double tile;
};
/// What holds for the baseline of this name.
Tolerance toleranceOf(const std::string& baseline);

/// The names of all baselines, in alphabetical order.
std::vector<std::string> baselineNames();
Picture readBaseline(const std::string& name);

/// Whether the picture deviates from `expected` by no more than is allowed for the baseline of this name.
testing::AssertionResult isWithinTolerance(const Picture& picture, const Picture& expected,
                                           const std::string& baseline);

/// Compares with tests/baselines/<name>.png. A failure leaves <name>.actual.png, .expected.png and .difference.png in
/// tests/output. With VRK_RENEW_BASELINES=1 in the environment the picture becomes the baseline instead.
testing::AssertionResult matchesBaseline(const Picture& picture, const std::string& name);

} // namespace vrk::test
