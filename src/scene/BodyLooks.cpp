#include "scene/BodyLooks.h"

#include "platform/broker/SignalBroker.h"
#include "scene/CoarseLook.h"
#include "scene/DepthShade.h"
#include "scene/Scene.h"
#include "scene/SchemeTechnique.h"
#include "scene/core/ClosedMeshes.h"
#include "scene/core/SceneCore.h"
#include "visual/RenderGroups.h"
#include "visual/SolidVisual.h"
#include "visual/Visual.h"

#include <Ogre.h>

#include <algorithm>
#include <utility>

namespace vrk::visual {
namespace {

// After all that they would hide, ahead of the outlines and handles: their depths are those of what is not seen through.
constexpr Ogre::uint8 ghostGroup = 76;
constexpr Ogre::uint8 ghostEdgeGroup = 77;

enum class Kind { Body, Points, Edges, Paint, Shadow, Other };

/// The colours of collisions tell something that lines and ghosts would not, and marks on bodies are no bodies.
bool hasLookOfItsOwn(const std::string& material)
{
    return material.starts_with("Collision") || material.starts_with("EmphasizeCollision") || material == "UVIndicator";
}

Kind kindOf(const Ogre::Renderable& renderable, Ogre::uint8 group)
{
    const Ogre::MaterialPtr& material = renderable.getMaterial();
    if (!material || material->getSupportedTechniques().empty())
        return Kind::Other;
    const std::string& name = material->getName();
    if (name == "GroundShadow")
        return Kind::Shadow;
    if (group == renderGroup::lines)
        return name == "WireFrame" ? Kind::Edges : Kind::Other;
    if ((group != renderGroup::normal && group != renderGroup::selected) || hasLookOfItsOwn(name))
        return Kind::Other;
    if (name.starts_with("Spray"))
        return Kind::Paint;
    if (isSeenThrough(*material->getSupportedTechniques().front()))
        return Kind::Other;
    Ogre::RenderOperation operation;
    const_cast<Ogre::Renderable&>(renderable).getRenderOperation(operation); // OGRE asks for it so itself
    switch (operation.operationType) {
    case Ogre::RenderOperation::OT_POINT_LIST:
        return Kind::Points;
    case Ogre::RenderOperation::OT_TRIANGLE_LIST:
    case Ogre::RenderOperation::OT_TRIANGLE_STRIP:
        return Kind::Body;
    default:
        return Kind::Other;
    }
}

void collect(const Visual& visual, Ogre::Renderable::Visitor& visitor)
{
    for (Ogre::MovableObject* object : visual.getSceneNode()->getAttachedObjects())
        object->visitRenderables(&visitor);
    for (const Visual* child : visual.getChildren())
        collect(*child, visitor);
}

/// Null where it is drawn for no visual.
const Visual* visualOf(const Ogre::Renderable& renderable)
{
    const auto* part = dynamic_cast<const Ogre::SubEntity*>(&renderable);
    const auto* object = part ? part->getParent() : dynamic_cast<const Ogre::MovableObject*>(&renderable);
    const Ogre::SceneNode* node = object ? object->getParentSceneNode() : nullptr;
    return node ? visual::visualOf(*node) : nullptr;
}

/// Faces that are selected or highlighted are told by their colours.
bool hasMarkedFaces(const Ogre::Renderable& renderable)
{
    const auto* solid = dynamic_cast<const SolidVisual*>(visualOf(renderable));
    return solid && solid->hasMarkedFaces();
}

/// Of the body that these edges belong to; empty where there is none.
std::string materialOfBody(const Ogre::Renderable& edges)
{
    const Visual* visual = visualOf(edges);
    const auto* body = visual ? dynamic_cast<const FacetVisual*>(visual->getParent()) : nullptr;
    const Ogre::Entity* entity = body ? body->getEntity() : nullptr;
    return entity && entity->getNumSubEntities() > 0 ? entity->getSubEntity(0)->getMaterialName() : "";
}

/// As bright as eyes see it, which is green most.
float brightness(const rob::ColorTemplate<float>& color)
{
    return 0.21f * color.r + 0.72f * color.g + 0.07f * color.b;
}

} // namespace

BodyLooks::BodyLooks(SceneCore& core) : core(core)
{
    core.sceneManager->addListener(this);
}

BodyLooks::~BodyLooks()
{
    core.sceneManager->removeListener(this);
}

void BodyLooks::setLines(LineLook look)
{
    if (look == lines)
        return;
    lines = look;
    core.record<DepthShade>().setOutlines(look != LineLook::None);
    core.record<CoarseLook>().suit();
    broker::SignalBroker::updateScene();
}

void BodyLooks::setWhole(std::vector<unsigned> ids)
{
    if (ghosts && ids == whole)
        return;
    ghosts = true;
    whole = std::move(ids);
    broker::SignalBroker::updateScene();
}

void BodyLooks::endGhosts()
{
    if (!ghosts)
        return;
    ghosts = false;
    whole.clear();
    broker::SignalBroker::updateScene();
}

void BodyLooks::suitInk(const rob::ColorTemplate<float>& top, const rob::ColorTemplate<float>& bottom)
{
    constexpr float dark = 0.3f;
    const bool isDark = brightness(top) + brightness(bottom) < 2 * dark;
    Ogre::GpuProgramManager::getSingleton().getSharedParameters("Ink")->setNamedConstant(
        "ink", isDark ? Ogre::Vector4(0.86f, 0.88f, 0.90f, 1.0f) : Ogre::Vector4(0.03f, 0.04f, 0.06f, 1.0f));
}

void BodyLooks::serve(Ogre::Viewport& viewport, bool isMain)
{
    if (isMain)
        served = &viewport;
}

void BodyLooks::forget(Ogre::Viewport& viewport)
{
    if (served == &viewport)
        served = nullptr;
}

void BodyLooks::preFindVisibleObjects(Ogre::SceneManager* source, Ogre::SceneManager::IlluminationRenderStage,
                                      Ogre::Viewport* viewport)
{
    const std::string& scheme = viewport->getMaterialScheme();
    depths = scheme == "DepthShade" ? &core.record<DepthShade>().shadedPart() : nullptr;
    if (depths)
        depths->use(*viewport);
    // The masks of outlines show bodies as they are, the depths those that are no ghosts.
    const bool isMain = served && viewport->getCamera() == served->getCamera();
    const bool isMask = scheme == "BorderMask" || scheme == "GroundShadow";
    hasLook = (ghosts || lines != LineLook::None) && isMain && !isMask;
    hasBacks = isMask || viewport->getCamera()->getPolygonMode() != Ogre::PM_SOLID;
    backFaces.use(core.record<ClosedMeshes>());
    smallEdges.use(*viewport);
    if (hasLook) {
        findTechniques();
        findWhole();
    }
    auto& coarseLook = core.record<CoarseLook>();
    coarse = isMain && !isMask && coarseLook.use(*viewport) ? &coarseLook : nullptr;
    if (hasLook || !hasBacks || coarse || depths)
        source->getRenderQueue()->setRenderableListener(this);
}

void BodyLooks::postFindVisibleObjects(Ogre::SceneManager* source, Ogre::SceneManager::IlluminationRenderStage,
                                       Ogre::Viewport*)
{
    source->getRenderQueue()->setRenderableListener(nullptr);
}

void BodyLooks::findTechniques()
{
    techniques = {};
    if (lines != LineLook::None) {
        const std::string edges = lines == LineLook::Visible ? "LineLook/Edges" : "LineLook/AllEdges";
        techniques.face = techniqueOf("LineLook/Face");
        techniques.edges = techniqueOf(edges.c_str());
        techniques.selectedEdges = techniqueOf((edges + "Selected").c_str());
        techniques.highlightedEdges = techniqueOf((edges + "Highlighted").c_str());
    }
    if (!ghosts)
        return;
    techniques.ghostBody = techniqueOf("Ghost/Body");
    techniques.ghostPoints = techniqueOf("Ghost/Points");
    techniques.ghostEdges = techniqueOf("Ghost/Edges");
}

/// What is drawn of visuals may be another object in each picture.
void BodyLooks::findWhole()
{
    struct Collector : Ogre::Renderable::Visitor {
        void visit(Ogre::Renderable* renderable, Ogre::ushort, bool, Ogre::Any*) override { found.insert(renderable); }
        std::unordered_set<const Ogre::Renderable*> found;
    } collector;
    if (ghosts)
        for (const unsigned id : whole)
            if (Scene::HasVisual(id))
                collect(*Scene::GetVisual(id), collector);
    drawnWhole = std::move(collector.found);
}

bool BodyLooks::renderableQueued(Ogre::Renderable* renderable, Ogre::uint8 group, Ogre::ushort priority,
                                 Ogre::Technique** technique, Ogre::RenderQueue* queue)
{
    if (coarse && coarse->leavesOut(*renderable, group))
        return false;
    const Ogre::Technique* before = *technique;
    if (hasLook && !queuedByLook(*renderable, group, priority, technique, *queue))
        return false;
    if (!hasBacks && *technique == before)
        leaveBackFaces(*renderable, technique);
    if (depths && (group == renderGroup::normal || group == renderGroup::selected))
        depths->add(*renderable, **technique);
    return group != renderGroup::lines || !smallEdges.isUnseen(*renderable, **technique);
}

void BodyLooks::leaveBackFaces(const Ogre::Renderable& renderable, Ogre::Technique** technique)
{
    if (!backFaces.isClosed(renderable))
        return;
    // What is seen through has no depth, and no technique here.
    Ogre::Technique* culling = backFaces.techniqueOf(renderable);
    if (culling && depths)
        culling = backFaces.techniqueOf(*(*technique)->getParent());
    if (culling)
        *technique = culling;
}

/// @return false where it is not drawn as what it is.
bool BodyLooks::queuedByLook(Ogre::Renderable& renderable, Ogre::uint8 group, Ogre::ushort priority,
                             Ogre::Technique** technique, Ogre::RenderQueue& queue)
{
    const Kind kind = kindOf(renderable, group);
    if (kind == Kind::Other)
        return true;
    if (kind == Kind::Shadow)
        return false; // it would be seen through faces, and tell of what is hardly there
    if (ghosts && !drawnWhole.contains(&renderable))
        switch (kind) {
        case Kind::Body:
            return queueGhost(renderable, ghostGroup, priority, techniques.ghostBody, queue);
        case Kind::Points:
            return queueGhost(renderable, ghostGroup, priority, techniques.ghostPoints, queue);
        case Kind::Edges:
            return queueGhost(renderable, ghostEdgeGroup, priority, techniques.ghostEdges, queue);
        default:
            return false; // a ghost has no paint
        }
    if (depths)
        return true;
    if (kind == Kind::Body && techniques.face && !hasMarkedFaces(renderable))
        *technique = techniques.face;
    if (kind == Kind::Edges && techniques.edges)
        *technique = linesOf(renderable);
    return true;
}

/// In the colour of the state of their body, of which no face is seen.
Ogre::Technique* BodyLooks::linesOf(const Ogre::Renderable& edges) const
{
    const std::string material = materialOfBody(edges);
    if (material.ends_with("Selected") && techniques.selectedEdges)
        return techniques.selectedEdges;
    if (material.ends_with("Highlighted") && techniques.highlightedEdges)
        return techniques.highlightedEdges;
    return techniques.edges;
}

/// @return false: it is not drawn as what it is.
bool BodyLooks::queueGhost(Ogre::Renderable& renderable, Ogre::uint8 group, Ogre::ushort priority,
                           Ogre::Technique* technique, Ogre::RenderQueue& queue)
{
    if (!depths && technique && !smallEdges.isUnseen(renderable, *technique))
        queue.getQueueGroup(group)->addRenderable(&renderable, technique, priority);
    return false;
}

} // namespace vrk::visual
