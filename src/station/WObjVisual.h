#pragma once

#include "visual/Visual.h"

namespace vrk::task {
class WObjDataItem;
}

namespace vrk::visual {

class FrameVisual;

/// A work object: a user frame and, on it, an object frame, under a group that keeps its own visibility.
///
/// Owner: the parent visual. Thread: render thread.
class VRK_EXPORT WObjVisual : public Visual {
public:
    /// Makes and registers the group and the object frame; both frames can be picked.
    /// @throws std::bad_cast if the node is no work object.
    static void Build(Visual* parent, sdf::SdfNode* node);

    /// Takes owner and poses from the model anew.
    /// @throws std::out_of_range "invalid unordered_map<K, T> key" if the owner has no visual.
    void update() override;
    void resetAppearance() override;
    void setSelected() override;
    void setHighlighted() override;

    FrameVisual* getUserFrame() const { return userFrame; }
    FrameVisual* getObjectFrame() const { return objectFrame; }

private:
    WObjVisual(Visual* parent, task::WObjDataItem& item);
    void placeObjectFrame();

    task::WObjDataItem* item;
    FrameVisual* userFrame = nullptr;   // a child
    FrameVisual* objectFrame = nullptr; // a child of the user frame
};

} // namespace vrk::visual
