#include "station/ManipulatorVisual.h"

#include "platform/layout/Frame.h"
#include "platform/layout/Mechanism.h"
#include "scene/core/SceneCore.h"

#include <string>
#include <string_view>

namespace vrk::visual {
namespace {

/// Makers' names are told in small letters; any other spelling is no maker.
std::string materialOf(std::string_view vendor)
{
    if (vendor == "abb")
        return "ABB";
    if (vendor == "kuka")
        return "KUKA";
    if (vendor == "fanuc")
        return "FANUC";
    if (vendor == "yaskawa")
        return "YASKAWA";
    return "Mechanism";
}

} // namespace

ManipulatorVisual::ManipulatorVisual(sdf::SdfNode* node, Visual* parent, bool withChildren)
    : MechanismVisual(node, parent, withChildren, VisualType::Manipulator)
{
    const std::string base = materialOf(sdf::textAt(*node->getElement(), "vendor"));
    setMaterial(base, base + "Selected", base + "Highlighted");
}

void ManipulatorVisual::Build(Visual* parent, sdf::SdfNode* node, bool withChildren)
{
    const auto& manipulator = dynamic_cast<layout::Manipulator&>(*node);
    BuildWhole(*node, [&] {
        VisualRegistry& visuals = SceneCore::Get()->visuals;
        visuals.enter(new ManipulatorVisual(node, parent, withChildren));
        sdf::SdfNode* wrist = manipulator.getWrist().get();
        WristVisual::Build(visuals.get(wrist->getParentId()), wrist);
    });
}

WristVisual::WristVisual(sdf::SdfNode* wrist, Visual* parent) : Visual(wrist, parent)
{
    type = VisualType::Wrist;
    setPose(rob::PoseTemplate<float>(wrist->getPose()));
}

void WristVisual::Build(Visual* parent, sdf::SdfNode* wrist)
{
    SceneCore::Get()->visuals.enter(new WristVisual(wrist, parent));
}

} // namespace vrk::visual
