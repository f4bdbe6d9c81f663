#include "scene/Scene.h"

#include "scene/core/SceneCore.h"
#include "visual/Visual.h"
#include "visual/VisualStateManager.h"

#include <algorithm>

namespace vrk::visual {

void Scene::setVisualSelected(unsigned id)
{
    clearHighlightedVisual();
    clearSelections();
    addRenderTask(
        [this, id] {
            doSelectVisual(id);
            setBorderHighlightEnabled(true); // nothing switches it off again: that is the application's to decide
        },
        0);
}

void Scene::setVisualSelected(Visual* visual)
{
    setVisualSelected(visual->getId());
}

void Scene::setVisualsSelected(const std::vector<unsigned>& ids)
{
    clearHighlightedVisual();
    clearSelections();
    addRenderTask(
        [this, ids] {
            for (const unsigned id : ids)
                doSelectVisual(id);
        },
        0);
}

void Scene::doSelectVisual(unsigned id)
{
    if (!HasVisual(id))
        return;
    Visual* visual = GetVisual(id);
    selectedVisuals.push_back(id);
    core->states->setLayer(visual, VisualStateLayer::Selected, true, {});
    core->states->refresh(visual);
}

void Scene::clearSelectedVisuals()
{
    addRenderTask([this] { doClearSelectedVisuals(); }, 0);
}

void Scene::doClearSelectedVisuals()
{
    for (const unsigned id : selectedVisuals) {
        if (!HasVisual(id)) // it died while it was selected
            continue;
        Visual* visual = GetVisual(id);
        core->states->setLayer(visual, VisualStateLayer::Selected, false, {});
        core->states->refresh(visual);
    }
    selectedVisuals.clear();
}

void Scene::clearSelections()
{
    clearSelectedFaces();
    clearSelectedVisuals();
}

bool Scene::isSelected(const Visual* visual) const
{
    for (; visual && visual != core->worldVisual; visual = visual->getParent())
        if (std::find(selectedVisuals.begin(), selectedVisuals.end(), visual->getId()) != selectedVisuals.end())
            return true;
    return false;
}

} // namespace vrk::visual
