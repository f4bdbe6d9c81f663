#include "task/RobtargetVisual.h"

#include "platform/sdf/SdfManager.h"
#include "platform/sdf/SdfObject.h"
#include "scene/core/SceneCore.h"
#include "visual/Picking.h"

#include <mutex>
#include <typeinfo>

namespace vrk::visual {
namespace {

rob::PoseTemplate<float> poseOfNode(unsigned id)
{
    sdf::SdfManager& model = sdf::SdfManager::inst();
    const std::shared_lock lock(model.mutex());
    const auto* node = dynamic_cast<const sdf::SdfNode*>(model.find(id));
    if (!node)
        throw std::bad_cast();
    return rob::PoseTemplate<float>(node->getPose());
}

} // namespace

RobtargetVisual::RobtargetVisual(Visual* parent, unsigned id)
    : InstanceFrameVisual(parent, id, "ROBTARGET_" + std::to_string(id), VisualType::Robtarget, "InstanceRobTarget")
{
}

RobtargetVisual* RobtargetVisual::Build(Visual* parent, unsigned id)
{
    const rob::PoseTemplate<float> pose = poseOfNode(id);
    auto* visual = new RobtargetVisual(parent, id);
    SceneCore::Get()->visuals.enter(visual);
    visual->setPose(pose);
    picking::addFrameVisual(visual);
    return visual;
}

} // namespace vrk::visual
