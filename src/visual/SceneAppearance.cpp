#include "scene/Scene.h"

#include "platform/layout/Body.h"
#include "platform/sdf/SdfManager.h"
#include "scene/core/Refused.h"
#include "scene/core/SceneCore.h"
#include "visual/FacetVisual.h"
#include "visual/VisualCast.h"
#include "visual/VisualStateManager.h"
#include "visual/WatchedVisual.h"
#include "visual/WireFrameVisual.h"

#include <Ogre.h>

#include <algorithm>
#include <utility>

namespace vrk::visual {
namespace {

/// The one visual that is highlighted whole. Read and written where the scene's operations are called.
struct HighlightedVisual : WatchedVisual<Visual> {
    using WatchedVisual::WatchedVisual;
};

bool isFacetVisual(const Visual& visual)
{
    return visual.getType() == VisualType::Solid || visual.getType() == VisualType::Mesh;
}

/// Null for a visual that is no body.
FacetVisual* bodyOf(Visual* visual)
{
    FacetVisual* solid = visualCast<FacetVisual>(visual, VisualType::Solid);
    return solid ? solid : visualCast<FacetVisual>(visual, VisualType::Mesh);
}

/// Calls `call` with the visual if it is a body, else with its bodies. Direct children only: an assembly, whose bodies lie
/// deeper, keeps its colours.
template <typename Call>
void forBodies(Visual& visual, const Call& call)
{
    if (FacetVisual* body = bodyOf(&visual)) {
        call(*body);
        return;
    }
    for (Visual* child : visual.getChildren())
        if (FacetVisual* body = bodyOf(child))
            call(*body);
}

/// What is attached is no part of the visual, and keeps its own looks.
void useOwnMaterials(Visual& visual)
{
    if (bodyOf(&visual))
        if (const auto body = std::dynamic_pointer_cast<layout::Body>(sdf::Share(visual.getId()))) {
            const std::string base = body->getMaterialName();
            visual.setMaterial(base, base + "Selected", base + "Highlighted");
            for (Visual* child : visual.getChildren())
                if (auto* edges = visualCast<WireFrameVisual>(child, VisualType::WireFrame))
                    edges->useOwnMaterial(); // which the bodies gave theirs
            return;
        }
    for (Visual* child : visual.getChildren())
        if (!child->isAttached())
            useOwnMaterials(*child);
}

void collectDrawnBodies(Visual& visual, std::vector<Visual*>& bodies)
{
    if (isFacetVisual(visual) && !visual.getSceneNode()->getAttachedObjects().empty())
        bodies.push_back(&visual);
    for (Visual* child : visual.getChildren())
        collectDrawnBodies(*child, bodies);
}

std::vector<Visual*> drawnBodiesOf(const std::vector<unsigned>& ids)
{
    std::vector<Visual*> bodies;
    for (const unsigned id : ids)
        if (Scene::HasVisual(id))
            collectDrawnBodies(*Scene::GetVisual(id), bodies);
    return bodies;
}

void showLayer(Visual* visual, VisualStateLayer layer, bool on, const std::string& material = {})
{
    VisualStateManager& states = *SceneCore::Get()->states;
    states.setLayer(visual, layer, on, material);
    states.refreshWithParts(visual);
}

} // namespace

void Scene::setVisualHighlighted(Visual* visual)
{
    refuseNull(visual, "setVisualHighlighted", "a visual");
    auto& highlighted = core->record<HighlightedVisual>();
    if (visual == highlighted.get())
        return;
    clearHighlightedVisual();
    if (isSelected(visual))
        return; // it shows that it is selected
    highlighted.set(visual);
    addVisualTask(visual, [visual] { showLayer(visual, VisualStateLayer::Highlighted, true); });
}

void Scene::setVisualHighlighted(unsigned id)
{
    setVisualHighlighted(GetVisual(id));
}

void Scene::clearHighlightedBody()
{
    core->owed.postWhatIsOwed();
    if (Visual* visual = core->record<HighlightedVisual>().take())
        addEndOfLook(visual, [visual] { showLayer(visual, VisualStateLayer::Highlighted, false); });
}

void Scene::clearHighlightedVisual()
{
    clearHighlightedFace();
    clearHighlightedEdge();
    clearHighlightedBody();
}

void Scene::setVisualColor(unsigned id, float r, float g, float b)
{
    addRenderTask([this, id, r, g, b] { doSetColor(id, r, g, b); }, 0);
}

void Scene::doSetColor(unsigned id, float r, float g, float b)
{
    forBodies(*GetVisual(id), [&](FacetVisual& body) { body.setBodyColor({r, g, b}, 1.0f); });
}

void Scene::resetColor(unsigned id)
{
    addRenderTask([this, id] { doResetColor(GetVisual(id)); }, 0);
}

void Scene::resetColor(Visual* visual)
{
    refuseNull(visual, "resetColor", "a visual");
    addVisualTask(visual, [this, visual] { doResetColor(visual); });
}

void Scene::doResetColor(Visual* visual)
{
    forBodies(*visual, [](FacetVisual& body) { body.resetColor(); });
}

void Scene::bodyVisualUseMaterial(unsigned id, const std::string& material)
{
    Visual* visual = GetVisual(id);
    if (isFacetVisual(*visual))
        addVisualTask(visual, [visual, material] { showLayer(visual, VisualStateLayer::Material, true, material); });
}

void Scene::bodyVisualUseDefaultMaterial(unsigned id)
{
    Visual* visual = GetVisual(id);
    if (isFacetVisual(*visual))
        addVisualTask(visual, [visual] { showLayer(visual, VisualStateLayer::Material, false); });
}

void Scene::bodiesUseOwnMaterials(unsigned id)
{
    addRenderTask([id] { useOwnMaterials(*GetVisual(id)); }, 0);
}

void Scene::setCollision(unsigned id, bool on)
{
    setCollisionHighlights({id}, on);
}

void Scene::setCollisionHighlights(const std::vector<unsigned>& ids, bool on)
{
    std::vector<std::pair<unsigned, Visual*>> bodies; // by id: one that dies ahead of the task is not to be touched
    for (Visual* body : drawnBodiesOf(ids))
        bodies.emplace_back(body->getId(), body);
    if (bodies.empty())
        return;
    addRenderTask(
        [ids, bodies = std::move(bodies), on] {
            const std::vector<Visual*> there = drawnBodiesOf(ids);
            for (const auto& [id, body] : bodies) {
                const bool isRegistered = HasVisual(id) && GetVisual(id) == body;
                // An arrow stands in no registry, but it has not left the visual that it was found under.
                if (isRegistered || std::find(there.begin(), there.end(), body) != there.end())
                    showLayer(body, VisualStateLayer::CollisionContact, on);
            }
        },
        0);
}

void Scene::clearAllCollisionContacts()
{
    addRenderTask([] { SceneCore::Get()->states->clearLayer(VisualStateLayer::CollisionContact); }, 0);
}

void Scene::setVisualCollisionEmphasizeState(unsigned id, VisualCollisionState state)
{
    if (!HasVisual(id))
        return;
    Visual* visual = GetVisual(id);
    addVisualTask(visual, [visual, state] {
        VisualStateManager& states = *SceneCore::Get()->states;
        states.setLayer(visual, VisualStateLayer::EmphasizeGroupA, state == VisualCollisionState::GroupA, {});
        states.setLayer(visual, VisualStateLayer::EmphasizeGroupB, state == VisualCollisionState::GroupB, {});
        states.refreshWithParts(visual);
    });
}

void Scene::clearVisualCollisionEmphasizeState(unsigned id)
{
    setVisualCollisionEmphasizeState(id, VisualCollisionState::None);
}

} // namespace vrk::visual
