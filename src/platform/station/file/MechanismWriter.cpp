#include "platform/station/file/MechanismWriter.h"

#include "platform/layout/Frame.h"
#include "platform/layout/Mechanism.h"
#include "platform/station/file/ObjectJson.h"

#include <fmt/format.h>

#include <array>

namespace vrk::station {
namespace {

constexpr std::array<const char*, 4> jointTypeNames{"fixed", "revolute", "continuous", "prismatic"}; // by value

Json jointJson(const layout::Joint& joint)
{
    Json json{{"name", joint.name},
              {"type", jointTypeNames[static_cast<std::size_t>(joint.type)]},
              {"parent", joint.parentLink},
              {"child", joint.childLink},
              {"origin", jsonOf(joint.origin)}};
    if (joint.isMoving())
        json["axis"] = {joint.axis.x, joint.axis.y, joint.axis.z};
    if (joint.hasLimits())
        json["limits"] = {joint.lower, joint.upper};
    if (joint.isDriven())
        json["value"] = joint.value;
    if (joint.follows)
        json["follows"] = {
            {"joint", joint.follows->joint}, {"factor", joint.follows->factor}, {"offset", joint.follows->offset}};
    return json;
}

} // namespace

void MechanismWriter::addMechanism(Json& json, const layout::Mechanism& mechanism)
{
    json["links"] = Json::array();
    const std::string before = parts.path;
    for (const auto& link : mechanism.getLinks()) {
        parts.path = fmt::format("{}/links/{}", before, json["links"].size());
        Json entry = placed(*link);
        entry["members"] = parts.membersOf(*link);
        json["links"].push_back(std::move(entry));
    }
    parts.path = before;
    for (const auto& object : mechanism.getPlainChildren())
        json["objects"].push_back(placed(*object));
    for (const layout::Joint& joint : mechanism.getJoints())
        json["joints"].push_back(jointJson(joint));
}

Json MechanismWriter::jsonOf(const layout::Manipulator& manipulator)
{
    Json json = placed(manipulator);
    json["vendor"] = manipulator.getVendor();
    addMechanism(json, manipulator);
    json["wrist"] = onPiece(*manipulator.getWrist());
    json["task_frame"] = bare(*manipulator.getControllerTaskFrame());
    return json;
}

Json MechanismWriter::jsonOf(const layout::Tool& tool)
{
    Json json = placed(tool);
    addMechanism(json, tool);
    for (const auto& frame : tool.getFrames())
        json["frames"].push_back(bare(*frame));
    return json;
}

Json MechanismWriter::jsonOf(const layout::Device& device)
{
    Json json = placed(device);
    addMechanism(json, device);
    for (const auto& frame : device.getFrames())
        json["frames"].push_back(onPiece(*frame));
    return json;
}

} // namespace vrk::station
