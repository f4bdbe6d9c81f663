#include "scene/core/SceneCore.h"

namespace vrk::visual {
namespace {

SceneCore* instance = nullptr;

} // namespace

SceneCore::SceneCore(std::string name, Ogre::SceneManager* sceneManager, std::shared_ptr<VisualStateManager> states)
    : name(std::move(name)), sceneManager(sceneManager), states(std::move(states))
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
