#include "station/TcpVisual.h"

#include "platform/sdf/SdfObject.h"
#include "scene/core/SceneCore.h"
#include "visual/Picking.h"

namespace vrk::visual {

TcpVisual::TcpVisual(Visual* parent, unsigned id)
    : FrameVisual(parent, id, "TCP_" + std::to_string(id), VisualType::Tcp)
{
}

void TcpVisual::Build(Visual* parent, const sdf::SdfObject& toolData)
{
    auto* visual = new TcpVisual(parent, toolData.getId());
    SceneCore::Get()->visuals.enter(visual);
    visual->setPose(rob::PoseTemplate<float>(toolData.getPose()));
    picking::addLineVisual(visual);
}

} // namespace vrk::visual
