#include "scene/core/SceneCore.h"

#include "visual/VisualStateManager.h"

namespace vrk::visual {
namespace {

SceneCore* instance = nullptr;

} // namespace

SceneCore::SceneCore(std::string name, Ogre::SceneManager* sceneManager)
    : name(std::move(name)), sceneManager(sceneManager), states(std::make_unique<VisualStateManager>())
{
    instance = this;
}

SceneCore::~SceneCore()
{
    if (instance == this)
        instance = nullptr;
}

SceneCore* SceneCore::Get()
{
    return instance;
}

} // namespace vrk::visual
