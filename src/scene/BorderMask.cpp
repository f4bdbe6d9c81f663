#include "scene/BorderMask.h"

#include <Ogre.h>

namespace vrk::visual {
namespace {

constexpr const char* scheme = "BorderMask";

} // namespace

BorderMask::BorderMask()
{
    Ogre::MaterialManager::getSingleton().addListener(this, scheme);
}

BorderMask::~BorderMask()
{
    Ogre::MaterialManager::getSingleton().removeListener(this, scheme);
}

Ogre::Technique* BorderMask::handleSchemeNotFound(unsigned short, const Ogre::String&, Ogre::Material*, unsigned short,
                                                  const Ogre::Renderable*)
{
    const Ogre::MaterialPtr mask = Ogre::MaterialManager::getSingleton().getByName("BorderHighlight/Mask");
    if (!mask)
        return nullptr; // the body's own material will do
    mask->load();
    // Not its best technique: that is looked up by scheme too, and would lead here again.
    return mask->getSupportedTechniques().empty() ? nullptr : mask->getSupportedTechniques().front();
}

} // namespace vrk::visual
