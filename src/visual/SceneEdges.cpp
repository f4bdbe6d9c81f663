#include "scene/Scene.h"

#include "scene/core/Refused.h"
#include "scene/core/SceneCore.h"
#include "visual/CurveVisual.h"
#include "visual/EdgeVisual.h"
#include "visual/MeshVisual.h"
#include "visual/VisualCast.h"
#include "visual/WatchedVisual.h"

#include <utility>

namespace vrk::visual {
namespace {

const EdgeMaterials generatedMaterials{"GeneratedEdge", "BodyCurveHighlighted", "BodyCurveSelected"};
const EdgeMaterials highlightMaterials{"BodyCurveHighlighted", "BodyCurveHighlighted", "BodyCurveSelected"};

/// Null for a visual that is no curve.
CurveVisual* curveOf(unsigned id)
{
    return dynamic_cast<CurveVisual*>(Scene::GetVisual(id));
}

/// The generated edge of that shape, location and orientation under the visual of this id; null if there is none.
EdgeVisual* generatedEdgeOf(unsigned id, const TopoDS_Edge& edge)
{
    for (Visual* child : Scene::GetVisual(id)->getChildren()) {
        auto* generated = visualCast<EdgeVisual>(child, VisualType::GeneratedEdge);
        if (generated && generated->getEdge().IsEqual(edge))
            return generated;
    }
    return nullptr;
}

/// What is known of the one edge that is highlighted.
class HighlightedEdge {
public:
    explicit HighlightedEdge(SceneCore& core) : visual(core), drawn(core) {}

    // Where the scene's operations are called

    bool is(const Visual* other, const TopoDS_Edge& otherEdge) const
    {
        return visual && visual.get() == other && edge.IsEqual(otherEdge);
    }
    void set(Visual* owner, const TopoDS_Edge& newEdge)
    {
        visual.set(owner);
        edge = newEdge;
    }
    /// @return whether there was one.
    bool clear()
    {
        edge.Nullify();
        return visual.take();
    }

    // Render thread

    void draw(Visual* owner, const TopoDS_Edge& newEdge)
    {
        // None where the edge has no polygon.
        drawn.set(EdgeVisual::Build(owner, "highlighted_edge", newEdge, highlightMaterials, EdgeOrigin::Curve)
                      .value_or(nullptr));
    }
    void wipe()
    {
        if (Visual* visual = drawn.take())
            Visual::Delete(visual);
    }

private:
    WatchedVisual<Visual> visual; // whose edge it is
    TopoDS_Edge edge;
    WatchedVisual<Visual> drawn;
};

} // namespace

void Scene::addCurveArrow(unsigned id, bool forward)
{
    addRenderTask(
        [id, forward] {
            if (CurveVisual* curve = curveOf(id))
                curve->addArrow(forward);
        },
        0);
}

void Scene::clearCurveArrow(unsigned id)
{
    addRenderTask(
        [id] {
            if (CurveVisual* curve = curveOf(id))
                curve->clearArrow();
        },
        0);
}

void Scene::addEdgeArrow(unsigned id, const TopoDS_Edge& edge, bool forward)
{
    addRenderTask(
        [id, edge, forward] {
            if (EdgeVisual* found = generatedEdgeOf(id, edge))
                found->addArrow(forward);
        },
        0);
}

void Scene::clearEdgeArrow(unsigned id, const TopoDS_Edge& edge)
{
    addRenderTask(
        [id, edge] {
            if (EdgeVisual* found = generatedEdgeOf(id, edge))
                found->clearArrow();
        },
        0);
}

void Scene::addGeneratedEdge(unsigned id, const TopoDS_Edge& edge)
{
    addRenderTask(
        [this, id, edge] {
            const auto built =
                EdgeVisual::Build(GetVisual(id), "genedge_", edge, generatedMaterials, EdgeOrigin::Generated);
            if (built)
                core->visuals.enter(*built);
        },
        0);
}

void Scene::removeGeneratedEdge(unsigned id, const TopoDS_Edge& edge)
{
    addRenderTask(
        [this, id, edge] {
            if (EdgeVisual* found = generatedEdgeOf(id, edge))
                deleteVisual(found);
        },
        0);
}

void Scene::addMeshEdges(unsigned body, std::shared_ptr<const geometry::MeshEdges> edges)
{
    refuseNull(edges.get(), "addMeshEdges", "edges");
    addRenderTask(
        [body, edges = std::move(edges)] {
            if (!HasVisual(body)) // it may have been removed since the post
                return;
            if (auto* mesh = visualCast<MeshVisual>(GetVisual(body), VisualType::Mesh))
                mesh->setEdges(edges);
        },
        0);
}

void Scene::selectGeneratedEdge(unsigned id, const TopoDS_Edge& edge)
{
    clearHighlightedVisual();
    clearSelections();
    addRenderTask(
        [this, id, edge] {
            if (const EdgeVisual* found = generatedEdgeOf(id, edge))
                doSelectVisual(found->getId());
        },
        0);
}

void Scene::highlightEdge(Visual* visual, const TopoDS_Edge& edge)
{
    refuseNull(visual, "highlightEdge", "a visual");
    auto& highlighted = core->record<HighlightedEdge>();
    if (highlighted.is(visual, edge))
        return;
    clearHighlightedEdge();
    highlighted.set(visual, edge);
    addVisualTask(visual, [&highlighted, visual, edge] { highlighted.draw(visual, edge); });
}

void Scene::clearHighlightedEdge()
{
    core->owed.postWhatIsOwed();
    auto& highlighted = core->record<HighlightedEdge>();
    if (highlighted.clear())
        core->owed.post([&highlighted] { highlighted.wipe(); });
}

} // namespace vrk::visual
