#pragma once

#include "visual/Visual.h"

#include <string>

namespace Ogre {
class InstancedEntity;
}

namespace vrk::visual {

class PartKeeper;

/// The frame of a target, drawn as one instance among thousands: a program may have tens of thousands of targets, and a
/// node with three lines for each would be too much.
///
/// An instance has no material of its own, so that each look is another instance: the normal one stands from the start,
/// those of a highlighted and of a selected target are made when they are first asked for. Of the looks the one that was
/// asked for last is shown; a hidden target stays hidden whatever its look, and is back at the normal one when it is shown
/// again.
///
/// Owner: the parent visual. Thread: render thread. Units: sizes are model units.
class VRK_EXPORT InstanceFrameVisual : public Visual {
public:
    /// A frame of the size that the scene has for its type; along z alone if the scene says so.
    /// @param material  of the normal look; one that draws instances.
    /// @throws Ogre::ItemIdentityException (ERR_ITEM_NOT_FOUND) for an unknown material.
    InstanceFrameVisual(Visual* parent, unsigned id, const std::string& name, VisualType type, std::string material);
    /// Names the same node and the same instances, as a copy of any visual does.
    InstanceFrameVisual(const InstanceFrameVisual&) = default;
    InstanceFrameVisual& operator=(const InstanceFrameVisual&) = default;
    /// Leaves the selection. The batch of an instance stays, even if it is empty now, until
    /// `Scene::cleanupInstanceBatches`.
    ~InstanceFrameVisual() override;

    float getFrameSize() const;
    /// Sets the size of this frame alone, in all looks that have been made so far. Picking is told. A size of 0 draws
    /// nothing.
    void setFrameSize(unsigned size);
    /// A target that is shown is back at its normal look.
    void setVisible(bool visible, bool recursive) override;
    void resetAppearance() override;
    void setSelected() override;
    void setHighlighted() override;
    void clearHighlightOrSelect() override;
    void showLookOfWhole() override; // of its keeper
    /// Takes size and axes from the scene anew, whatever the argument.
    virtual void updateEntity(bool);
    /// Who is told when this target dies; null for nobody.
    void setKeeper(PartKeeper* newKeeper) { keeper = newKeeper; }

protected:
    void sceneEnteredOrLeft() override;

private:
    Ogre::InstancedEntity* makeEntity(const std::string& manager, const std::string& material);
    void showOnly(Ogre::InstancedEntity* wanted);

    Ogre::InstancedEntity* entity = nullptr;
    Ogre::InstancedEntity* highlightEntity = nullptr; // null until it is first needed
    Ogre::InstancedEntity* selectedEntity = nullptr;  // null until it is first needed
    Ogre::InstancedEntity* shown = nullptr;           // one of the three
    PartKeeper* keeper = nullptr;
};

} // namespace vrk::visual
