#pragma once

#include "scene/core/ViewportUsers.h"

#include <OgreRenderTargetListener.h>
#include <OgreTexture.h>

#include <memory>

namespace Ogre {
class Rectangle2D;
} // namespace Ogre

namespace vrk::visual {

class SceneCore;

/// A rectangle over the picture of the scene's own camera, filled by a texture. It is in no other picture.
///
/// Owner: the scene's records. Thread: render thread.
class ViewportRectangle : public Ogre::RenderTargetListener, public ViewportUser {
public:
    ~ViewportRectangle() override;
    ViewportRectangle(const ViewportRectangle&) = delete;
    ViewportRectangle& operator=(const ViewportRectangle&) = delete;

    void serve(Ogre::Viewport& viewport, bool isMain) final;
    void forget(Ogre::Viewport& viewport) final;
    void preRenderTargetUpdate(const Ogre::RenderTargetEvent& event) final;
    void postRenderTargetUpdate(const Ogre::RenderTargetEvent& event) final;

protected:
    /// @param material  of one texture.
    /// @param group     the queue group in which it is drawn.
    ViewportRectangle(SceneCore& core, const char* material, Ogre::uint8 group);

    /// Of the scene's own camera; null while that draws nowhere.
    Ogre::Viewport* viewport() const { return served; }
    /// Null until it is filled for the first time.
    Ogre::Rectangle2D* rectangle() const { return drawn.get(); }
    void fillWith(const Ogre::TexturePtr& texture);

    /// Whether it is drawn over the pictures of this viewport.
    virtual bool isFor(const Ogre::Viewport&) const { return true; }
    /// Ahead of each picture, and of what compositors draw for it.
    /// @return whether it is drawn over that.
    virtual bool prepare() = 0;
    /// The viewport dies after this.
    virtual void viewportLost() {}

private:
    SceneCore& core;
    const char* material;
    Ogre::uint8 group;
    Ogre::Viewport* served = nullptr;
    std::unique_ptr<Ogre::Rectangle2D> drawn;
};

} // namespace vrk::visual
