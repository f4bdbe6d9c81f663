#include "support/Picture.h"

#include <png.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

namespace vrk::test {

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

testing::AssertionResult matchesBaseline(const Picture& picture, const std::string& name, Tolerance tolerance)
{
    const std::filesystem::path tests = VRK_TESTS_DIR;
    const std::filesystem::path baseline = tests / "baselines" / (name + ".png");
    if (std::getenv("VRK_RENEW_BASELINES")) {
        writePng(baseline, picture);
        return testing::AssertionSuccess();
    }
    const std::filesystem::path output = tests / "output";
    if (!std::filesystem::exists(baseline)) {
        writePng(output / (name + ".actual.png"), picture);
        return testing::AssertionFailure() << baseline << " is missing";
    }
    const Picture expected = readPng(baseline);
    if (expected.width != picture.width || expected.height != picture.height)
        return testing::AssertionFailure() << name << " has another size than its baseline";

    Picture differences{picture.width, picture.height, std::vector<std::uint8_t>(picture.rgb.size())};
    double sum = 0;
    int largest = 0;
    for (std::size_t i = 0; i < picture.rgb.size(); ++i) {
        const int off = std::abs(int{picture.rgb[i]} - int{expected.rgb[i]});
        sum += off;
        largest = std::max(largest, off);
        differences.rgb[i] = static_cast<std::uint8_t>(std::min(255, 4 * off));
    }
    const double mean = sum / static_cast<double>(picture.rgb.size());
    if (largest <= tolerance.largest && mean <= tolerance.mean)
        return testing::AssertionSuccess();
    writePng(output / (name + ".actual.png"), picture);
    writePng(output / (name + ".expected.png"), expected);
    writePng(output / (name + ".difference.png"), differences);
    return testing::AssertionFailure() << name << " differs from its baseline: largest " << largest << ", mean " << mean
                                       << " (allowed " << tolerance.largest << " and " << tolerance.mean
                                       << "); see the pictures in " << output;
}

} // namespace vrk::test
