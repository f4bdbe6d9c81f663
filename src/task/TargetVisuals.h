#pragma once

#include "scene/core/SceneCore.h"
#include "visual/Visual.h"

namespace vrk::visual {

/// Calls this for all targets of a type. Several moves may go to one target: each has a visual of its own for it, of which
/// the registry knows but one.
template <typename Call>
void forTargets(const SceneCore& core, VisualType type, const Call& call)
{
    for (const auto& [id, visual] : core.visuals.all()) {
        if (visual->getType() == type)
            call(*visual);
        if (visual->getType() != VisualType::MoveInstruction)
            continue;
        for (Visual* child : visual->getChildren()) {
            const auto known = core.visuals.all().find(child->getId());
            if (child->getType() == type && (known == core.visuals.all().end() || known->second != child))
                call(*child);
        }
    }
}

} // namespace vrk::visual
