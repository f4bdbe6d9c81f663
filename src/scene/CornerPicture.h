#pragma once

#include "scene/ViewportRectangle.h"

#include <cstdint>
#include <span>

namespace vrk::visual {

/// A picture over the lower right corner of the window that the scene's own camera draws into, a pixel of it for one of the
/// window, whatever size that has. Pictures that are drawn into textures are without it.
///
/// Owner: the scene's records. Thread: render thread.
class CornerPicture : public ViewportRectangle {
public:
    explicit CornerPicture(SceneCore& core);

    /// See `SetCornerPicture`.
    void show(std::span<const std::uint8_t> rgba, unsigned width, unsigned height, unsigned margin);
    void hide();

protected:
    bool isFor(const Ogre::Viewport& viewport) const override;
    bool prepare() override;

private:
    void fitTexture(unsigned width, unsigned height);
    void place(unsigned targetWidth, unsigned targetHeight);

    bool shown = false;
    unsigned margin = 0;
    Ogre::TexturePtr texture; // null until there was a picture
};

} // namespace vrk::visual
