#include "visual/ManualDrawing.h"

#include "scene/core/OgreCompat.h"
#include "visual/RenderGroups.h"
#include "visual/Visual.h"

#include <Ogre.h>

namespace vrk::visual {
namespace {

constexpr std::size_t colorParameter = 0;
const std::string& group = Ogre::ResourceGroupManager::DEFAULT_RESOURCE_GROUP_NAME;

} // namespace

ManualDrawing::ManualDrawing(Visual& visual, const std::string& name) : visual(visual)
{
    Ogre::SceneManager& manager = *visual.getSceneNode()->getCreator();
    object = manager.createManualObject(freeObjectName(manager, name, Ogre::ManualObjectFactory::FACTORY_TYPE_NAME));
    visual.attachObject(object);
}

ManualDrawing::ManualDrawing(Visual& visual)
    : visual(visual), object(visual.getSceneNode()->getCreator()->createManualObject())
{
    visual.attachObject(object);
}

ManualDrawing::~ManualDrawing()
{
    visual.detachObject(object);
    visual.getSceneNode()->getCreator()->destroyManualObject(object);
}

void ManualDrawing::setColor(const rob::ColorTemplate<float>& color, float alpha)
{
    for (Ogre::ManualObject::ManualObjectSection* section : object->getSections())
        section->setCustomParameter(colorParameter, Ogre::Vector4(color.r, color.g, color.b, alpha));
}

void ManualDrawing::setMaterial(const std::string& name)
{
    // Of an unknown name OGRE would make a material without programs, which ends every frame.
    if (!Ogre::MaterialManager::getSingleton().resourceExists(name, group))
        return;
    for (std::size_t i = 0; i < object->getSections().size(); ++i)
        object->setMaterialName(i, name, group);
}

std::unique_ptr<ManualDrawing> makePointDrawing(Visual& visual)
{
    return std::make_unique<ManualDrawing>(visual, visual.getName() + "_Points");
}

std::unique_ptr<ManualDrawing> makePointDrawing(Visual& visual, const std::string& material,
                                                std::span<const rob::PosTemplate<float>> points)
{
    std::unique_ptr<ManualDrawing> drawing = makePointDrawing(visual);
    Ogre::ManualObject& object = **drawing;
    object.setRenderQueueGroup(renderGroup::lines);
    if (points.empty())
        return drawing;
    object.estimateVertexCount(points.size());
    object.begin(material, Ogre::RenderOperation::OT_POINT_LIST, group);
    for (const rob::PosTemplate<float>& point : points)
        if (fitsBox(point))
            object.position(point.x, point.y, point.z);
    object.end();
    return drawing;
}

} // namespace vrk::visual
