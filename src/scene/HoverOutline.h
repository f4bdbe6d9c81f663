#pragma once

#include "scene/core/ViewportUsers.h"

#include <OgreRenderTargetListener.h>

#include <memory>
#include <vector>

namespace Ogre {
class Rectangle2D;
} // namespace Ogre

namespace vrk::visual {

class SceneCore;

/// A thin outline around some visuals, beside that of what is selected: their silhouette is drawn by itself into a mask, ahead
/// of each picture, and its edge into the picture, ahead of the handles. Groups, layers and compositors stay as they are.
///
/// Owner: the scene's records. Thread: render thread.
class HoverOutline : public Ogre::RenderTargetListener, public ViewportUser {
public:
    explicit HoverOutline(SceneCore& core);
    ~HoverOutline() override;
    HoverOutline(const HoverOutline&) = delete;
    HoverOutline& operator=(const HoverOutline&) = delete;

    /// What has no visual any more is passed over. Raises `updateScene` for others than before.
    void setAround(const std::vector<unsigned>& wanted);
    const std::vector<unsigned>& getAround() const { return ids; }

    void serve(Ogre::Viewport& viewport, bool isMain) override;
    void forget(Ogre::Viewport& viewport) override;

    void preRenderTargetUpdate(const Ogre::RenderTargetEvent& event) override;
    void postRenderTargetUpdate(const Ogre::RenderTargetEvent& event) override;

    /// Of what is drawn into a mask; all else is made without it.
    static constexpr unsigned maskFlag = 1u << 31;

private:
    struct Mask;

    void fitMask(const Ogre::Viewport& viewport);
    bool drawMask();

    SceneCore& core;
    std::vector<unsigned> ids;
    Ogre::Viewport* served = nullptr;
    std::unique_ptr<Mask> mask; // null until something is outlined
    std::unique_ptr<Ogre::Rectangle2D> rectangle;
};

} // namespace vrk::visual
