#pragma once

#include "scene/core/InstanceManagers.h"
#include "scene/core/OwedTasks.h"
#include "scene/core/PublishedCamera.h"
#include "scene/core/RenderTaskQueue.h"
#include "scene/core/SceneRecords.h"
#include "scene/core/SceneSettings.h"
#include "scene/core/VisualRegistry.h"

#include <functional>
#include <memory>
#include <string>

namespace Ogre {
class SceneManager;
}

namespace vrk::visual {

class VisualStateManager;

/// What everything below the scene needs of it: the queue, the registry, the settings, OGRE's scene manager and
/// its managers of instances.
///
/// Owner: the `Scene`, which is built around it. Thread: as its members say.
class VRK_EXPORT SceneCore {
public:
    SceneCore(std::string name, Ogre::SceneManager* sceneManager, std::shared_ptr<VisualStateManager> states);
    ~SceneCore();
    SceneCore(const SceneCore&) = delete;
    SceneCore& operator=(const SceneCore&) = delete;

    /// The core of the one scene; null before start-up.
    static SceneCore* Get();

    /// What a family of the scene's operations keeps. See `SceneRecords`.
    template <typename Record>
    Record& record()
    {
        return records.get<Record>(*this);
    }

    const std::string name;
    Ogre::SceneManager* const sceneManager;
    SceneSettings settings;
    RenderTaskQueue queue;
    OwedTasks owed{queue}; ///< the ends of looks
    VisualRegistry visuals;
    const std::shared_ptr<VisualStateManager> states; ///< the looks of visuals that are selected, highlighted, ...
    InstanceManagers instanceManagers;
    PublishedCamera mainCamera;
    /// Whether a visual, or one that it belongs to, is selected. The scene keeps the selection, and sets this.
    std::function<bool(const Visual*)> isSelected;
    Visual* worldVisual = nullptr; ///< root of the tree, never deleted

private:
    SceneRecords records;
};

} // namespace vrk::visual
