#include "station/ToolVisual.h"

#include "platform/layout/Frame.h"
#include "platform/layout/Mechanism.h"
#include "scene/core/SceneCore.h"
#include "visual/FrameVisual.h"
#include "visual/Picking.h"

namespace vrk::visual {
namespace {

void addFrame(Visual* parent, const layout::Frame& frame, const char* label)
{
    auto* visual = new FrameVisual(parent, frame.getId(), label, VisualType::Frame);
    SceneCore::Get()->visuals.enter(visual);
    visual->setPose(rob::PoseTemplate<float>(frame.getPose()));
    picking::addLineVisual(visual);
}

} // namespace

void ToolVisual::Build(Visual* parent, sdf::SdfNode* node, bool withChildren)
{
    const auto& tool = dynamic_cast<layout::Tool&>(*node);
    BuildWhole(*node, [&] {
        auto* visual = new ToolVisual(node, parent, withChildren);
        SceneCore::Get()->visuals.enter(visual);
        for (const std::shared_ptr<layout::Frame>& frame : tool.getFrames())
            addFrame(visual, *frame, "Tool Frame");
    });
}

void DeviceVisual::Build(Visual* parent, sdf::SdfNode* node, bool withChildren)
{
    const auto& device = dynamic_cast<layout::Device&>(*node);
    BuildWhole(*node, [&] {
        VisualRegistry& visuals = SceneCore::Get()->visuals;
        visuals.enter(new DeviceVisual(node, parent, withChildren));
        for (const std::shared_ptr<layout::Frame>& frame : device.getFrames())
            addFrame(visuals.get(frame->getParentId()), *frame, "Device Frame");
    });
}

} // namespace vrk::visual
