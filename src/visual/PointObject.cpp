#include "visual/PointObject.h"

#include "scene/core/OgreCompat.h"
#include "visual/RenderGroups.h"
#include "visual/Visual.h"

#include <Ogre.h>

namespace vrk::visual {
namespace {

constexpr std::size_t colorParameter = 0; // the materials' shaders read the colour here
const std::string& group = Ogre::ResourceGroupManager::DEFAULT_RESOURCE_GROUP_NAME;

} // namespace

Ogre::ManualObject* makeManualObject(Visual& visual)
{
    Ogre::SceneManager& manager = *visual.getSceneNode()->getCreator();
    Ogre::ManualObject* object = manager.createManualObject(
        freeObjectName(manager, visual.getName() + "_Points", Ogre::ManualObjectFactory::FACTORY_TYPE_NAME));
    visual.attachObject(object);
    return object;
}

Ogre::ManualObject* makePoints(Visual& visual, const std::string& material,
                               std::span<const rob::PosTemplate<float>> points)
{
    Ogre::ManualObject* object = makeManualObject(visual);
    object->setRenderQueueGroup(renderGroup::lines);
    if (points.empty())
        return object;
    object->estimateVertexCount(points.size());
    object->begin(material, Ogre::RenderOperation::OT_POINT_LIST, group);
    for (const rob::PosTemplate<float>& point : points)
        if (fitsBox(point))
            object->position(point.x, point.y, point.z);
    object->end();
    return object;
}

void destroyPoints(Visual& visual, Ogre::ManualObject* object)
{
    visual.detachObject(object);
    visual.getSceneNode()->getCreator()->destroyManualObject(object);
}

void setPointColor(Ogre::ManualObject& object, const rob::ColorTemplate<float>& color, float alpha)
{
    for (Ogre::ManualObject::ManualObjectSection* section : object.getSections())
        section->setCustomParameter(colorParameter, Ogre::Vector4(color.r, color.g, color.b, alpha));
}

void setPointMaterial(Ogre::ManualObject& object, const std::string& name)
{
    // Of an unknown name OGRE would make a material without programs, which ends every frame.
    if (!Ogre::MaterialManager::getSingleton().resourceExists(name, group))
        return;
    for (std::size_t i = 0; i < object.getSections().size(); ++i)
        object.setMaterialName(i, name, group);
}

} // namespace vrk::visual
