#include "scene/Scene.h"

#include "platform/broker/SignalBroker.h"
#include "platform/common/Logger.h"
#include "scene/CoarseLook.h"
#include "scene/DepthShade.h"
#include "scene/Grid.h"
#include "scene/core/SceneCore.h"
#include "view/Camera.h"
#include "visual/Visual.h"

#include <fmt/format.h>

#include <Ogre.h>

#include <queue>

namespace vrk::visual {
namespace {

constexpr unsigned gridCellCount = 20;
constexpr unsigned gridCellLength = 1000; // model units
constexpr const char* borderHighlight = "BorderHighlight";

/// @throws Ogre::Exception for an index that is not 1 to 4.
Ogre::Light& lightOf(Ogre::SceneManager& manager, int index)
{
    return *manager.getLight(fmt::format("light{}", index));
}

bool isSolid(const Visual& visual)
{
    return visual.getType() == VisualType::Solid;
}

bool isWireFrame(const Visual& visual)
{
    return visual.getType() == VisualType::WireFrame;
}

} // namespace

// Lights

void Scene::setAmbientLight(const Ogre::ColourValue& colour)
{
    core->sceneManager->setAmbientLight(colour);
    broker::SignalBroker::updateScene();
}

void Scene::setLightDiffuse(int index, float r, float g, float b)
{
    lightOf(*core->sceneManager, index).setDiffuseColour(r, g, b);
    broker::SignalBroker::updateScene();
}

void Scene::setLightSpecular(int index, float r, float g, float b)
{
    lightOf(*core->sceneManager, index).setSpecularColour(r, g, b);
    broker::SignalBroker::updateScene();
}

void Scene::setLightDir(int index, float x, float y, float z)
{
    // In the world's space: a local direction would turn the light on from where it looks now.
    Ogre::SceneNode* node = lightOf(*core->sceneManager, index).getParentSceneNode();
    node->setDirection(x, y, z, Ogre::Node::TS_WORLD);
    node->_update(true, true); // else the light hears of it with the next frame only
    broker::SignalBroker::updateScene();
}

void Scene::setLightEnable(int index, bool enable)
{
    lightOf(*core->sceneManager, index).setVisible(enable);
    broker::SignalBroker::updateScene();
}

// Grid

void Scene::setGrid(bool on)
{
    if (on && !grid)
        grid = std::make_unique<Grid>(*core, gridCellCount, gridCellLength);
}

void Scene::setGridVisible(bool visible)
{
    addRenderTask(
        [this, visible] {
            if (visible)
                setGrid(true);
            if (grid)
                grid->setVisible(visible);
        },
        0);
}

bool Scene::isGridVisible() const
{
    return grid && grid->isVisible();
}

void Scene::setGridNormalDir(int dir)
{
    core->settings.gridNormalDir = dir;
    addRenderTask(
        [this, dir] {
            if (grid)
                grid->orient(dir);
            Camera::Get()->setVerticleDir(dir);
        },
        0);
}

unsigned Scene::GetGridCellCount()
{
    started();
    return Instance->grid ? Instance->grid->getCellCount() : 0;
}

unsigned Scene::GetGridCellLength()
{
    started();
    return Instance->grid ? Instance->grid->getCellLength() : 0;
}

// Display mode

void Scene::setDisplayMode(DisplayMode mode)
{
    addRenderTask(
        [this, mode] {
            Ogre::Camera& camera = *Camera::Get()->ogreCamera();
            switch (mode) {
            case DisplayMode::Shaded:
                camera.setPolygonMode(Ogre::PM_SOLID);
                doSetVisible(isSolid, true);
                doSetVisible(isWireFrame, false);
                break;
            case DisplayMode::ShadedWithEdges:
                camera.setPolygonMode(Ogre::PM_SOLID);
                doSetVisible([](const Visual& visual) { return isSolid(visual) || isWireFrame(visual); }, true);
                break;
            case DisplayMode::Edges:
                camera.setPolygonMode(Ogre::PM_SOLID);
                doSetVisible(isSolid, false);
                doSetVisible(isWireFrame, true);
                break;
            case DisplayMode::Wire:
                camera.setPolygonMode(Ogre::PM_WIREFRAME);
                doSetVisible(isSolid, true);
                doSetVisible(isWireFrame, false);
                break;
            }
        },
        0);
}

/// Shows or hides every visual of the tree that passes the test, also those below a hidden one. Picking is not told.
void Scene::doSetVisible(const std::function<bool(const Visual&)>& test, bool visible)
{
    std::queue<Visual*> waiting;
    waiting.push(core->worldVisual);
    while (!waiting.empty()) {
        Visual* visual = waiting.front();
        waiting.pop();
        for (Visual* child : visual->getChildren())
            waiting.push(child);
        if (test(*visual))
            visual->setVisible(visible, false);
    }
}

// Outline of what is selected

void Scene::setBorderHighlightEnabled(bool enable)
{
    const Camera* camera = Camera::Get();
    Ogre::Viewport* viewport = camera ? camera->ogreCamera()->getViewport() : nullptr;
    if (!viewport)
        return;
    Ogre::CompositorManager& compositors = Ogre::CompositorManager::getSingleton();
    // The shade in pockets may have made a chain.
    if (!compositors.getCompositorChain(viewport)->getCompositor(borderHighlight)) {
        FileLogger::inst()->trace(fmt::format("addCompositor: {}", borderHighlight));
        // OGRE says nothing where the script is missing, and enabling it then does nothing.
        if (!compositors.addCompositor(viewport, borderHighlight, -1))
            FileLogger::inst()->error(fmt::format("no compositor {} in the resources", borderHighlight));
        core->record<DepthShade>().suit(*viewport);
    }
    compositors.setCompositorEnabled(viewport, borderHighlight, enable);
    core->record<CoarseLook>().suit();
}

} // namespace vrk::visual
