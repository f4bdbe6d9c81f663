#include "task/JointTargetVisual.h"

#include "platform/task/DataItem.h"
#include "scene/core/SceneCore.h"
#include "visual/Picking.h"

namespace vrk::visual {

JointTargetVisual::JointTargetVisual(Visual* parent, unsigned id)
    : InstanceFrameVisual(parent, id, "JOINTTARGET_" + std::to_string(id), VisualType::JointTarget, "InstanceFrame")
{
}

JointTargetVisual* JointTargetVisual::Build(Visual* parent, task::JointTargetDataItem* item)
{
    auto* visual = new JointTargetVisual(parent, item->getId());
    SceneCore::Get()->visuals.enter(visual);
    visual->setPose(rob::PoseTemplate<float>(item->getPose()));
    picking::addFrameVisual(visual);
    return visual;
}

} // namespace vrk::visual
