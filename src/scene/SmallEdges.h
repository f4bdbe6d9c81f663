#pragma once

#include <OgreMatrix4.h>

#include <unordered_map>

namespace Ogre {
class Camera;
class Renderable;
class Technique;
class Viewport;
} // namespace Ogre

namespace vrk::visual {

/// Tells which edges of bodies are too small in the picture to be drawn: those whose program would give them no weight.
/// From afar that is each edge of a station, and each would be a batch of its own.
///
/// Owner: whoever exchanges techniques as OGRE gathers what it draws. Thread: render thread.
class SmallEdges {
public:
    /// Ahead of each picture.
    void use(const Ogre::Viewport& viewport);
    /// Whether nothing of it would be seen, drawn by that technique. The sizes are those of line.geom.
    bool isUnseen(const Ogre::Renderable& renderable, const Ogre::Technique& technique);

private:
    float seenFrom(const Ogre::Technique& technique);

    Ogre::Matrix4 view;
    float pixelsOfUnit = 0; // of something at a distance of one unit, in a picture of up to 1080 rows
    bool isPerspective = true;
    std::unordered_map<const Ogre::Technique*, float> seen; // of this picture
};

} // namespace vrk::visual
