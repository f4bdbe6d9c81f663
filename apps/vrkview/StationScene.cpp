#include "StationScene.h"

#include "Station.h"

#include "platform/layout/Body.h"
#include "platform/layout/Frame.h"
#include "platform/layout/Layout.h"
#include "platform/layout/Mechanism.h"
#include "platform/layout/Part.h"
#include "platform/layout/PointCloud.h"
#include "scene/Scene.h"
#include "visual/Visual.h"

#include <fmt/format.h>

#include <numbers>
#include <stdexcept>

namespace vrkview {
namespace {

using vrk::VisualType;
using vrk::layout::Joint;
using vrk::layout::JointType;
using vrk::layout::Layout;
using vrk::layout::LinkPose;
using vrk::layout::Mechanism;
using vrk::visual::Scene;
using vrk::visual::Visual;

void followJoints()
{
    static boost::signals2::scoped_connection following;
    following = Mechanism::OnLinksMoved([](const std::vector<LinkPose>& poses) {
        for (const LinkPose& link : poses)
            Scene::Get()->setVisualPose(link.id, vrk::rob::Posef(link.pose));
    });
}

/// The library gives an arm of no known maker one plain colour; here it has those of its bodies. Render thread.
void showOwnColors(const sdf::SdfObject& object)
{
    for (const std::shared_ptr<sdf::SdfObject>& piece : object.getPieces())
        showOwnColors(*piece);
    const auto* body = dynamic_cast<const vrk::layout::Body*>(&object);
    if (!body || !Scene::HasVisual(body->getId()))
        return;
    Visual& visual = *Scene::GetVisual(body->getId());
    if (visual.getType() != VisualType::Solid && visual.getType() != VisualType::Mesh)
        return;
    const std::string base = body->getMaterialName();
    visual.setMaterial(base, base + "Selected", base + "Highlighted");
    for (Visual* child : visual.getChildren())
        if (child->getType() == VisualType::WireFrame)
            child->setMaterial("WireFrame", "BodyCurveSelected", "BodyCurveHighlighted");
}

Mechanism* firstThatMoves()
{
    const Layout& layout = Layout::inst();
    for (const auto& manipulator : layout.manipulators)
        if (manipulator->jointValueCount() > 0)
            return manipulator.get();
    for (const auto& device : layout.devices)
        if (device->jointValueCount() > 0)
            return device.get();
    for (const auto& tool : layout.tools)
        if (tool->jointValueCount() > 0)
            return tool.get();
    return nullptr;
}

} // namespace

void showStation(const Station& station)
{
    Layout& layout = Layout::inst();
    if (station.whole)
        layout.replace(*station.whole);
    for (const auto& part : station.parts)
        layout.addPart(part);
    for (const auto& mechanism : station.mechanisms)
        layout.addMechanism(mechanism);
    for (const auto& cloud : station.clouds)
        layout.addPointCloud(cloud);
    for (const auto& frame : station.frames)
        layout.addFrame(frame);
    Scene::LoadStation();
    for (const auto& arm : layout.manipulators)
        if (arm->getVendor().empty())
            Scene::Get()->addRenderTask([arm] { showOwnColors(*arm); }, 0);
    for (const unsigned curve : station.arrowedCurves)
        for (const bool forward : {false, true})
            Scene::Get()->addCurveArrow(curve, forward);
    followJoints();
}

void moveJoints(const std::vector<double>& values)
{
    constexpr double radians = std::numbers::pi / 180;
    Mechanism* mechanism = firstThatMoves();
    if (!mechanism)
        throw std::runtime_error("--joints: nothing here has joints that move");
    std::vector<double> all = mechanism->getJointValues();
    if (values.size() > all.size())
        throw std::runtime_error(
            fmt::format("--joints: {} values, but {} has {} joints", values.size(), mechanism->getName(), all.size()));
    std::size_t next = 0;
    for (const Joint& joint : mechanism->getJoints())
        if (joint.isMoving() && next < values.size()) {
            all[next] = joint.type == JointType::Prismatic ? values[next] : values[next] * radians;
            ++next;
        }
    mechanism->setJointValues(all);
}

} // namespace vrkview
