#pragma once

#include "scene/CoarseWhileMoving.h"
#include "scene/core/ViewportUsers.h"

#include <OgreCompositorInstance.h>
#include <OgreMatrix4.h>

#include <cstdint>
#include <unordered_set>

namespace Ogre {
class Entity;
class Material;
class MovableObject;
class Renderable;
} // namespace Ogre

namespace vrk::visual {

class DynamicLines;
class SceneCore;

/// What the window of the scene's own camera is drawn without: edges and small bodies, as OGRE gathers what it draws, so that
/// neither a visual nor a flag of it is changed, and samples, by a compositor that comes last. What is selected, highlighted,
/// outlined or collides stays. Pictures that are drawn into textures are whole.
///
/// Owner: the scene's records. Thread: render thread.
class CoarseLook : public ViewportUser, public Ogre::CompositorInstance::Listener {
public:
    explicit CoarseLook(SceneCore& core);
    CoarseLook(const CoarseLook&) = delete;
    CoarseLook& operator=(const CoarseLook&) = delete;

    void set(Coarseness wanted);
    Coarseness get() const { return level; }
    /// Brings the compositor into line with others that were added or switched.
    void suit();

    void serve(Ogre::Viewport& viewport, bool isMain) override;
    void forget(Ogre::Viewport& viewport) override;
    void notifyResourcesCreated(bool forResizeOnly) override;

    /// Ahead of each picture of the scene's own camera that shows bodies.
    /// @return whether anything may be left out of it.
    bool use(const Ogre::Viewport& viewport);
    /// Of that picture.
    bool leavesOut(const Ogre::Renderable& renderable, std::uint8_t group) const;

private:
    Ogre::CompositorInstance* lastInChain(Ogre::CompositorChain& chain);
    void findKept();
    bool isKept(const Ogre::Entity& body) const;
    bool isEdgeOfSeenFaces(const DynamicLines& lines) const;
    bool isSmall(const Ogre::Entity& body) const;

    SceneCore& core;
    Coarseness level = Coarseness::Whole;
    Ogre::Viewport* served = nullptr; // of a window

    // Of the picture that is being drawn
    Ogre::Matrix4 view;
    float pixelsOfUnit = 0; // of something at a distance of one unit, in a picture of up to 1080 rows
    bool isPerspective = true;
    const Ogre::Material* edges = nullptr; // of bodies; null where they are all that is drawn of them
    std::unordered_set<const Ogre::MovableObject*> kept;
};

} // namespace vrk::visual
