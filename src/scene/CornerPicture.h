#pragma once

#include "scene/core/ViewportUsers.h"

#include <OgreRenderTargetListener.h>
#include <OgreTexture.h>

#include <cstdint>
#include <memory>
#include <span>

namespace Ogre {
class Rectangle2D;
} // namespace Ogre

namespace vrk::visual {

class SceneCore;

/// A picture over the lower right corner of the window that the scene's own camera draws into, a pixel of it for one of the
/// window, whatever size that has. Pictures that are drawn into textures are without it.
///
/// Owner: the scene's records. Thread: render thread.
class CornerPicture : public Ogre::RenderTargetListener, public ViewportUser {
public:
    explicit CornerPicture(SceneCore& core);
    ~CornerPicture() override;
    CornerPicture(const CornerPicture&) = delete;
    CornerPicture& operator=(const CornerPicture&) = delete;

    /// See `SetCornerPicture`.
    void show(std::span<const std::uint8_t> rgba, unsigned width, unsigned height, unsigned margin);
    void hide();

    void serve(Ogre::Viewport& viewport, bool isMain) override;
    void forget(Ogre::Viewport& viewport) override;

    void preRenderTargetUpdate(const Ogre::RenderTargetEvent& event) override;
    void postRenderTargetUpdate(const Ogre::RenderTargetEvent& event) override;

private:
    void fitTexture(unsigned width, unsigned height);
    void place(unsigned targetWidth, unsigned targetHeight);

    SceneCore& core;
    Ogre::Viewport* served = nullptr; // of a window
    bool shown = false;
    unsigned margin = 0;
    Ogre::TexturePtr texture; // null until there was a picture
    std::unique_ptr<Ogre::Rectangle2D> rectangle;
};

} // namespace vrk::visual
