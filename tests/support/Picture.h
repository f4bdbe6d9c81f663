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

/// How far a picture may be from its baseline, in steps of 0 to 255: any channel of any pixel, and the mean over all.
/// Drivers round edges differently, so a few pixels along an edge may be far off while the mean stays small.
struct Tolerance {
    double largest = 255.0;
    double mean = 0.5;
};

/// Compares with tests/baselines/<name>.png. A failure leaves <name>.actual.png, .expected.png and .difference.png in
/// tests/output. With VRK_RENEW_BASELINES=1 in the environment the picture becomes the baseline instead.
testing::AssertionResult matchesBaseline(const Picture& picture, const std::string& name, Tolerance tolerance = {});

} // namespace vrk::test
