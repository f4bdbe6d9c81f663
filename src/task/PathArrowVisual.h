#pragma once

#include "visual/Visual.h"

namespace Ogre {
class InstancedEntity;
}

namespace vrk::visual {

class PartKeeper;
struct PathArrow;

/// The arrow in the middle of a move's way, drawn as one instance among thousands. It has one look.
///
/// Owner: the parent visual. Thread: render thread.
class VRK_EXPORT PathArrowVisual : public Visual {
public:
    /// @param keeper  told when the arrow dies; null for none.
    PathArrowVisual(Visual* parent, PartKeeper* keeper, const PathArrow& arrow);
    ~PathArrowVisual() override;

    /// Of the arrow's mesh; whatever else hangs here keeps its size.
    void setScale(double x, double y, double z) override;
    /// Of this arrow alone.
    void setVisible(bool visible, bool recursive) override;
    void leaveKeeper() { keeper = nullptr; }

protected:
    void sceneEnteredOrLeft() override;

private:
    PartKeeper* keeper;
    Ogre::InstancedEntity* entity;
};

} // namespace vrk::visual
