#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <string>

class QImage;

namespace vrkview {

/// "<file>: the picture cannot be written".
std::string pictureCannotBeWritten(const std::filesystem::path& file);

/// Half as wide and half as high: each pixel is the mean of four, rounded down. Qt's smooth scaling has the same at 1600 x 1000, is
/// off by one or two in some other sizes, and takes some times as long.
/// @param pixels  red, green and blue of rows of `width` pixels without a gap. What is odd at the right and below is left away.
QImage halved(std::span<const std::uint8_t> pixels, int width, int height);
/// The same for some of the rows, into a picture of three bytes for each pixel.
/// @param firstRow  of the halved picture, into which the first two go.
void halveInto(QImage& half, int firstRow, std::span<const std::uint8_t> pixels, int width);

/// Writes a PNG without transparency, packed for speed rather than size.
/// @throws std::runtime_error with the text above.
void savePicture(const QImage& picture, const std::filesystem::path& file);

} // namespace vrkview
