#pragma once

#include "handles/GuiVisual.h"

#include <vector>

namespace vrk::visual {

class SceneCore;

/// What the scene has attached of handles: the one that was attached last, and, since handles live as long as the process,
/// all that would die with what they hang on.
///
/// A record of the scene. Thread: render thread.
class VRK_EXPORT AttachedGuis {
public:
    explicit AttachedGuis(SceneCore& core);

    /// Null when none is attached, or when one was detached since.
    GuiVisual* currentGui() const { return current; }
    void attach(GuiVisual* gui, Visual* target, const rob::PoseTemplate<float>& pose);
    void detach(GuiVisual* gui);

private:
    void forget(GuiVisual* gui);
    void rescueFrom(const Visual* dying);

    GuiVisual* current = nullptr;
    std::vector<GuiVisual*> attached;
};

} // namespace vrk::visual
