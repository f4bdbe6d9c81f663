#pragma once

#include <string>

namespace Ogre {
class Entity;
}

namespace vrk::visual {

class Visual;

/// Makes an entity of an OGRE mesh on the node of a visual. It has a colour for materials that ask for one, so that none
/// draws it in that of what was drawn before. Throws what OGRE does. Render thread.
///
/// @param name  a label: another entity may have it.
Ogre::Entity* attachEntity(Visual& visual, const std::string& name, const std::string& meshName);
/// Takes it from the visual, and destroys it.
void destroyEntity(Visual& visual, Ogre::Entity* entity);

} // namespace vrk::visual
