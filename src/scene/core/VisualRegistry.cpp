#include "scene/core/VisualRegistry.h"

#include "platform/common/Checks.h"
#include "scene/core/RenderTaskQueue.h"

namespace vrk::visual {

Visual* VisualRegistry::get(unsigned id) const
{
    if (!visuals.contains(id))
        RenderTaskQueue::noteUnknown(id);
    return common::checkedAt(visuals, id);
}

void VisualRegistry::enter(unsigned id, Visual* visual)
{
    visuals[id] = visual;
}

void VisualRegistry::erase(unsigned id, const Visual* visual)
{
    const auto found = visuals.find(id);
    if (found != visuals.end() && found->second == visual)
        visuals.erase(found);
}

void VisualRegistry::whenDeleted(std::function<void(Visual*)> told)
{
    const std::lock_guard lock(mutex);
    auto longer = std::make_shared<Listeners>(*listeners);
    longer->push_back(std::move(told));
    listeners = std::move(longer);
}

void VisualRegistry::tellDeleted(Visual* visual) const
{
    std::shared_ptr<const Listeners> present;
    {
        const std::lock_guard lock(mutex); // not while they are told: one of them may delete more, or ask to be told
        present = listeners;
    }
    for (const auto& told : *present)
        told(visual);
}

} // namespace vrk::visual
