#include "scene/DepthClearListener.h"

#include "visual/RenderGroups.h"

#include <Ogre.h>

namespace vrk::visual {

void DepthClearListener::renderQueueStarted(Ogre::uint8 queueGroupId, const Ogre::String&, bool&)
{
    if (queueGroupId != renderGroup::handles)
        return;
    Ogre::RenderSystem* system = Ogre::Root::getSingleton().getRenderSystem();
    system->clearFrameBuffer(Ogre::FBT_DEPTH, Ogre::ColourValue::Black, 1.0f, 0);
}

} // namespace vrk::visual
