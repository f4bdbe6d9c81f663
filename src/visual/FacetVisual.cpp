#include "visual/FacetVisual.h"

#include "scene/core/OgreCompat.h"
#include "visual/RenderGroups.h"

#include <Ogre.h>

namespace vrk::visual {
namespace {

/// Custom parameter 0 of what has been given no colour. It is always set: a material that reads it would else draw with the
/// colour of whatever was drawn before.
constexpr std::size_t colorParameter = 0;
const Ogre::Vector4 defaultColor(0.72f, 0.74f, 0.76f, 1.0f);

} // namespace

void FacetVisual::setSelected()
{
    Visual::setSelected();
    setRenderQueueGroup(renderGroup::selected);
}

void FacetVisual::clearHighlightOrSelect()
{
    Visual::clearHighlightOrSelect();
    setRenderQueueGroup(renderGroup::normal);
}

void FacetVisual::setRenderQueueGroup(unsigned char group)
{
    for (Ogre::MovableObject* object : sceneNode->getAttachedObjects())
        object->setRenderQueueGroup(group);
}

Ogre::Entity* FacetVisual::makeEntity(const std::string& entityName, const std::string& meshName)
{
    Ogre::SceneManager& manager = *sceneNode->getCreator();
    Ogre::Entity* entity =
        manager.createEntity(freeObjectName(manager, entityName, Ogre::EntityFactory::FACTORY_TYPE_NAME), meshName,
                             Ogre::ResourceGroupManager::AUTODETECT_RESOURCE_GROUP_NAME);
    for (Ogre::SubEntity* part : entity->getSubEntities())
        part->setCustomParameter(colorParameter, defaultColor);
    attachObject(entity);
    return entity;
}

std::uint64_t FacetVisual::TrianglesOf(const Ogre::Entity* entity)
{
    std::uint64_t sum = 0;
    if (entity)
        for (const Ogre::SubMesh* part : entity->getMesh()->getSubMeshes())
            sum += part->indexData->indexCount / 3;
    return sum;
}

std::uint64_t FacetVisual::VerticesOf(const Ogre::Entity* entity)
{
    std::uint64_t sum = 0;
    if (entity)
        for (const Ogre::SubMesh* part : entity->getMesh()->getSubMeshes())
            sum += part->vertexData->vertexCount;
    return sum;
}

} // namespace vrk::visual
