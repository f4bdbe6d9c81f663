#include "scene/PictureRectangle.h"

#include <Ogre.h>

namespace vrk::visual {

std::unique_ptr<Ogre::Rectangle2D> makePictureRectangle(const std::string& material, Ogre::uint8 renderQueueGroup)
{
    auto rectangle = std::make_unique<Ogre::Rectangle2D>(true);
    rectangle->setCorners(-1, 1, 1, -1);
    rectangle->setBoundingBox(Ogre::AxisAlignedBox::BOX_INFINITE);
    rectangle->setRenderQueueGroup(renderQueueGroup);
    rectangle->setMaterial(Ogre::MaterialManager::getSingleton().getByName(material));
    return rectangle;
}

} // namespace vrk::visual
