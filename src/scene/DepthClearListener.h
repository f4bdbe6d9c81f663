#pragma once

#include <OgreRenderQueueListener.h>

namespace vrk::visual {

/// Forgets all depths before the handles are drawn, so that they stand in front of the scene and hide only each other.
///
/// Owner: the scene. Thread: render thread.
class DepthClearListener : public Ogre::RenderQueueListener {
public:
    void renderQueueStarted(Ogre::uint8 queueGroupId, const Ogre::String& invocation,
                            bool& skipThisInvocation) override;
};

} // namespace vrk::visual
