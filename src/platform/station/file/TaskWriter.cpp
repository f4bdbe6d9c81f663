#include "platform/station/file/TaskWriter.h"

#include "platform/station/file/ObjectJson.h"
#include "platform/task/EdgeMfgShape.h"
#include "platform/task/Instruction.h"
#include "platform/task/Path.h"
#include "platform/task/Task.h"

#include <algorithm>
#include <array>

namespace vrk::station {
namespace {

Json itemJson(const task::DataItem& item)
{
    Json json{{"type", "tool"}};
    json.update(idAndName(item));
    addOwner(json, "owner", item);
    json["pose"] = jsonOf(item.getPose());
    if (const auto* wobj = dynamic_cast<const task::WObjDataItem*>(&item)) {
        json["type"] = "work_object";
        json["fixed"] = wobj->hasFixedUFrame();
        json["object_frame"] = bare(*wobj->getObjectFrame());
    } else if (const auto* target = dynamic_cast<const task::JointTargetDataItem*>(&item)) {
        json["type"] = "joint_target";
        json["values"] = target->jointValues;
    } else if (item.asType(sdf::ModelType::RobTargetData)) {
        json["type"] = "robot_target";
    }
    return json;
}

constexpr std::array<const char*, 3> motionNames{"linear", "circular", "joint"}; // by value

void addText(Json& json, const char* key, const std::string& text)
{
    if (!text.empty())
        json[key] = text;
}

void addId(Json& json, const char* key, unsigned id)
{
    if (id != 0)
        json[key] = id;
}

void addMove(Json& json, const task::MoveInst& move)
{
    json["motion"] = motionNames[static_cast<std::size_t>(move.getMotion())];
    if (move.isDashed())
        json["dashed"] = true;
    json["target"] = move.getTargetItemId();
    addId(json, "via", move.getCircleItemId());
    addId(json, "work_object", move.getWObjItemId());
    addId(json, "tool", move.getToolItemId());
    addText(json, "speed", move.speed);
    addText(json, "zone", move.zone);
}

Json instructionJson(const task::Instruction& instruction)
{
    Json json = idAndName(instruction);
    if (instruction.isMoveInst())
        addMove(json, static_cast<const task::MoveInst&>(instruction));
    else
        addText(json, "remark", instruction.remark);
    addId(json, "line", instruction.line);
    return json;
}

Json pathJson(const task::Path& path)
{
    Json json = idAndName(path);
    for (const auto& instruction : path.getInstructions())
        json["instructions"].push_back(instructionJson(*instruction));
    return json;
}

Json pointJson(task::EdgeMfgShape::PathPoint point)
{
    return Json::array({point.edge, point.parameter});
}

Json mfgShapeJson(const task::EdgeMfgShape& shape)
{
    Json json = idAndName(shape);
    if (shape.closed)
        json["closed"] = true;
    json["chord"] = shape.chordTolerance;
    for (const geometry::MfgVectors& of : shape.getMfgVectors()) {
        Json edge{{"body", of.body}, {"edge", of.edgeNumber}};
        if (of.edge.Orientation() == TopAbs_REVERSED)
            edge["reversed"] = true;
        for (const geometry::MfgVector& vector : of.vectors)
            edge["vectors"].push_back(
                Json::array({vector.parameter, vector.direction.x, vector.direction.y, vector.direction.z}));
        json["edges"].push_back(std::move(edge));
    }
    json["start"] = pointJson(shape.getStart());
    json["end"] = pointJson(shape.getEnd());
    return json;
}

} // namespace

Json taskJson(const task::Task& task)
{
    Json json = idAndName(task);
    addOwner(json, "owner", task);
    if (task.getManipulatorId() != 0)
        json["manipulator"] = task.getManipulatorId();
    for (const auto& item : task.getDataItems())
        json["data"].push_back(itemJson(*item));
    for (const auto& path : task.getOwnPaths())
        json["paths"].push_back(pathJson(*path));
    for (const auto& shape : task.getMfgShapes())
        json["mfg_shapes"].push_back(mfgShapeJson(*shape));
    return json;
}

bool needsPrograms(const task::Task& task)
{
    return !task.getOwnPaths().empty() || !task.getMfgShapes().empty() ||
           std::ranges::any_of(task.getDataItems(),
                               [](const auto& item) { return item->asType(sdf::ModelType::RobTargetData); });
}

} // namespace vrk::station
