#include "visual/Entities.h"

#include "scene/core/OgreCompat.h"
#include "visual/Visual.h"

#include <Ogre.h>

namespace vrk::visual {
namespace {

constexpr std::size_t colorParameter = 0; // the materials' shaders read the colour here
const Ogre::Vector4 defaultColor(0.72f, 0.74f, 0.76f, 1.0f);

} // namespace

Ogre::Entity* attachEntity(Visual& visual, const std::string& name, const std::string& meshName)
{
    Ogre::SceneManager& manager = *visual.getSceneNode()->getCreator();
    Ogre::Entity* entity = manager.createEntity(freeObjectName(manager, name, Ogre::EntityFactory::FACTORY_TYPE_NAME),
                                                meshName, Ogre::ResourceGroupManager::AUTODETECT_RESOURCE_GROUP_NAME);
    for (Ogre::SubEntity* part : entity->getSubEntities())
        part->setCustomParameter(colorParameter, defaultColor);
    visual.attachObject(entity);
    return entity;
}

void destroyEntity(Visual& visual, Ogre::Entity* entity)
{
    visual.detachObject(entity);
    visual.getSceneNode()->getCreator()->destroyEntity(entity);
}

} // namespace vrk::visual
