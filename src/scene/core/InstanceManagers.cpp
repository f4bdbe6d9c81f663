#include "scene/core/InstanceManagers.h"

#include "platform/common/Checks.h"

#include <Ogre.h>

#include <algorithm>
#include <vector>

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

/// How many batches its manager had made before this one.
unsigned long numberOf(const Ogre::InstanceBatch& batch)
{
    const std::string& name = batch.getName();
    return std::stoul(name.substr(name.rfind('_') + 1));
}

/// Batches that draw with the same vertices and indices. The oldest of them owns these: OGRE frees them with it.
struct SharingBatches {
    Ogre::InstanceBatch* owner = nullptr;
    bool isUsed = false;
};

std::vector<SharingBatches> sharingBatches(const Ogre::InstanceManager& manager)
{
    std::unordered_map<const Ogre::IndexData*, SharingBatches> byIndices;
    for (const auto& [material, batches] : manager.getInstanceBatchMapIterator()) {
        for (Ogre::InstanceBatch* batch : batches) {
            Ogre::RenderOperation drawn;
            batch->getRenderOperation(drawn);
            SharingBatches& sharing = byIndices[drawn.indexData];
            if (!sharing.owner || numberOf(*batch) < numberOf(*sharing.owner))
                sharing.owner = batch;
            sharing.isUsed = sharing.isUsed || !batch->isBatchUnused();
        }
    }
    std::vector<SharingBatches> found;
    for (const auto& [indices, sharing] : byIndices)
        found.push_back(sharing);
    return found;
}

/// OGRE makes vertices and indices with the first batch of each material, and again where a material has lost all of its
/// batches. A further batch of whatever material takes those that were made last. So an owner stays while any batch that
/// shares with it is in use, and the last owner for those still to come. An instance that an owner holds meanwhile keeps it
/// from being freed like any other empty batch.
void cleanup(Ogre::InstanceManager& manager)
{
    const std::vector<SharingBatches> all = sharingBatches(manager);
    const auto last =
        std::ranges::max_element(all, {}, [](const SharingBatches& sharing) { return numberOf(*sharing.owner); });
    std::vector<Ogre::InstancedEntity*> guards;
    for (auto sharing = all.begin(); sharing != all.end(); ++sharing)
        if (sharing->owner->isBatchUnused() && (sharing->isUsed || sharing == last))
            guards.push_back(sharing->owner->createInstancedEntity());
    manager.cleanupEmptyBatches();
    for (Ogre::InstancedEntity* guard : guards)
        guard->_getOwner()->removeInstancedEntity(guard);
}

} // namespace

/// OGRE draws a batch where the box of its instances is in view. It makes the boxes itself with the first picture of a frame, of
/// where they stood in the frame before, and not at all where a shadow was taken ahead of the frame: what had been moved, or stood
/// there for the first time, was not drawn.
class InstanceManagers::BoundsKeeper : public Ogre::FrameListener {
public:
    BoundsKeeper(const InstanceManagers& owner, Ogre::SceneManager& scene) : owner(owner), scene(scene)
    {
        Ogre::Root::getSingleton().addFrameListener(this);
    }
    ~BoundsKeeper() override { Ogre::Root::getSingleton().removeFrameListener(this); }
    /// Places that have not changed cost nothing.
    bool frameStarted(const Ogre::FrameEvent&) override
    {
        Ogre::Node::processQueuedUpdates();
        scene.getRootSceneNode()->_update(true, false);
        for (const auto& [name, manager] : owner.managers)
            manager->_updateDirtyBatches();
        return true;
    }

private:
    const InstanceManagers& owner;
    Ogre::SceneManager& scene;
};

InstanceManagers::InstanceManagers() = default;

InstanceManagers::~InstanceManagers() = default;

void InstanceManagers::create(Ogre::SceneManager& sceneManager)
{
    for (const Setup& setup : setups)
        managers[setup.key] = sceneManager.createInstanceManager(
            setup.name, setup.mesh, Ogre::ResourceGroupManager::DEFAULT_RESOURCE_GROUP_NAME,
            Ogre::InstanceManager::HWInstancingBasic, setup.batchSize, Ogre::IM_USEALL, 0);
    bounds = std::make_unique<BoundsKeeper>(*this, sceneManager);
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
