#pragma once

#include "platform/common/Export.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace Ogre {
class RenderTarget;
}

namespace vrk::visual {

/// A picture in memory that a camera can draw to, whatever the window shows.
///
/// Hand `renderTarget` to `Camera::setRenderTarget`, render a frame, read. A camera that draws to it when it dies has no
/// target from then on. Thread: render thread.
class VRK_EXPORT OffscreenTarget {
public:
    /// @param samples  for each pixel, 0 for none; the driver may give fewer.
    /// @throws Ogre::Exception for a size that the driver does not offer.
    OffscreenTarget(unsigned width, unsigned height, unsigned samples);
    ~OffscreenTarget();
    OffscreenTarget(const OffscreenTarget&) = delete;
    OffscreenTarget& operator=(const OffscreenTarget&) = delete;

    unsigned getWidth() const { return width; }
    unsigned getHeight() const { return height; }
    Ogre::RenderTarget* renderTarget() const { return target; }
    /// What was last drawn: red, green, blue for each pixel, rows from the top, nothing between them.
    std::vector<std::uint8_t> read() const;
    /// Writes the same as a PNG, whole or not at all.
    /// @throws std::runtime_error naming the file that cannot be written.
    void savePng(const std::filesystem::path& file) const;

private:
    unsigned width;
    unsigned height;
    std::string textureName;
    Ogre::RenderTarget* target = nullptr;
};

} // namespace vrk::visual
