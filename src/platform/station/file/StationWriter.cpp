#include "platform/layout/Assembly.h"
#include "platform/layout/Frame.h"
#include "platform/layout/Group.h"
#include "platform/layout/Mechanism.h"
#include "platform/layout/Part.h"
#include "platform/layout/PointCloud.h"
#include "platform/smart/SmartComponent.h"
#include "platform/station/file/DimensionJson.h"
#include "platform/station/file/MechanismWriter.h"
#include "platform/station/file/ObjectJson.h"
#include "platform/station/file/PartWriter.h"
#include "platform/station/file/StationText.h"
#include "platform/station/file/TaskWriter.h"
#include "platform/task/Task.h"

#include <fmt/format.h>

#include <algorithm>

namespace vrk::station {
namespace {

/// Makes the JSON of a station, each kind of object in a function of its own. What has its usual value is left out.
class StationWriter {
public:
    StationWriter(const layout::StationContent& content, GeometryWriter& geometry)
        : content(content), geometry(geometry), parts(geometry), mechanisms(parts)
    {
    }

    Json write()
    {
        Json json{{"format", stationFormat}, {"version", firstVersion}};
        if (content.lastViewPointPose != rob::Posed())
            json["view"] = station::jsonOf(content.lastViewPointPose);
        addList(json, "manipulators", content.manipulators,
                [this](const auto& object) { return mechanisms.jsonOf(object); });
        addList(json, "assemblies", content.assemblies, [this](const auto& object) { return parts.jsonOf(object); });
        addList(json, "parts", content.parts, [this](const auto& object) { return parts.jsonOf(object); });
        addList(json, "pointclouds", content.pointclouds, [this](const auto& object) { return parts.jsonOf(object); });
        addList(json, "tools", content.tools, [this](const auto& object) { return mechanisms.jsonOf(object); });
        addList(json, "devices", content.devices, [this](const auto& object) { return mechanisms.jsonOf(object); });
        addList(json, "frames", content.frames, [](const auto& object) { return placed(object); });
        addList(json, "groups", content.groups, [](const auto& object) { return jsonOf(object); });
        addList(json, "components", content.components, [](const auto& object) { return jsonOf(object); });
        addList(json, "tasks", content.tasks, [](const auto& object) { return taskJson(object); });
        addList(json, "operations", content.operations, [](const auto& object) { return jsonOf(object); });
        for (const layout::Attachment& attachment : content.attachments)
            json["attachments"].push_back({{"child", attachment.child},
                                           {"parent", attachment.parent},
                                           {"pose", station::jsonOf(attachment.pose)}});
        if (!content.visibilities.empty())
            json["hidden"] = content.visibilities;
        if (!content.reaches.empty())
            json["reach"] = content.reaches;
        for (const auto& dimension : content.dimensions)
            json["dimensions"].push_back(station::jsonOf(*dimension));
        json["version"] = version();
        return json;
    }

private:
    template <typename List>
    static bool doesAnyFollow(const List& mechanisms)
    {
        return std::ranges::any_of(mechanisms, [](const auto& mechanism) {
            return std::ranges::any_of(mechanism->getJoints(),
                                       [](const layout::Joint& joint) { return joint.follows.has_value(); });
        });
    }

    /// Known when all is written.
    int version() const
    {
        if (geometry.hasMeshes() || doesAnyFollow(content.manipulators) || doesAnyFollow(content.tools) ||
            doesAnyFollow(content.devices))
            return meshVersion;
        if (!content.reaches.empty() || !content.dimensions.empty())
            return measureVersion;
        if (std::ranges::any_of(content.pointclouds,
                                [](const auto& cloud) { return cloud->getHiddenPoints() != nullptr; }))
            return cloudVersion;
        if (std::ranges::any_of(content.tasks, [](const auto& task) { return needsPrograms(*task); }))
            return programVersion;
        return firstVersion;
    }

    template <typename List, typename Write>
    void addList(Json& json, const char* key, const List& list, Write write)
    {
        for (std::size_t i = 0, written = 0; i < list.size(); ++i) {
            if (!list[i]->isStandalone()) // its owner writes it
                continue;
            parts.path = fmt::format("/{}/{}", key, written++);
            json[key].push_back(write(*list[i]));
        }
    }

    static Json jsonOf(const layout::Group& group)
    {
        Json json = idAndName(group);
        json["type"] = static_cast<unsigned>(group.getModelType());
        json["members"] = group.getMemberIds();
        return json;
    }

    static Json jsonOf(const smartcomp::SmartComponent& component)
    {
        Json json = idAndName(component);
        if (component.isTopLevel())
            addOwner(json, "parent", component);
        json["kind"] = component.getKind();
        for (const auto& inner : component.getComponents())
            json["components"].push_back(jsonOf(*inner));
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
    PartWriter parts;
    MechanismWriter mechanisms;
};

} // namespace

std::string writeStation(const layout::StationContent& content, GeometryWriter& geometry)
{
    return textOf(StationWriter(content, geometry).write());
}

} // namespace vrk::station
