#pragma once

namespace Ogre {
class Root;
}

namespace vrk::visual {

/// OGRE's root, for what needs a started library. Thread: render thread.
/// @throws std::logic_error "The library has not been started."
Ogre::Root& startedRoot();

} // namespace vrk::visual
