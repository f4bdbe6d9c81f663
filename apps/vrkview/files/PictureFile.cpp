#include "files/PictureFile.h"

#include <QImage>

#include <png.h>

#include <cstdio>
#include <memory>
#include <stdexcept>

namespace vrkview {
namespace {

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

bool writePng(const QImage& picture, std::FILE* file)
{
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(picture.width());
    image.height = static_cast<png_uint_32>(picture.height());
    image.format = PNG_FORMAT_RGB;
    // A third of the time, for files that are larger by a sixth.
    image.flags = PNG_IMAGE_FLAG_FAST;
    return png_image_write_to_stdio(&image, file, 0, picture.constBits(),
                                    static_cast<png_int_32>(picture.bytesPerLine()), nullptr) != 0;
}

} // namespace

std::string pictureCannotBeWritten(const std::filesystem::path& file)
{
    return file.string() + ": the picture cannot be written";
}

QImage halved(std::span<const std::uint8_t> pixels, int width, int height)
{
    QImage half(width / 2, height / 2, QImage::Format_RGB888);
    halveInto(half, 0, pixels, width);
    return half;
}

void halveInto(QImage& half, int firstRow, std::span<const std::uint8_t> pixels, int width)
{
    const std::size_t row = std::size_t{3} * static_cast<std::size_t>(width);
    const auto rows = static_cast<int>(pixels.size() / (2 * row));
    for (int y = 0; y < rows; ++y) {
        const std::uint8_t* upper = &pixels[2 * static_cast<std::size_t>(y) * row];
        const std::uint8_t* lower = upper + row;
        std::uint8_t* to = half.scanLine(firstRow + y);
        for (int x = 0; x < half.width(); ++x, upper += 6, lower += 6, to += 3)
            for (int channel = 0; channel < 3; ++channel)
                to[channel] = static_cast<std::uint8_t>(
                    (upper[channel] + upper[channel + 3] + lower[channel] + lower[channel + 3]) / 4);
    }
}

void savePicture(const QImage& picture, const std::filesystem::path& file)
{
    const QImage opaque = picture.convertToFormat(QImage::Format_RGB888);
    std::unique_ptr<std::FILE, CloseFile> stream(std::fopen(file.c_str(), "wb"));
    const bool isWritten = stream && !opaque.isNull() && writePng(opaque, stream.get());
    if (!isWritten || std::fclose(stream.release()) != 0)
        throw std::runtime_error(pictureCannotBeWritten(file));
}

} // namespace vrkview
