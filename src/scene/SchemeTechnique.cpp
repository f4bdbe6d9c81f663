#include "scene/SchemeTechnique.h"

#include <Ogre.h>

namespace vrk::visual {

bool isSeenThrough(const Ogre::Technique& technique)
{
    for (const Ogre::Pass* pass : technique.getPasses())
        if (pass->isTransparent() || !pass->getDepthWriteEnabled())
            return true;
    return false;
}

Ogre::Technique* techniqueOf(const char* material)
{
    const Ogre::MaterialPtr found = Ogre::MaterialManager::getSingleton().getByName(material);
    if (!found)
        return nullptr;
    found->load();
    // Not its best technique: that is looked up by scheme, which leads here again.
    return found->getSupportedTechniques().empty() ? nullptr : found->getSupportedTechniques().front();
}

} // namespace vrk::visual
