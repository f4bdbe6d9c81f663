#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <vector>

namespace Ogre {
class RenderTarget;
}

namespace vrk::visual {

/// What lies in a target: red, green, blue for each pixel, rows from the top, nothing between them. A window needs a view.
/// Thread: render thread.
std::vector<std::uint8_t> readPixels(Ogre::RenderTarget& target);
/// The same, into a place that is used several times.
void readPixels(Ogre::RenderTarget& target, std::vector<std::uint8_t>& pixels);

/// Writes such pixels as a PNG, which is there whole or not at all, by libpng (under its own licence, of the BSD kind).
/// Any thread.
/// @throws std::runtime_error naming the file.
void writePng(const std::filesystem::path& file, unsigned width, unsigned height, std::span<const std::uint8_t> pixels);

} // namespace vrk::visual
