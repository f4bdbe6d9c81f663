#include "scene/Scene.h"

#include "scene/core/SceneCore.h"
#include "visual/CurveVisual.h"
#include "visual/EdgeVisual.h"
#include "visual/HighlightedEdge.h"

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
    for (Visual* child : Scene::GetVisual(id)->getChildren())
        if (child->getType() == VisualType::GeneratedEdge && static_cast<EdgeVisual*>(child)->getEdge().IsEqual(edge))
            return static_cast<EdgeVisual*>(child);
    return nullptr;
}

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
    addRenderTask([this, id, edge] { doAddGeneratedEdge(id, edge); }, 0);
}

void Scene::doAddGeneratedEdge(unsigned id, const TopoDS_Edge& edge)
{
    const auto built = EdgeVisual::Build(GetVisual(id), "genedge_", edge, generatedMaterials, EdgeOrigin::Generated);
    if (built)
        core->visuals.enter(*built);
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
    if (highlightedEdge->visual == visual && highlightedEdge->edge.IsEqual(edge))
        return;
    clearHighlightedEdge();
    highlightedEdge->visual = visual;
    highlightedEdge->edge = edge;
    addVisualTask(visual, [this, visual, edge] { doHighlightEdge(visual, edge); });
}

void Scene::doHighlightEdge(Visual* visual, const TopoDS_Edge& edge)
{
    highlightedEdge->drawn =
        EdgeVisual::Build(visual, "highlighted_edge", edge, highlightMaterials, EdgeOrigin::Curve).value_or(nullptr);
}

void Scene::clearHighlightedEdge()
{
    core->owed.postWhatIsOwed();
    if (!std::exchange(highlightedEdge->visual, nullptr))
        return;
    highlightedEdge->edge.Nullify();
    core->owed.post([this] {
        if (Visual* drawn = std::exchange(highlightedEdge->drawn, nullptr))
            deleteVisual(drawn);
    });
}

} // namespace vrk::visual
