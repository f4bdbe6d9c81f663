#pragma once

#include "task/InstanceFrameVisual.h"

namespace vrk::task {
class JointTargetDataItem;
}

namespace vrk::visual {

/// The frame of a joint target: where a posture of the robot brings its tool.
///
/// Owner: the parent visual. Thread: render thread.
class VRK_EXPORT JointTargetVisual : public InstanceFrameVisual {
public:
    /// Neither registered nor selectable.
    JointTargetVisual(Visual* parent, unsigned id);

    /// Registered under the id of the item, selectable and placed at the item's pose. Takes no lock.
    static JointTargetVisual* Build(Visual* parent, task::JointTargetDataItem* item);
};

} // namespace vrk::visual
