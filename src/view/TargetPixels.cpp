#include "view/TargetPixels.h"

#include "platform/station/GeometryCache.h"

#include <fmt/format.h>

#include <Ogre.h>

#include <png.h>

#include <stdexcept>
#include <string>

namespace vrk::visual {

std::vector<std::uint8_t> readPixels(Ogre::RenderTarget& target)
{
    std::vector<std::uint8_t> pixels;
    readPixels(target, pixels);
    return pixels;
}

void readPixels(Ogre::RenderTarget& target, std::vector<std::uint8_t>& pixels)
{
    const Ogre::Box area(0, 0, target.getWidth(), target.getHeight());
    pixels.resize(std::size_t{3} * target.getWidth() * target.getHeight());
    target.copyContentsToMemory(area, Ogre::PixelBox(area, Ogre::PF_BYTE_RGB, pixels.data()));
}

void writePng(const std::filesystem::path& file, unsigned width, unsigned height, std::span<const std::uint8_t> pixels)
{
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = width;
    image.height = height;
    image.format = PNG_FORMAT_RGB;
    image.flags = PNG_IMAGE_FLAG_FAST; // a third of the time, for files that are larger by a sixth
    // Into memory: libpng deletes a file that it could not write, whatever that was before.
    png_alloc_size_t size = PNG_IMAGE_PNG_SIZE_MAX(image);
    std::string bytes(size, '\0');
    if (!png_image_write_to_memory(&image, bytes.data(), &size, 0, pixels.data(), 0, nullptr))
        throw std::runtime_error(fmt::format("{}: {}", file.string(), image.message));
    bytes.resize(size);
    station::writeWhole(file, bytes);
}

} // namespace vrk::visual
