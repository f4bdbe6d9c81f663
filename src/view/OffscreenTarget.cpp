#include "view/OffscreenTarget.h"

#include "view/TargetPixels.h"

#include <Ogre.h>

namespace vrk::visual {

OffscreenTarget::OffscreenTarget(unsigned width, unsigned height, unsigned samples) : width(width), height(height)
{
    static unsigned counter = 0;
    textureName = "OffscreenTarget" + std::to_string(++counter);
    const Ogre::TexturePtr texture = Ogre::TextureManager::getSingleton().createManual(
        textureName, Ogre::ResourceGroupManager::DEFAULT_RESOURCE_GROUP_NAME, Ogre::TEX_TYPE_2D, width, height, 0,
        Ogre::PF_BYTE_RGB, Ogre::TU_RENDERTARGET, nullptr, false, samples);
    target = texture->getBuffer()->getRenderTarget();
}

OffscreenTarget::~OffscreenTarget()
{
    // Now, as whoever holds the texture would keep OGRE's target, and with it the cameras, beyond this.
    target->removeAllViewports();
    Ogre::TextureManager::getSingleton().remove(textureName, Ogre::ResourceGroupManager::DEFAULT_RESOURCE_GROUP_NAME);
}

std::vector<std::uint8_t> OffscreenTarget::read() const
{
    return readPixels(*target);
}

void OffscreenTarget::savePng(const std::filesystem::path& file) const
{
    writePng(file, width, height, read());
}

} // namespace vrk::visual
