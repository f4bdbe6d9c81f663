#include "platform/layout/Assembly.h"
#include "platform/layout/Frame.h"
#include "platform/layout/Group.h"
#include "platform/layout/Mechanism.h"
#include "platform/layout/Part.h"
#include "platform/layout/PointCloud.h"
#include "platform/smart/SmartComponent.h"
#include "platform/station/file/DimensionJson.h"
#include "platform/station/file/MechanismReader.h"
#include "platform/station/file/PartReader.h"
#include "platform/station/file/StationText.h"
#include "platform/station/file/TaskReader.h"
#include "platform/task/Task.h"

#include <fmt/format.h>

#include <algorithm>
#include <unordered_set>

namespace vrk::station {
namespace {

/// Reads the objects of a station in the order in which their visuals are built, then checks what refers to what.
class StationReader {
public:
    StationReader(const JsonPlace& root, GeometryReader& geometry)
        : root(root), parts(ids, geometry), mechanisms(ids, parts), tasks(ids, parts)
    {
    }

    layout::StationContent read()
    {
        checkVersion();
        root.expectObject({"format", "version", "view", "manipulators", "assemblies", "parts", "pointclouds", "tools",
                           "devices", "frames", "groups", "components", "tasks", "operations", "attachments", "hidden",
                           "reach", "dimensions"});
        if (root.has("view"))
            content.lastViewPointPose = root.at("view").asPose();
        readList("manipulators", content.manipulators,
                 [this](const JsonPlace& at) { return mechanisms.readManipulator(at); });
        readList("assemblies", content.assemblies,
                 [this](const JsonPlace& at) { return parts.readAssembly(at, 0, true); });
        readList("parts", content.parts, [this](const JsonPlace& at) { return parts.readPart(at, true); });
        readList("pointclouds", content.pointclouds, [this](const JsonPlace& at) { return parts.readCloud(at); });
        readList("tools", content.tools, [this](const JsonPlace& at) { return mechanisms.readTool(at); });
        readList("devices", content.devices, [this](const JsonPlace& at) { return mechanisms.readDevice(at); });
        readList("frames", content.frames, [this](const JsonPlace& at) { return readFrame(at); });
        readList("groups", content.groups, [this](const JsonPlace& at) { return readGroup(at); });
        readList("components", content.components, [this](const JsonPlace& at) { return readComponent(at, 0); });
        readList("tasks", content.tasks, [this](const JsonPlace& at) { return tasks.readTask(at); });
        readList("operations", content.operations, [this](const JsonPlace& at) { return readOperation(at); });
        ids.check();
        readAttachments();
        readHidden();
        readReach();
        root.forEach("dimensions",
                     [this](const JsonPlace& at) { content.dimensions.push_back(readDimension(at, ids)); });
        return std::move(content);
    }

private:
    void checkVersion()
    {
        if (!root.get().is_object())
            root.fail("an object");
        const JsonPlace format = root.at("format");
        if (format.asText() != stationFormat)
            format.fail(fmt::format("\"{}\"", stationFormat));
        const JsonPlace version = root.at("version");
        if (!version.get().is_number_unsigned() || version.get() < firstVersion || version.get() > meshVersion)
            version.fail(fmt::format("a version from {} to {}", firstVersion, meshVersion));
        tasks.withPrograms = version.get() >= programVersion;
        parts.withHiddenPoints = version.get() >= cloudVersion;
        if (version.get() < measureVersion)
            for (const char* key : {"reach", "dimensions"})
                if (root.has(key))
                    root.at(key).fail(fmt::format("no such key before version {}", measureVersion));
    }

    template <typename List, typename Read>
    void readList(std::string_view key, List& list, Read read)
    {
        root.forEach(key, [&](const JsonPlace& at) {
            list.push_back(read(at));
            content.listMembers(*list.back());
        });
    }

    std::shared_ptr<layout::Frame> readFrame(const JsonPlace& at)
    {
        at.expectObject({"id", "name", "parent", "pose"});
        auto frame = std::make_shared<layout::Frame>(ids.read(at, sdf::ModelType::Frame, true), nameAt(at),
                                                     at.at("pose").asPose());
        frame->setParentId(ids.readSeenOwner(at, "parent", frame->getId()));
        return frame;
    }

    std::shared_ptr<layout::Group> readGroup(const JsonPlace& at)
    {
        at.expectObject({"id", "name", "type", "members"});
        const JsonPlace type = at.at("type");
        const unsigned code = type.get().is_number_unsigned() ? type.asId() : 0;
        if (!sdf::isGroup(sdf::ModelType(code)))
            type.fail("a kind of group, from 53 to 57");
        auto group = std::make_shared<layout::Group>(sdf::ModelType(code), ids.read(at, sdf::ModelType(code), false),
                                                     nameAt(at));
        ids.readMembers(at, *group);
        return group;
    }

    std::shared_ptr<task::Operation> readOperation(const JsonPlace& at)
    {
        at.expectObject({"id", "name", "members"});
        auto operation = std::make_shared<task::Operation>(ids.read(at, sdf::ModelType::Operation, false), nameAt(at));
        ids.readMembers(at, *operation);
        return operation;
    }

    std::shared_ptr<smartcomp::SmartComponent> readComponent(const JsonPlace& at, int depth)
    {
        if (depth == 0)
            at.expectObject({"id", "name", "parent", "kind", "components"});
        else
            at.expectObject({"id", "name", "kind", "components"});
        if (depth > deepestNesting)
            at.fail(fmt::format("no more than {} components in each other", deepestNesting));
        const unsigned id = ids.read(at, sdf::ModelType::SmartComponent, false);
        auto component = smartcomp::MakeSmartComponent(at.at("kind").asText(), id, nameAt(at));
        if (!component)
            at.at("kind").fail("a kind of component that the application knows");
        ids.setSeen(id, component->hasVisual());
        component->setParentId(ids.readOwner(at, "parent", id));
        at.forEach("components", [&](const JsonPlace& place) {
            component->addComponent(readComponent(place, depth + 1));
            ids.setParent(component->getComponents().back()->getId(), id);
        });
        return component;
    }

    void readAttachments()
    {
        std::unordered_set<unsigned> attached;
        root.forEach("attachments", [&](const JsonPlace& at) {
            at.expectObject({"child", "parent", "pose"});
            layout::Attachment attachment{ids.seenAt(at.at("child")), ids.seenAt(at.at("parent")),
                                          at.at("pose").asPose()};
            if (!attached.insert(attachment.child).second)
                at.at("child").fail("an object that nothing else carries");
            if (ids.isAbove(attachment.child, attachment.parent))
                at.at("parent").fail("an object that the child does not carry itself");
            ids.setParent(attachment.child, attachment.parent);
            content.attachments.push_back(attachment);
        });
    }

    void readHidden()
    {
        root.forEach("hidden", [&](const JsonPlace& place) {
            if (!ids.find(place.asId()))
                place.fail(fmt::format("the id of an object of the station, not {}", place.asId()));
            content.visibilities.push_back(place.asId());
        });
    }

    void readReach()
    {
        root.forEach("reach", [&](const JsonPlace& place) {
            const unsigned id = place.asId();
            const StationIds::Known* known = ids.find(id);
            if (!known || known->type != sdf::ModelType::Manipulator)
                place.fail(fmt::format("the id of a manipulator of the station, not {}", id));
            if (std::ranges::find(content.reaches, id) != content.reaches.end())
                place.fail("a manipulator that is not listed before");
            content.reaches.push_back(id);
        });
    }

    const JsonPlace& root;
    layout::StationContent content;
    StationIds ids;
    PartReader parts;
    MechanismReader mechanisms;
    TaskReader tasks;
};

} // namespace

layout::StationContent parseStation(const std::string& text, const std::filesystem::path& file, GeometryUse use,
                                    const Progress& progress)
{
    const Json json = parseStationJson(text, file);
    GeometryReader geometry(file, use, progress);
    return StationReader(JsonPlace(json, "", file), geometry).read();
}

} // namespace vrk::station
