#include "StationScene.h"

#include "ObjectNames.h"
#include "Station.h"

#include "platform/common/Logger.h"
#include "platform/layout/Body.h"
#include "platform/layout/Frame.h"
#include "platform/layout/Layout.h"
#include "platform/layout/Mechanism.h"
#include "platform/layout/Part.h"
#include "platform/layout/PointCloud.h"
#include "platform/sdf/SdfManager.h"
#include "platform/station/ImportProgram.h"
#include "platform/task/DataItem.h"
#include "platform/task/Task.h"
#include "scene/Scene.h"
#include "visual/Visual.h"

#include <fmt/format.h>

#include <algorithm>
#include <numbers>
#include <shared_mutex>
#include <stdexcept>

namespace vrkview {
namespace {

using vrk::VisualType;
using vrk::layout::Joint;
using vrk::layout::JointType;
using vrk::layout::Layout;
using vrk::layout::LinkPose;
using vrk::layout::Manipulator;
using vrk::layout::Mechanism;
using vrk::layout::StationContent;
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

/// Behind the posts that show the arm.
void showOwnColorsOfPlain(const std::shared_ptr<Mechanism>& mechanism)
{
    const auto* arm = dynamic_cast<const Manipulator*>(mechanism.get());
    if (arm && arm->getVendor().empty())
        Scene::Get()->addRenderTask([mechanism] { showOwnColors(*mechanism); }, 0);
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

/// Takes the visuals of the things of the station out of the scene, and only these: the grid is the scene's own.
void removeVisuals()
{
    std::vector<unsigned> ids;
    {
        sdf::SdfManager& model = sdf::SdfManager::inst();
        const std::shared_lock lock(model.mutex());
        for (const vrk::visual::Visual* visual : Scene::GetWorldVisual()->getChildren())
            if (typeName(visual->getType()) && model.find(visual->getId()))
                ids.push_back(visual->getId());
    }
    for (const unsigned id : ids)
        Scene::Get()->removeVisual(id);
    Scene::Get()->processMsgs();
}

void loadStation()
{
    Scene::LoadStation();
    for (const auto& arm : Layout::inst().manipulators)
        showOwnColorsOfPlain(arm);
}

void replaceStation(const StationContent& content)
{
    removeVisuals();
    Layout::inst().replace(content);
    loadStation();
    Scene::Get()->processMsgs();
}

/// Enters the programs into the model, and tells what of them is not as their text may make one think.
/// @return their tasks
std::vector<unsigned> addPrograms(const Station& station)
{
    std::vector<unsigned> tasks;
    for (const vrk::program::Program& program : station.programs) {
        vrk::station::ProgramSummary summary;
        const auto task = vrk::station::AddProgram(program, summary);
        tasks.push_back(task->getId());
        if (summary.placed < summary.moves)
            vrk::AppLogger::inst()->warn(fmt::format("{}: {}", task->getName(), summary.text()));
        constexpr std::size_t notesToTell = 5;
        for (std::size_t i = 0; i < summary.notes.size() && i < notesToTell; ++i)
            vrk::AppLogger::inst()->warn(
                fmt::format("{}: line {}: {}", task->getName(), summary.notes[i].line, summary.notes[i].text));
        if (summary.notes.size() > notesToTell)
            vrk::AppLogger::inst()->warn(
                fmt::format("{}: and {} more", task->getName(), summary.notes.size() - notesToTell));
    }
    return tasks;
}

void addObjects(const Station& station, std::vector<unsigned>& tasks)
{
    Layout& layout = Layout::inst();
    Scene& scene = *Scene::Get();
    for (const auto& part : station.parts) {
        layout.addPart(part);
        scene.addPart(part.get());
    }
    for (const auto& mechanism : station.mechanisms) {
        layout.addMechanism(mechanism);
        scene.addMechanism(mechanism.get(), true);
        showOwnColorsOfPlain(mechanism);
        if (const auto* manipulator = dynamic_cast<const Manipulator*>(mechanism.get()))
            scene.addFrame(manipulator->getControllerTaskFrame().get());
    }
    for (const auto& cloud : station.clouds) {
        layout.addPointCloud(cloud);
        scene.addPointCloud(cloud.get());
    }
    tasks = addPrograms(station);
    for (const unsigned id : tasks)
        scene.addRenderTask([id] { Scene::Get()->buildTask(id); }, 0);
}

/// @param tasks  of the station's programs
void removeObjects(const Station& station, const std::vector<unsigned>& tasks)
{
    std::vector<unsigned> ids = tasks;
    for (const auto& task : Layout::inst().tasks)
        if (std::ranges::find(tasks, task->getId()) != tasks.end())
            for (const auto& item : task->getDataItems())
                ids.push_back(item->getId());
    for (const auto& part : station.parts)
        ids.push_back(part->getId());
    for (const auto& mechanism : station.mechanisms) {
        ids.push_back(mechanism->getId());
        if (const auto* manipulator = dynamic_cast<const Manipulator*>(mechanism.get()))
            ids.push_back(manipulator->getControllerTaskFrame()->getId());
    }
    for (const auto& cloud : station.clouds)
        ids.push_back(cloud->getId());
    for (const unsigned id : ids)
        if (Scene::HasVisual(id))
            Scene::Get()->removeVisual(id);
    Scene::Get()->processMsgs();
    for (const unsigned id : ids)
        Layout::inst().remove(id);
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
    addPrograms(station);
    loadStation();
    for (const unsigned curve : station.arrowedCurves)
        for (const bool forward : {false, true})
            Scene::Get()->addCurveArrow(curve, forward);
    followJoints();
}

void addToStation(const Station& station)
{
    Scene::Get()->processMsgs(); // what fails of earlier posts is no failure of the station
    const StationContent before = Layout::inst();
    std::vector<unsigned> tasks;
    try {
        if (station.whole)
            replaceStation(*station.whole);
        addObjects(station, tasks);
        Scene::Get()->processMsgs();
    } catch (...) {
        removeObjects(station, tasks);
        if (station.whole)
            replaceStation(before);
        throw;
    }
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
