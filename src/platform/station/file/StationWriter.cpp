#include "platform/layout/Assembly.h"
#include "platform/layout/Body.h"
#include "platform/layout/Frame.h"
#include "platform/layout/Group.h"
#include "platform/layout/Mechanism.h"
#include "platform/layout/Part.h"
#include "platform/layout/PointCloud.h"
#include "platform/sdf/SdfManager.h"
#include "platform/smart/SmartComponent.h"
#include "platform/station/file/StationText.h"
#include "platform/task/DataItem.h"
#include "platform/task/Task.h"

#include <fmt/format.h>

#include <array>

namespace vrk::station {
namespace {

constexpr std::array<const char*, 4> jointTypeNames{"fixed", "revolute", "continuous", "prismatic"}; // by value

/// Makes the JSON of a station, each kind of object in a function of its own. What has its usual value is left out.
class StationWriter {
public:
    StationWriter(const layout::StationContent& content, GeometryWriter& geometry)
        : content(content), geometry(geometry)
    {
    }

    Json write()
    {
        Json json{{"format", stationFormat}, {"version", stationVersion}};
        if (content.lastViewPointPose != rob::Posed())
            json["view"] = jsonOf(content.lastViewPointPose);
        addList(json, "manipulators", content.manipulators);
        addList(json, "assemblies", content.assemblies);
        addList(json, "parts", content.parts);
        addList(json, "pointclouds", content.pointclouds);
        addList(json, "tools", content.tools);
        addList(json, "devices", content.devices);
        addList(json, "frames", content.frames);
        addList(json, "groups", content.groups);
        addList(json, "components", content.components);
        addList(json, "tasks", content.tasks);
        addList(json, "operations", content.operations);
        for (const layout::Attachment& attachment : content.attachments)
            json["attachments"].push_back({{"child", attachment.child},
                                           {"parent", attachment.parent},
                                           {"pose", station::jsonOf(attachment.pose)}});
        if (!content.visibilities.empty())
            json["hidden"] = content.visibilities;
        return json;
    }

private:
    template <typename List>
    void addList(Json& json, const char* key, const List& list)
    {
        for (std::size_t i = 0, written = 0; i < list.size(); ++i) {
            if (!list[i]->isStandalone()) // its owner writes it
                continue;
            path = fmt::format("/{}/{}", key, written++);
            json[key].push_back(jsonOf(*list[i]));
        }
    }

    static Json jsonOf(const rob::Posed& pose) { return station::jsonOf(pose); }

    static Json idAndName(const sdf::SdfObject& object) { return {{"id", object.getId()}, {"name", object.getName()}}; }

    static void addOwner(Json& json, const char* key, const sdf::SdfObject& object)
    {
        if (object.getParentId() == sdf::SdfManager::stationId)
            json[key] = "station";
        else if (object.getParentId() != 0)
            json[key] = object.getParentId();
    }

    /// What begins an object that has a place of its own; pieces lie on their owners.
    static Json placed(const sdf::SdfObject& object)
    {
        Json json = idAndName(object);
        if (object.isStandalone())
            addOwner(json, "parent", object);
        json["pose"] = jsonOf(object.getPose());
        return json;
    }

    Json jsonOf(const layout::Part& part)
    {
        Json json = placed(part);
        if (!part.isDetectable())
            json["detectable"] = false;
        json["bodies"] = Json::array();
        const std::string before = path;
        for (const auto& body : part.getBodies()) {
            path = fmt::format("{}/bodies/{}", before, json["bodies"].size());
            json["bodies"].push_back(jsonOf(*body));
        }
        path = before;
        return json;
    }

    Json jsonOf(const layout::Body& body)
    {
        const sdf::Element& element = *body.getElement();
        Json json = idAndName(body);
        if (element.get("pose"))
            json["pose"] = jsonOf(body.getPose());
        json["geometry"] = geometry.jsonOf(body, path);
        addText(json, "material", sdf::textAt(element, "visual/material/name"));
        addText(json, "color", sdf::textAt(element, "visual/color"));
        if (const auto colors = element.get("visual/face_colors")) {
            for (const auto& face : colors->getChildren()) // each is called "f<index>"
                json["face_colors"][face->getName().substr(1)] = face->asString();
        }
        return json;
    }

    static void addText(Json& json, const char* key, const std::string& text)
    {
        if (!text.empty())
            json[key] = text;
    }

    Json jsonOf(const layout::Assembly& assembly)
    {
        Json json = placed(assembly);
        json["members"] = membersOf(assembly);
        return json;
    }

    Json membersOf(const layout::PartContainer& container)
    {
        Json members = Json::array();
        const std::string before = path;
        for (const auto& member : container.getParts()) {
            path = fmt::format("{}/members/{}", before, members.size());
            const bool isPart = member->getModelType() == sdf::ModelType::Part;
            Json json{{"type", isPart ? "part" : "assembly"}};
            json.update(isPart ? jsonOf(static_cast<const layout::Part&>(*member))
                               : jsonOf(static_cast<const layout::Assembly&>(*member)));
            members.push_back(std::move(json));
        }
        path = before;
        return members;
    }

    Json jsonOf(const layout::PointCloud& cloud)
    {
        Json json = placed(cloud);
        json["geometry"] = geometry.jsonOf(cloud, path);
        return json;
    }

    /// What all mechanisms have.
    void addMechanism(Json& json, const layout::Mechanism& mechanism)
    {
        json["links"] = Json::array();
        const std::string before = path;
        for (const auto& link : mechanism.getLinks()) {
            path = fmt::format("{}/links/{}", before, json["links"].size());
            Json entry = placed(*link);
            entry["members"] = membersOf(*link);
            json["links"].push_back(std::move(entry));
        }
        path = before;
        for (const auto& object : mechanism.getPlainChildren())
            json["objects"].push_back(placed(*object));
        for (const layout::Joint& joint : mechanism.getJoints())
            json["joints"].push_back(jsonOf(joint));
    }

    static Json jsonOf(const layout::Joint& joint)
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
        if (joint.isMoving())
            json["value"] = joint.value;
        return json;
    }

    Json jsonOf(const layout::Manipulator& manipulator)
    {
        Json json = placed(manipulator);
        json["vendor"] = manipulator.getVendor();
        addMechanism(json, manipulator);
        json["wrist"] = onPiece(*manipulator.getWrist());
        json["task_frame"] = bare(*manipulator.getControllerTaskFrame());
        return json;
    }

    Json jsonOf(const layout::Tool& tool)
    {
        Json json = placed(tool);
        addMechanism(json, tool);
        for (const auto& frame : tool.getFrames())
            json["frames"].push_back(bare(*frame));
        return json;
    }

    Json jsonOf(const layout::Device& device)
    {
        Json json = placed(device);
        addMechanism(json, device);
        for (const auto& frame : device.getFrames())
            json["frames"].push_back(onPiece(*frame));
        return json;
    }

    static Json bare(const sdf::SdfObject& object)
    {
        Json json = idAndName(object);
        json["pose"] = jsonOf(object.getPose());
        return json;
    }

    /// On the mechanism that the object belongs to or on a link of it.
    static Json onPiece(const sdf::SdfObject& object)
    {
        Json json = idAndName(object);
        json["on"] = object.getParentId();
        json["pose"] = jsonOf(object.getPose());
        return json;
    }

    static Json jsonOf(const layout::Frame& frame) { return placed(frame); }

    static Json jsonOf(const layout::Group& group)
    {
        Json json = idAndName(group);
        json["type"] = static_cast<unsigned>(group.getModelType());
        json["members"] = group.getMemberIds();
        return json;
    }

    Json jsonOf(const smartcomp::SmartComponent& component)
    {
        Json json = idAndName(component);
        if (component.isTopLevel())
            addOwner(json, "parent", component);
        json["kind"] = component.getKind();
        for (const auto& inner : component.getComponents())
            json["components"].push_back(jsonOf(*inner));
        return json;
    }

    static Json jsonOf(const task::Task& task)
    {
        Json json = idAndName(task);
        addOwner(json, "owner", task);
        if (task.getManipulatorId() != 0)
            json["manipulator"] = task.getManipulatorId();
        for (const auto& item : task.getDataItems())
            json["data"].push_back(jsonOf(*item));
        return json;
    }

    static Json jsonOf(const task::DataItem& item)
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
        }
        return json;
    }

    static Json jsonOf(const task::Operation& operation)
    {
        Json json = idAndName(operation);
        json["members"] = operation.getMemberIds();
        return json;
    }

    const layout::StationContent& content;
    GeometryWriter& geometry;
    std::string path; // of the object that is being written
};

} // namespace

std::string writeStation(const layout::StationContent& content, GeometryWriter& geometry)
{
    return textOf(StationWriter(content, geometry).write());
}

} // namespace vrk::station
