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

    task::WObjDataItem* getItem() const { return item; }
    FrameVisual* getUserFrame() const { return userFrame; }
    /// Null once it was removed by its own id.
    FrameVisual* getObjectFrame() const;

private:
    WObjVisual(Visual* parent, task::WObjDataItem& item);
    void placeObjectFrame();
    template <typename Call>
    void forFrames(const Call& call);

    task::WObjDataItem* item;
    FrameVisual* userFrame = nullptr; // a child; the object frame is a child of it
};

} // namespace vrk::visual
