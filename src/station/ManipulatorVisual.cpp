#include "station/ManipulatorVisual.h"

#include "platform/layout/Frame.h"
#include "platform/layout/Mechanism.h"
#include "scene/core/SceneCore.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

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

/// The arms to which an envelope was ever given, and what they are told when something dies. A record of the scene.
struct ManipulatorVisual::EnvelopeOwners {
    explicit EnvelopeOwners(SceneCore& core)
    {
        core.visuals.whenDeleted([this](Visual* dying) { noteDeath(dying); });
    }
    void noteDeath(Visual* dying)
    {
        for (ManipulatorVisual* owner : owners) {
            if (owner->envelope2D == dying)
                owner->envelope2D = nullptr;
            if (owner->envelope3D == dying)
                owner->envelope3D = nullptr;
        }
        const auto found = std::ranges::find(owners, dying);
        if (found == owners.end())
            return;
        ManipulatorVisual* owner = *found;
        owners.erase(found);
        if (Visual* curve = std::exchange(owner->envelope2D, nullptr))
            Visual::Delete(curve);
    }

    std::vector<ManipulatorVisual*> owners;
};

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

void ManipulatorVisual::setEnvelope2D(Visual* curve)
{
    noteEnvelopes();
    envelope2D = curve;
}

void ManipulatorVisual::setEnvelope3D(Visual* surface)
{
    noteEnvelopes();
    envelope3D = surface;
}

void ManipulatorVisual::noteEnvelopes()
{
    auto& owners = SceneCore::Get()->record<EnvelopeOwners>().owners;
    if (std::ranges::find(owners, this) == owners.end())
        owners.push_back(this);
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
