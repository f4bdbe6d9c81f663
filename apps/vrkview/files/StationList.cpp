#include "files/StationList.h"

#include "canvas/Contents.h"
#include "files/ObjectNames.h"
#include "files/Station.h"

#include "platform/layout/Layout.h"
#include "platform/layout/Mechanism.h"
#include "platform/sdf/SdfManager.h"
#include "platform/task/Instruction.h"
#include "platform/task/Path.h"
#include "platform/task/Task.h"
#include "scene/Scene.h"
#include "visual/Visual.h"

#include <nlohmann/json.hpp>

#include <cmath>
#include <numbers>
#include <shared_mutex>

namespace vrkview {
namespace {

using Json = nlohmann::ordered_json;
using vrk::visual::Visual;

Json counts(Visual& visual)
{
    const Contents contents = contentsOf(visual);
    return {{"bodies", contents.bodies},
            {"faces", contents.faces},
            {"triangles", contents.triangles},
            {"curves", contents.curves},
            {"points", contents.points}};
}

Json treeOf(Visual& visual);

/// Of those children that are things of the station: the frame at the origin is the scene's own.
Json treesBelow(const Visual& visual)
{
    Json trees = Json::array();
    const sdf::SdfManager& model = sdf::SdfManager::inst();
    for (Visual* child : visual.getChildren())
        if (kindOf(*child) && model.find(child->getId()))
            trees.push_back(treeOf(*child));
    return trees;
}

/// What moves a mechanism, as "--joints" takes it: degrees, or millimetres of joints that slide.
Json jointsOf(const vrk::layout::Mechanism& mechanism)
{
    constexpr double degrees = 180 / std::numbers::pi;
    Json joints = Json::array();
    for (const vrk::layout::Joint& joint : mechanism.getJoints()) {
        if (!joint.isMoving())
            continue;
        const bool slides = joint.type == vrk::layout::JointType::Prismatic;
        const double unit = slides ? 1 : degrees;
        const auto rounded = [unit](double value) { return std::round(value * unit * 1e6) / 1e6; };
        Json entry = {{"name", joint.name}, {"unit", slides ? "mm" : "degrees"}, {"value", rounded(joint.value)}};
        if (joint.hasLimits())
            entry["limits"] = {rounded(joint.lower), rounded(joint.upper)};
        if (joint.follows)
            entry["follows"] = joint.follows->joint;
        joints.push_back(std::move(entry));
    }
    return joints;
}

Json treeOf(Visual& visual)
{
    Json entry = {{"id", visual.getId()}, {"type", kindOf(visual)}, {"name", nameOf(visual)}};
    entry.update(counts(visual));
    const auto* mechanism = dynamic_cast<const vrk::layout::Mechanism*>(sdf::SdfManager::inst().find(visual.getId()));
    if (mechanism && !mechanism->getJoints().empty())
        entry["joints"] = jointsOf(*mechanism);
    Json children = treesBelow(visual);
    if (!children.empty())
        entry["children"] = std::move(children);
    return entry;
}

/// A path with what it does not draw although it moves the robot.
Json pathOf(const vrk::task::Path& path)
{
    Json entry = {{"id", path.getId()},
                  {"name", path.getName()},
                  {"instructions", path.getInstructions().size()},
                  {"moves", path.moveInstructionCount()}};
    for (const auto& instruction : path.getInstructions())
        if (!instruction->remark.empty())
            entry["not_placed"].push_back(
                {{"line", instruction->line}, {"text", instruction->getName()}, {"why", instruction->remark}});
    return entry;
}

Json programsOfStation()
{
    Json programs = Json::array();
    for (const vrk::task::Task* task : vrk::task::GetAllTasks()) {
        Json paths = Json::array();
        for (const auto& path : task->getOwnPaths())
            paths.push_back(pathOf(*path));
        std::size_t targets = 0;
        for (const auto& item : task->getDataItems())
            if (item->asType(sdf::ModelType::RobTargetData) || item->asType(sdf::ModelType::JointTargetData))
                ++targets;
        programs.push_back({{"id", task->getId()}, {"name", task->getName()}, {"targets", targets}});
        if (task->getManipulatorId() != 0)
            programs.back()["robot"] = task->getManipulatorId();
        programs.back()["paths"] = std::move(paths);
    }
    return programs;
}

} // namespace

std::string listStation(const Station& station)
{
    const std::shared_lock lock(sdf::SdfManager::inst().mutex());
    Visual& world = *vrk::visual::Scene::GetWorldVisual();
    Json list = {{"station", station.title}};
    list.update(counts(world));
    list["tree"] = treesBelow(world);
    if (Json programs = programsOfStation(); !programs.empty())
        list["programs"] = std::move(programs);
    // Names come from files and may be in any encoding.
    return list.dump(2, ' ', false, Json::error_handler_t::replace);
}

} // namespace vrkview
