#include "scene/Scene.h"

#include "handles/AttachedGuis.h"
#include "platform/broker/SignalBroker.h"
#include "platform/common/Checks.h"
#include "scene/BodyLooks.h"
#include "scene/BorderMask.h"
#include "scene/CoarseLook.h"
#include "scene/CornerPicture.h"
#include "scene/DepthClearListener.h"
#include "scene/DepthShade.h"
#include "scene/Grid.h"
#include "scene/HoverOutline.h"
#include "scene/core/Refused.h"
#include "scene/core/SceneCore.h"
#include "scene/core/ViewportUsers.h"
#include "view/Camera.h"
#include "visual/FrameVisual.h"
#include "visual/VisualStateManager.h"

#include <Ogre.h>

#include <stdexcept>

namespace vrk::visual {
namespace {

const Ogre::ColourValue startAmbient(0.3f, 0.3f, 0.3f, 1.0f);

/// The visuals that were entered by `addTempVisual`, until they die.
struct TempVisuals {
    explicit TempVisuals(SceneCore& core)
    {
        core.visuals.whenDeleted([this](const Visual* dying) {
            const auto found = byId.find(dying->getId());
            if (found != byId.end() && found->second == dying)
                byId.erase(found);
        });
    }

    std::unordered_map<unsigned, Visual*> byId;
};

bool isRegistered(const Visual* visual, unsigned id)
{
    return Scene::HasVisual(id) && Scene::GetVisual(id) == visual;
}

bool isRegistered(const Visual* visual)
{
    return isRegistered(visual, visual->getId());
}

std::function<void()> whileRegistered(const Visual* visual, std::function<void()> task)
{
    return [visual, id = visual->getId(), task = std::move(task)] {
        if (isRegistered(visual, id))
            task();
    };
}

} // namespace

Scene* Scene::Instance = nullptr;

Scene::Scene(const std::string& name)
    : core(std::make_unique<SceneCore>(name, Ogre::Root::getSingleton().getSceneManager("VRK_SceneManager"),
                                       std::make_shared<VisualStateManager>()))
{
    depthClearListener = std::make_unique<DepthClearListener>();
    core->sceneManager->addRenderQueueListener(depthClearListener.get());
    borderMask = std::make_unique<BorderMask>();
    auto& viewports = core->record<ViewportUsers>();
    // First those that prepare a picture: a compositor may draw it ahead of the window itself.
    viewports.add(core->record<HoverOutline>());
    viewports.add(core->record<CornerPicture>());
    viewports.add(core->record<BodyLooks>());
    viewports.add(core->record<DepthShade>());
    viewports.add(core->record<CoarseLook>());
    Ogre::MovableObject::setDefaultVisibilityFlags(~HoverOutline::maskFlag);
    core->instanceManagers.create(*core->sceneManager);
    core->worldVisual = new Visual(this);
    core->isSelected = [this](const Visual* visual) { return isSelected(visual); };
}

Scene::~Scene()
{
    cameras.clear();
    core->sceneManager->removeRenderQueueListener(depthClearListener.get());
    if (Instance == this)
        Instance = nullptr;
}

Scene* Scene::Get()
{
    return Instance;
}

SceneCore& Scene::started()
{
    if (!Instance)
        throw std::logic_error("The library has not been started.");
    return *Instance->core;
}

void Scene::Init(const SceneSettings& settings)
{
    Instance = new Scene("Daltrimo Scene");
    Instance->core->settings = settings;
    Instance->createCamera("camera0");
    Instance->core->visuals.enter(
        new FrameVisual(Instance->core->worldVisual, static_cast<float>(settings.worldFrameSize)));
    Instance->core->sceneManager->setAmbientLight(startAmbient);
    broker::SignalBroker::updateScene();
    Instance->createLights();
}

std::string Scene::GetName()
{
    return started().name;
}

void Scene::addRenderTask(std::function<void()>&& task, std::uint64_t key, const std::source_location& from)
{
    core->queue.post(std::move(task), key, from.function_name());
}

/// Posts work on a visual, which is passed over if the visual has died by then: what is asked of it, by the mouse for one,
/// may well meet an earlier removal in the queue. Of a visual that stands in no registry nobody knows; its owner keeps it
/// alive.
void Scene::addVisualTask(const Visual* visual, std::function<void()> task, const std::source_location& from)
{
    addRenderTask(isRegistered(visual) ? whileRegistered(visual, std::move(task)) : std::move(task), 0, from);
}

/// As `addVisualTask`, for the end of a look whose record is gone from here on: it is done later if a failing task takes it
/// along. Not so for a visual that stands in no registry: its owner keeps it alive for one batch only.
void Scene::addEndOfLook(const Visual* visual, std::function<void()> task)
{
    if (isRegistered(visual))
        core->owed.post(whileRegistered(visual, std::move(task)));
    else
        addRenderTask(std::move(task), 0);
}

void Scene::processMsgs()
{
    core->queue.run();
}

void Scene::processMsgs(const RenderTaskQueue::FailureHandler& told)
{
    core->queue.run(told);
}

void Scene::instanceDirty()
{
    core->queue.setInstanceDirty();
}

Visual* Scene::GetVisual(unsigned id)
{
    return started().visuals.get(id);
}

bool Scene::HasVisual(unsigned id)
{
    return started().visuals.has(id);
}

Visual* Scene::GetWorldVisual()
{
    return started().worldVisual;
}

VisualStateManager* Scene::GetStateManager()
{
    return started().states.get();
}

Ogre::SceneManager* Scene::GetSceneManager()
{
    return started().sceneManager;
}

Ogre::InstanceManager* Scene::GetInstanceMgr(const std::string& name)
{
    return started().instanceManagers.get(name);
}

void Scene::addTempVisual(Visual* visual)
{
    refuseNull(visual, "addTempVisual", "a visual");
    core->record<TempVisuals>().byId[visual->getId()] = visual;
}

void Scene::deleteVisual(Visual* visual)
{
    refuseNull(visual, "deleteVisual", "a visual");
    Visual::Delete(visual);
}

void Scene::removeVisual(unsigned id)
{
    addRenderTask([this, id] { doRemoveVisual(id); }, 0);
}

void Scene::doRemoveVisual(unsigned id)
{
    Visual* visual = GetVisual(id);
    core->record<AttachedGuis>().rescueCurrentFrom(visual);
    deleteVisual(visual);
}

void Scene::removeTempVisual(unsigned id)
{
    // Also out of the selection, by `deleteVisual`: a dead visual there would be met by the next pick.
    addRenderTask([this, id] { deleteVisual(common::checkedAt(core->record<TempVisuals>().byId, id)); }, 0);
}

void Scene::cleanupInstanceBatches()
{
    addRenderTask([this] { core->instanceManagers.cleanupEmptyBatches(); }, 0);
}

Camera* Scene::createCamera(const std::string& name)
{
    return cameras.emplace_back(std::make_unique<Camera>(name, this)).get();
}

} // namespace vrk::visual
