#pragma once

#include "scene/BackFaces.h"
#include "scene/SmallEdges.h"
#include "scene/ViewLook.h"
#include "scene/core/ViewportUsers.h"

#include <OgreRenderQueue.h>
#include <OgreSceneManager.h>

#include <unordered_set>
#include <vector>

namespace vrk::visual {

class CoarseLook;
class ShadedPart;
class SceneCore;

/// What the scene's own camera draws instead of bodies, clouds and their edges: lines, or ghosts. It is exchanged as OGRE
/// gathers what it draws, picture by picture, so that no visual knows of it. In the pictures of all cameras, closed bodies
/// come without their back faces, and small ones without their edges.
///
/// Owner: the scene's records. Thread: render thread.
class BodyLooks : public Ogre::RenderQueue::RenderableListener,
                  public Ogre::SceneManager::Listener,
                  public ViewportUser {
public:
    explicit BodyLooks(SceneCore& core);
    ~BodyLooks() override;
    BodyLooks(const BodyLooks&) = delete;
    BodyLooks& operator=(const BodyLooks&) = delete;

    // Each raises `updateScene` where something else is drawn than before.

    void setLines(LineLook look);
    LineLook getLines() const { return lines; }
    /// What has no visual any more is passed over.
    void setWhole(std::vector<unsigned> ids);
    void endGhosts();
    bool hasGhosts() const { return ghosts; }

    /// The colour of lines that have none of their own stands out from this one.
    static void suitInk(const rob::ColorTemplate<float>& top, const rob::ColorTemplate<float>& bottom);

    void serve(Ogre::Viewport& viewport, bool isMain) override;
    void forget(Ogre::Viewport& viewport) override;

    void preFindVisibleObjects(Ogre::SceneManager* source, Ogre::SceneManager::IlluminationRenderStage stage,
                               Ogre::Viewport* viewport) override;
    void postFindVisibleObjects(Ogre::SceneManager* source, Ogre::SceneManager::IlluminationRenderStage stage,
                                Ogre::Viewport* viewport) override;
    bool renderableQueued(Ogre::Renderable* renderable, Ogre::uint8 group, Ogre::ushort priority,
                          Ogre::Technique** technique, Ogre::RenderQueue* queue) override;

private:
    /// Null where the resources have no such material.
    struct Techniques {
        Ogre::Technique* face = nullptr;
        Ogre::Technique* edges = nullptr;
        Ogre::Technique* selectedEdges = nullptr;
        Ogre::Technique* highlightedEdges = nullptr;
        Ogre::Technique* ghostBody = nullptr;
        Ogre::Technique* ghostPoints = nullptr;
        Ogre::Technique* ghostEdges = nullptr;
    };

    bool queuedByLook(Ogre::Renderable& renderable, Ogre::uint8 group, Ogre::ushort priority,
                      Ogre::Technique** technique, Ogre::RenderQueue& queue);
    void leaveBackFaces(const Ogre::Renderable& renderable, Ogre::Technique** technique);
    void findTechniques();
    void findWhole();
    Ogre::Technique* linesOf(const Ogre::Renderable& edges) const;
    bool queueGhost(Ogre::Renderable& renderable, Ogre::uint8 group, Ogre::ushort priority, Ogre::Technique* technique,
                    Ogre::RenderQueue& queue);

    SceneCore& core;
    LineLook lines = LineLook::None;
    bool ghosts = false;
    std::vector<unsigned> whole; // what is no ghost
    Ogre::Viewport* served = nullptr;

    BackFaces backFaces;
    SmallEdges smallEdges;

    // Of the picture that is being drawn
    Techniques techniques;
    std::unordered_set<const Ogre::Renderable*> drawnWhole;
    ShadedPart* depths = nullptr;       // of a picture of depths
    bool hasLook = false;               // lines or ghosts
    bool hasBacks = false;              // as in wire frames
    const CoarseLook* coarse = nullptr; // null where nothing is left out
};

} // namespace vrk::visual
