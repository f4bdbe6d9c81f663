#include "scene/Scene.h"

#include "scene/core/OgreCompat.h"
#include "scene/core/SceneCore.h"
#include "scene/core/UpAxis.h"

#include <Ogre.h>

namespace vrk::visual {
namespace {

struct LightSetup {
    const char* name;
    float diffuse;
    float specular;
    Ogre::Vector3 direction;
};

const LightSetup lights[] = {
    {"light1", 0.3f, 0.3f, {-1.5f, 0.0f, 0.3f}},
    {"light2", 0.4f, 0.3f, {0.5f, -1.0f, 1.0f}},
    {"light3", 0.3f, 0.25f, {2.0f, 1.0f, 1.75f}},
    {"light4", 0.1f, 0.0f, {0.0f, 0.0f, -1.0f}},
};

Ogre::ColourValue grey(float value)
{
    return Ogre::ColourValue(value, value, value, 1.0f);
}

} // namespace

void Scene::createLights()
{
    Ogre::SceneManager& manager = *core->sceneManager;
    const Ogre::Quaternion turn = toOgre(upAxisTurn(core->settings.gridNormalDir));
    for (const LightSetup& setup : lights) {
        Ogre::Light* light = manager.createLight(setup.name);
        light->setType(Ogre::Light::LT_DIRECTIONAL);
        light->setDiffuseColour(grey(setup.diffuse));
        light->setSpecularColour(grey(setup.specular));
        // A node for each: a light without one keeps no direction, and the space must be the world's, since a local
        // direction would turn on from the present one at each call.
        Ogre::SceneNode* node = manager.getRootSceneNode()->createChildSceneNode();
        node->attachObject(light);
        node->setDirection(turn * setup.direction, Ogre::Node::TS_WORLD);
    }
}

} // namespace vrk::visual
