#pragma once

#include <OgreRectangle2D.h>

#include <memory>
#include <string>

namespace vrk::visual {

/// A rectangle over the whole picture, whatever the camera, by a material that takes its vertices as they are. It hangs
/// nowhere. Thread: render thread.
std::unique_ptr<Ogre::Rectangle2D> makePictureRectangle(const std::string& material, Ogre::uint8 renderQueueGroup);

} // namespace vrk::visual
