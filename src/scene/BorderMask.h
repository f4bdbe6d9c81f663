#pragma once

#include <OgreMaterialManager.h>

namespace vrk::visual {

/// Draws silhouettes for the outline: under the material scheme "BorderMask" everything has one plain material, so that
/// the outline is the same whatever a body is made of, and is that of the whole body where the view shows wires.
///
/// Owner: the scene. Thread: render thread.
class BorderMask : public Ogre::MaterialManager::Listener {
public:
    BorderMask();
    ~BorderMask() override;
    BorderMask(const BorderMask&) = delete;
    BorderMask& operator=(const BorderMask&) = delete;

    Ogre::Technique* handleSchemeNotFound(unsigned short schemeIndex, const Ogre::String& schemeName,
                                          Ogre::Material* material, unsigned short lodIndex,
                                          const Ogre::Renderable* renderable) override;
};

} // namespace vrk::visual
