#pragma once

#include "platform/common/Export.h"

#include <memory>
#include <string>
#include <unordered_map>

namespace Ogre {
class InstanceManager;
class SceneManager;
} // namespace Ogre

namespace vrk::visual {

/// OGRE's managers of hardware instances, by the name of what they draw: the frames of targets in their three states,
/// and the arrows of paths.
///
/// Thread: render thread.
class VRK_EXPORT InstanceManagers {
public:
    InstanceManagers();
    ~InstanceManagers();
    InstanceManagers(const InstanceManagers&) = delete;
    InstanceManagers& operator=(const InstanceManagers&) = delete;

    /// Makes the four managers. The meshes that they draw must stand.
    void create(Ogre::SceneManager& sceneManager);
    /// @throws std::out_of_range "invalid unordered_map<K, T> key" for an unknown name.
    Ogre::InstanceManager* get(const std::string& name) const;
    /// Frees the batches in which no instance is left.
    void cleanupEmptyBatches();

private:
    class BoundsKeeper;

    std::unordered_map<std::string, Ogre::InstanceManager*> managers;
    std::unique_ptr<BoundsKeeper> bounds;
};

} // namespace vrk::visual
