#include "visual/VisualMark.h"

#include "scene/core/SceneCore.h"
#include "visual/Visual.h"

namespace vrk::visual {
namespace {

bool isInRegistry(unsigned id, const Visual* visual)
{
    const VisualRegistry& visuals = SceneCore::Get()->visuals;
    return visuals.has(id) && visuals.get(id) == visual;
}

} // namespace

VisualMark::VisualMark(Visual* visual, VisualStateLayer layer)
    : visual(visual), id(visual->getId()), isRegistered(isInRegistry(id, visual)), layer(layer)
{
    postLayer(true);
}

VisualMark::~VisualMark()
{
    postLayer(false);
}

void VisualMark::postLayer(bool on) const
{
    // By value: the mark may be gone when the task runs, and so may the visual.
    RenderTaskQueue::Task task = [visual = visual, id = id, isRegistered = isRegistered, layer = layer, on] {
        if (isRegistered && !isInRegistry(id, visual))
            return;
        VisualStateManager& states = *SceneCore::Get()->states;
        states.setLayer(visual, layer, on, {});
        states.refreshWithParts(visual);
    };
    if (isRegistered && !on)
        SceneCore::Get()->owed.post(task);
    else
        SceneCore::Get()->queue.post(std::move(task), 0);
}

} // namespace vrk::visual
