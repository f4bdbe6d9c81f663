#include "view/RenderFrame.h"

#include "scene/core/SceneCore.h"
#include "view/StartedRoot.h"

#include <Ogre.h>

#include <stdexcept>

namespace vrk::visual {

Ogre::Root& startedRoot()
{
    if (!SceneCore::Get()) // the root alone stands earlier, without anything to draw
        throw std::logic_error("The library has not been started.");
    return Ogre::Root::getSingleton();
}

void renderFrame()
{
    startedRoot().renderOneFrame();
}

} // namespace vrk::visual
