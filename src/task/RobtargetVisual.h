#pragma once

#include "task/InstanceFrameVisual.h"

namespace vrk::visual {

/// The frame of a robot target: a pose that a robot's tool moves to.
///
/// Owner: the parent visual. Thread: render thread.
class VRK_EXPORT RobtargetVisual : public InstanceFrameVisual {
public:
    /// Neither registered nor selectable.
    RobtargetVisual(Visual* parent, unsigned id);

    /// The frame of a model object, registered, selectable and placed at the object's pose. Takes the model's lock, shared.
    /// @throws std::bad_cast if the id is of no model node.
    static RobtargetVisual* Build(Visual* parent, unsigned id);

    // A preview looks like the target itself, so that both give the normal look.
    void preview() { resetAppearance(); }
    void cancelPreview() { resetAppearance(); }
};

} // namespace vrk::visual
