#include "scene/core/VisualRegistry.h"

#include "platform/common/Checks.h"

namespace vrk::visual {

Visual* VisualRegistry::get(unsigned id) const
{
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
    listeners.push_back(std::move(told));
}

void VisualRegistry::tellDeleted(Visual* visual) const
{
    for (const auto& told : listeners)
        told(visual);
}

} // namespace vrk::visual
