#include "scene/core/InstanceManagers.h"

#include "platform/common/Checks.h"

#include <Ogre.h>

namespace vrk::visual {
namespace {

struct Setup {
    const char* key;
    const char* name;
    const char* mesh;
    std::size_t batchSize;
};

constexpr Setup setups[] = {
    {"VRK_FrameInstanceManager", "VRK_FrameInstanceManager", "VRK_FrameMesh", 5000},
    {"InstanceRobTargetHighlight", "RobTargetHighlight", "VRK_FrameMesh", 5000},
    {"InstanceRobTargetSelected", "RobTargetSelected", "VRK_FrameMesh", 5000},
    {"InstancePathArrow", "PathArrow", "path_arrow_head", 500},
};

/// The batch that a manager made first; null before its first instance.
Ogre::InstanceBatch* firstBatch(const Ogre::InstanceManager& manager)
{
    const std::string name = manager.getName() + "/InstanceBatch_0";
    for (const auto& [material, batches] : manager.getInstanceBatchMapIterator())
        for (Ogre::InstanceBatch* batch : batches)
            if (batch->getName() == name)
                return batch;
    return nullptr;
}

/// The first batch owns the vertices and indices that all others of its manager share, those still to come included, and
/// OGRE would free it like any other. An instance that it holds meanwhile keeps it.
void cleanup(Ogre::InstanceManager& manager)
{
    Ogre::InstanceBatch* first = firstBatch(manager);
    Ogre::InstancedEntity* guard = first && first->isBatchUnused() ? first->createInstancedEntity() : nullptr;
    manager.cleanupEmptyBatches();
    if (guard)
        first->removeInstancedEntity(guard);
}

} // namespace

void InstanceManagers::create(Ogre::SceneManager& sceneManager)
{
    for (const Setup& setup : setups)
        managers[setup.key] = sceneManager.createInstanceManager(
            setup.name, setup.mesh, Ogre::ResourceGroupManager::DEFAULT_RESOURCE_GROUP_NAME,
            Ogre::InstanceManager::HWInstancingBasic, setup.batchSize, Ogre::IM_USEALL, 0);
}

Ogre::InstanceManager* InstanceManagers::get(const std::string& name) const
{
    return common::checkedAt(managers, name);
}

void InstanceManagers::cleanupEmptyBatches()
{
    for (const auto& [name, manager] : managers)
        cleanup(*manager);
}

} // namespace vrk::visual
