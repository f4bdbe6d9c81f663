#pragma once

#include "scene/ViewportRectangle.h"

#include <memory>
#include <vector>

namespace vrk::visual {

/// A thin outline around some visuals, beside that of what is selected: their silhouette is drawn by itself into a mask, ahead
/// of each picture, and its edge into the picture, ahead of the handles. Groups, layers and compositors stay as they are.
///
/// Owner: the scene's records. Thread: render thread.
class HoverOutline : public ViewportRectangle {
public:
    explicit HoverOutline(SceneCore& core);
    ~HoverOutline() override;

    /// What has no visual any more is passed over. Raises `updateScene` for others than before.
    void setAround(const std::vector<unsigned>& wanted);
    const std::vector<unsigned>& getAround() const { return ids; }

    /// Of what is drawn into a mask; all else is made without it.
    static constexpr unsigned maskFlag = 1u << 31;

protected:
    bool prepare() override;
    void viewportLost() override;

private:
    struct Mask;

    void fitMask(const Ogre::Viewport& viewport);
    bool drawMask();

    std::vector<unsigned> ids;
    std::unique_ptr<Mask> mask; // null until something is outlined
};

} // namespace vrk::visual
