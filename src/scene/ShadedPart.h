#pragma once

#include <OgreAxisAlignedBox.h>
#include <OgreMatrix4.h>
#include <OgreVector.h>

namespace Ogre {
class Renderable;
class Technique;
class Viewport;
} // namespace Ogre

namespace vrk::visual {

/// The part of a picture in which all that lends its depth lies: elsewhere there is no shade, and nothing to be measured.
///
/// Owner: who has the depths drawn. Thread: render thread.
class ShadedPart {
public:
    /// Ahead of each picture of depths.
    void use(const Ogre::Viewport& viewport);
    /// What will be drawn there.
    void add(const Ogre::Renderable& renderable, const Ogre::Technique& technique);
    /// Left, upper, right and lower edge, from 0 to 1 from the left upper corner; of no width where there is nothing.
    Ogre::Vector4 rectangle() const;

private:
    Ogre::AxisAlignedBox box; // in the scene; infinite where something in it says not how large it is
    Ogre::Matrix4 toPicture;
    Ogre::Vector2 margin;
    const Ogre::Technique* ofNothing = nullptr;
};

} // namespace vrk::visual
