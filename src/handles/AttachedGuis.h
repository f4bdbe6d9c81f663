#pragma once

#include "handles/GuiVisual.h"

namespace vrk::visual {

class SceneCore;

/// What the scene has attached of handles: the one that was attached last.
///
/// That one is taken off what is removed by its id. Any other dies with what it hangs on, as all that hangs there does; but
/// the handles of the process, which live as long as that, are taken off whatever dies.
///
/// A record of the scene. Thread: render thread.
class VRK_EXPORT AttachedGuis {
public:
    explicit AttachedGuis(SceneCore& core);

    /// Null when none is attached, or when one was detached since.
    GuiVisual* currentGui() const { return current; }
    void attach(GuiVisual* gui, Visual* target, const rob::PoseTemplate<float>& pose);
    void detach(GuiVisual* gui);
    /// The current one, if it hangs below this visual, is taken off and disabled for picking.
    void rescueCurrentFrom(const Visual* removed);

private:
    void noteDeath(const Visual* dying);

    GuiVisual* current = nullptr;
};

} // namespace vrk::visual
