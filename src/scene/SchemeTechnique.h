#pragma once

namespace Ogre {
class Technique;
} // namespace Ogre

namespace vrk::visual {

// For listeners of material schemes, which draw what other materials are for in a way of their own. Render thread.

/// Whether something drawn so covers nothing of what lies behind it.
bool isSeenThrough(const Ogre::Technique& technique);
/// The first technique of a material that the driver takes; null where the resources have no such material.
Ogre::Technique* techniqueOf(const char* material);

} // namespace vrk::visual
