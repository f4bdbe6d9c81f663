#include "support/Picture.h"

#include <png.h>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <stdexcept>

namespace vrk::test {
namespace {

const std::filesystem::path tests = VRK_TESTS_DIR;
const std::filesystem::path baselines = tests / "baselines";

/// Of two pictures of one size: how far each channel is off, four times as bright.
Picture differencesOf(const Picture& a, const Picture& b)
{
    Picture differences{a.width, a.height, std::vector<std::uint8_t>(a.rgb.size())};
    for (std::size_t i = 0; i < a.rgb.size(); ++i)
        differences.rgb[i] = static_cast<std::uint8_t>(std::min(255, 4 * std::abs(int{a.rgb[i]} - int{b.rgb[i]})));
    return differences;
}

} // namespace

Pixel Picture::at(unsigned x, unsigned y) const
{
    const std::size_t i = 3 * (std::size_t{y} * width + x);
    return {rgb.at(i), rgb.at(i + 1), rgb.at(i + 2)};
}

int difference(const Pixel& a, const Pixel& b)
{
    return std::max({std::abs(a.r - b.r), std::abs(a.g - b.g), std::abs(a.b - b.b)});
}

int largestDifference(const Picture& a, const Picture& b)
{
    if (a.width != b.width || a.height != b.height)
        throw std::invalid_argument("the pictures have different sizes");
    int largest = 0;
    for (std::size_t i = 0; i < a.rgb.size(); ++i)
        largest = std::max(largest, std::abs(int{a.rgb[i]} - int{b.rgb[i]}));
    return largest;
}

testing::AssertionResult isNear(const Pixel& actual, const Pixel& expected, int tolerance)
{
    if (difference(actual, expected) <= tolerance)
        return testing::AssertionSuccess();
    return testing::AssertionFailure() << "(" << actual.r << ", " << actual.g << ", " << actual.b << ") is not within "
                                       << tolerance << " of (" << expected.r << ", " << expected.g << ", " << expected.b
                                       << ")";
}

Picture readPng(const std::filesystem::path& file)
{
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_file(&image, file.string().c_str()))
        throw std::runtime_error(file.string() + ": " + image.message);
    image.format = PNG_FORMAT_RGB;
    Picture picture{image.width, image.height, std::vector<std::uint8_t>(PNG_IMAGE_SIZE(image))};
    if (!png_image_finish_read(&image, nullptr, picture.rgb.data(), 0, nullptr))
        throw std::runtime_error(file.string() + ": " + image.message);
    return picture;
}

void writePng(const std::filesystem::path& file, const Picture& picture)
{
    std::filesystem::create_directories(file.parent_path());
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = picture.width;
    image.height = picture.height;
    image.format = PNG_FORMAT_RGB;
    if (!png_image_write_to_file(&image, file.string().c_str(), 0, picture.rgb.data(), 0, nullptr))
        throw std::runtime_error(file.string() + ": " + image.message);
}

Deviation deviationOf(const Picture& picture, const Picture& expected)
{
    if (picture.width != expected.width || picture.height != expected.height)
        throw std::invalid_argument("the pictures have different sizes");
    Deviation deviation;
    double total = 0;
    for (unsigned top = 0; top < picture.height; top += tileSize)
        for (unsigned left = 0; left < picture.width; left += tileSize) {
            const unsigned bottom = std::min(top + tileSize, picture.height);
            const unsigned right = std::min(left + tileSize, picture.width);
            double sum = 0;
            for (unsigned y = top; y < bottom; ++y)
                for (std::size_t i = 3 * (std::size_t{y} * picture.width + left);
                     i < 3 * (std::size_t{y} * picture.width + right); ++i)
                    sum += std::abs(int{picture.rgb[i]} - int{expected.rgb[i]});
            total += sum;
            const double mean = sum / (3.0 * (bottom - top) * (right - left));
            if (mean > deviation.worstTile)
                deviation = {0, mean, left, top};
        }
    deviation.mean = total / static_cast<double>(picture.rgb.size());
    return deviation;
}

Tolerance toleranceOf(const std::string& baseline)
{
    // A debug and a release build draw the same to the byte on Mesa's llvmpipe, but for lines on faces, which are off by up
    // to 0.7 in a tile and 0.004 in the mean. Mesa's softpipe, which rounds edges otherwise, is off by up to 0.8 and 0.05
    // in the pictures that were tried, but for text, which is asked of llvmpipe alone.
    constexpr Tolerance usual{.mean = 0.1, .tile = 1.0};
    // OGRE draws passes of one kind in the order of their addresses, which change from run to run, and the smoothed edges of
    // the instanced frames come out otherwise where they overlap: by up to 7.2 in a tile.
    static const std::map<std::string, Tolerance> exceptions{{"targets", {.mean = 0.1, .tile = 8.0}}};
    const auto found = exceptions.find(baseline);
    return found != exceptions.end() ? found->second : usual;
}

std::vector<std::string> baselineNames()
{
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(baselines))
        names.push_back(entry.path().stem().string());
    std::ranges::sort(names);
    return names;
}

Picture readBaseline(const std::string& name)
{
    return readPng(baselines / (name + ".png"));
}

testing::AssertionResult isWithinTolerance(const Picture& picture, const Picture& expected, const std::string& baseline)
{
    if (expected.width != picture.width || expected.height != picture.height)
        return testing::AssertionFailure() << baseline << " has another size than its baseline";
    const Deviation deviation = deviationOf(picture, expected);
    const Tolerance tolerance = toleranceOf(baseline);
    if (deviation.mean <= tolerance.mean && deviation.worstTile <= tolerance.tile)
        return testing::AssertionSuccess();
    return testing::AssertionFailure() << baseline << " differs from its baseline: mean " << deviation.mean
                                       << ", worst tile " << deviation.worstTile << " at (" << deviation.column << ", "
                                       << deviation.row << ") (allowed " << tolerance.mean << " and " << tolerance.tile
                                       << ")";
}

testing::AssertionResult matchesBaseline(const Picture& picture, const std::string& name)
{
    if (std::getenv("VRK_RENEW_BASELINES")) {
        writePng(baselines / (name + ".png"), picture);
        return testing::AssertionSuccess();
    }
    const std::filesystem::path output = tests / "output";
    if (!std::filesystem::exists(baselines / (name + ".png"))) {
        writePng(output / (name + ".actual.png"), picture);
        return testing::AssertionFailure() << "the baseline of " << name << " is missing";
    }
    const Picture expected = readBaseline(name);
    testing::AssertionResult result = isWithinTolerance(picture, expected, name);
    if (result)
        return result;
    writePng(output / (name + ".actual.png"), picture);
    writePng(output / (name + ".expected.png"), expected);
    if (expected.rgb.size() == picture.rgb.size())
        writePng(output / (name + ".difference.png"), differencesOf(picture, expected));
    return result << "; see the pictures in " << output;
}

} // namespace vrk::test
