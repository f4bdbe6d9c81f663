#pragma once

#include "scene/core/SceneCore.h"
#include "selection/VisualSelection.h"
#include "support/SceneFixture.h"
#include "task/JointTargetVisual.h"
#include "task/RobtargetVisual.h"

#include <Ogre.h>
#include <OgreInstancedEntity.h>

#include <string>
#include <vector>

namespace vrk::test {

/// A scene with targets in it. The settings that targets read are back at their start values after each test.
template <typename Base>
class WithTargets : public Base {
protected:
    ~WithTargets() override { settings = testSettings(); }

    /// Neither registered nor selectable.
    visual::RobtargetVisual* addTarget(unsigned id = 801) { return new visual::RobtargetVisual(this->world, id); }
    visual::JointTargetVisual* addJointTarget(unsigned id = 802)
    {
        return new visual::JointTargetVisual(this->world, id);
    }
    /// The same as the scene has them: registered and selectable.
    template <typename Target>
    Target* entered(Target* target)
    {
        visual::SceneCore::Get()->visuals.enter(target);
        picking.addFrameVisual(target);
        return target;
    }

    visual::SceneSettings& settings = visual::SceneCore::Get()->settings;
    selection::VisualSelection& picking = *selection::VisualSelection::Get();
};

/// The instances of a target, in the order in which they were made.
inline std::vector<Ogre::InstancedEntity*> instancesOf(const visual::Visual& target)
{
    std::vector<Ogre::InstancedEntity*> found;
    for (Ogre::MovableObject* object : target.getSceneNode()->getAttachedObjects())
        found.push_back(dynamic_cast<Ogre::InstancedEntity*>(object));
    return found;
}

/// The materials of the instances that are shown.
inline std::vector<std::string> looksOf(const visual::Visual& target)
{
    std::vector<std::string> names;
    for (const Ogre::InstancedEntity* instance : instancesOf(target))
        if (instance->getVisible())
            names.push_back(instance->_getOwner()->getMaterial()->getName());
    return names;
}

/// How far each axis of each instance reaches.
inline std::vector<Ogre::Vector3> scalesOf(const visual::Visual& target)
{
    std::vector<Ogre::Vector3> scales;
    for (const Ogre::InstancedEntity* instance : instancesOf(target))
        scales.push_back(instance->getScale());
    return scales;
}

inline constexpr const char* normalLook = "InstanceRobTarget";
inline constexpr const char* highlightedLook = "InstanceRobTargetHighlight";
inline constexpr const char* selectedLook = "InstanceRobTargetSelected";

} // namespace vrk::test
