#pragma once

#include <filesystem>
#include <string>

class QImage;

namespace vrkview {

/// "<file>: the picture cannot be written".
std::string pictureCannotBeWritten(const std::filesystem::path& file);

/// Writes a PNG without transparency, packed for speed rather than size.
/// @throws std::runtime_error with the text above.
void savePicture(const QImage& picture, const std::filesystem::path& file);

} // namespace vrkview
