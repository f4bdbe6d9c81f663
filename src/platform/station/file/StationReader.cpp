#include "platform/geometry/ColorText.h"
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

#include <algorithm>
#include <cctype>
#include <charconv>
#include <functional>
#include <unordered_map>
#include <unordered_set>

namespace vrk::station {
namespace {

constexpr int deepestNesting = 64; // of assemblies and components, which are read by calling oneself

/// Reads the objects of a station in the order in which their visuals are built, then checks what refers to what.
class StationReader {
public:
    StationReader(const JsonPlace& root, GeometryReader& geometry) : root(root), geometry(geometry) {}

    layout::StationContent read()
    {
        checkVersion();
        root.expectObject({"format", "version", "view", "manipulators", "assemblies", "parts", "pointclouds", "tools",
                           "devices", "frames", "groups", "components", "tasks", "operations", "attachments",
                           "hidden"});
        if (root.has("view"))
            content.lastViewPointPose = root.at("view").asPose();
        readList("manipulators", content.manipulators, [this](const JsonPlace& at) { return readManipulator(at); });
        readList("assemblies", content.assemblies, [this](const JsonPlace& at) { return readAssembly(at, 0, true); });
        readList("parts", content.parts, [this](const JsonPlace& at) { return readPart(at, true); });
        readList("pointclouds", content.pointclouds, [this](const JsonPlace& at) { return readCloud(at); });
        readList("tools", content.tools, [this](const JsonPlace& at) { return readTool(at); });
        readList("devices", content.devices, [this](const JsonPlace& at) { return readDevice(at); });
        readList("frames", content.frames, [this](const JsonPlace& at) { return readFrame(at); });
        readList("groups", content.groups, [this](const JsonPlace& at) { return readGroup(at); });
        readList("components", content.components, [this](const JsonPlace& at) { return readComponent(at, 0); });
        readList("tasks", content.tasks, [this](const JsonPlace& at) { return readTask(at); });
        readList("operations", content.operations, [this](const JsonPlace& at) { return readOperation(at); });
        checkReferences();
        readAttachments();
        readHidden();
        return std::move(content);
    }

private:
    /// What is known of an id.
    struct Known {
        sdf::ModelType type;
        bool isSeen;         // has a visual that others can be placed on
        unsigned parent = 0; // 0 for the world
    };
    struct Reference {
        JsonPlace place;
        unsigned from;
        unsigned to;
    };

    void checkVersion() const
    {
        if (!root.get().is_object())
            root.fail("an object");
        const JsonPlace format = root.at("format");
        if (format.asText() != stationFormat)
            format.fail(fmt::format("\"{}\"", stationFormat));
        const JsonPlace version = root.at("version");
        if (version.get() != stationVersion)
            version.fail(std::to_string(stationVersion));
    }

    template <typename List, typename Read>
    void readList(std::string_view key, List& list, Read read)
    {
        root.forEach(key, [&](const JsonPlace& at) {
            list.push_back(read(at));
            content.listMembers(*list.back());
        });
    }

    unsigned readId(const JsonPlace& at, sdf::ModelType type, bool isSeen, unsigned parent = 0)
    {
        const JsonPlace place = at.at("id");
        const unsigned id = place.asId();
        if (!known.emplace(id, Known{type, isSeen, parent}).second)
            place.fail(fmt::format("an id that nothing else has, not {}", id));
        return id;
    }

    /// The owner at `key`: 0 where there is none, the station, or an id, which `checkReferences` looks at.
    unsigned readOwner(const JsonPlace& at, std::string_view key, unsigned of)
    {
        if (!at.has(key))
            return 0;
        const JsonPlace place = at.at(key);
        if (place.get() == "station")
            return sdf::SdfManager::stationId;
        const unsigned owner = place.asId();
        owners.push_back({place, of, owner});
        known.at(of).parent = owner;
        return owner;
    }

    /// The owner of what is built on the visual of its owner, which must be there by then.
    unsigned readSeenOwner(const JsonPlace& at, std::string_view key, unsigned of)
    {
        const unsigned owner = readOwner(at, key, of);
        if (owner == 0 || owner == sdf::SdfManager::stationId)
            return owner;
        const auto found = known.find(owner);
        if (found == known.end() || !found->second.isSeen || owner == of)
            at.at(key).fail(fmt::format("the id of an object that is seen and stands before, not {}", owner));
        return owner;
    }

    std::string readName(const JsonPlace& at) { return at.at("name").asText(); }

    static std::string colorAt(const JsonPlace& place)
    {
        const std::string text = place.asText();
        const auto isHex = [](unsigned char c) { return std::isxdigit(c) != 0; };
        if (text.size() != 7 || text[0] != '#' || !std::all_of(text.begin() + 1, text.end(), isHex))
            place.fail("a colour such as \"#ED1C24\"");
        return text;
    }

    std::shared_ptr<layout::Part> readPart(const JsonPlace& at, bool isStandalone)
    {
        if (isStandalone)
            at.expectObject({"id", "name", "parent", "pose", "detectable", "bodies"});
        else
            at.expectObject({"type", "id", "name", "pose", "detectable", "bodies"});
        auto part = std::make_shared<layout::Part>(readId(at, sdf::ModelType::Part, true), readName(at));
        if (isStandalone)
            part->setParentId(readOwner(at, "parent", part->getId()));
        part->setPose(at.at("pose").asPose());
        if (at.has("detectable"))
            part->setDetectable(at.at("detectable").asBool());
        at.forEach("bodies", [&](const JsonPlace& body) { readBody(body, *part); });
        return part;
    }

    void readBody(const JsonPlace& at, layout::Part& part)
    {
        at.expectObject({"id", "name", "pose", "geometry", "material", "color", "face_colors"});
        const unsigned id = readId(at, sdf::ModelType::Body, true, part.getId());
        const auto body = part.addBody(id, readName(at));
        if (at.has("pose"))
            body->setPose(at.at("pose").asPose());
        geometry.give(*body, at.at("geometry"));
        if (at.has("material"))
            body->setMaterialName(at.at("material").asText());
        if (at.has("color"))
            body->setColor(colorAt(at.at("color")));
        at.forEachKey("face_colors", [&](const std::string& key, const JsonPlace& color) {
            unsigned face = 0;
            const char* const end = key.data() + key.size();
            const auto [stop, error] = std::from_chars(key.data(), end, face);
            if (error != std::errc() || stop != end || face == 0 || key.front() == '0')
                color.fail("the number of a face, from 1, as the key");
            body->setFaceColor(face, colorAt(color));
        });
    }

    void readMembers(const JsonPlace& at, layout::PartContainer& container, int depth)
    {
        at.forEach("members", [&](const JsonPlace& member) {
            if (!member.get().is_object())
                member.fail("an object");
            const std::string type = member.at("type").asText();
            if (type == "part")
                container.addPart(readPart(member, false));
            else if (type == "assembly")
                container.addAssembly(readAssembly(member, depth, false));
            else
                member.at("type").fail("\"part\" or \"assembly\"");
            known.at(container.getParts().back()->getId()).parent = container.getId();
        });
    }

    std::shared_ptr<layout::Assembly> readAssembly(const JsonPlace& at, int depth, bool isStandalone)
    {
        if (isStandalone)
            at.expectObject({"id", "name", "parent", "pose", "members"});
        else
            at.expectObject({"type", "id", "name", "pose", "members"});
        if (depth > deepestNesting)
            at.fail(fmt::format("no more than {} assemblies in each other", deepestNesting));
        auto assembly = std::make_shared<layout::Assembly>(readId(at, sdf::ModelType::Assembly, true), readName(at));
        if (isStandalone)
            assembly->setParentId(readOwner(at, "parent", assembly->getId()));
        assembly->setPose(at.at("pose").asPose());
        readMembers(at, *assembly, depth + 1);
        return assembly;
    }

    std::shared_ptr<layout::PointCloud> readCloud(const JsonPlace& at)
    {
        at.expectObject({"id", "name", "parent", "pose", "geometry"});
        const unsigned id = readId(at, sdf::ModelType::PointCloud, true);
        auto cloud = geometry.makeCloud(id, readName(at), at.at("geometry"));
        cloud->setParentId(readOwner(at, "parent", id));
        cloud->setPose(at.at("pose").asPose());
        return cloud;
    }

    /// What all mechanisms have.
    void readMechanism(const JsonPlace& at, layout::Mechanism& mechanism)
    {
        const unsigned id = mechanism.getId();
        mechanism.setParentId(readOwner(at, "parent", id));
        mechanism.setPose(at.at("pose").asPose());
        at.forEach("links", [&](const JsonPlace& place) {
            place.expectObject({"id", "name", "pose", "members"});
            auto link = std::make_shared<layout::Link>(readId(place, sdf::ModelType::Link, true, id), readName(place));
            link->setPose(place.at("pose").asPose());
            readMembers(place, *link, 0);
            mechanism.addLink(std::move(link));
        });
        at.forEach("objects", [&](const JsonPlace& place) {
            place.expectObject({"id", "name", "pose"});
            auto object = std::make_shared<layout::Frame>(readId(place, sdf::ModelType::Frame, true, id),
                                                          readName(place), place.at("pose").asPose());
            mechanism.addPlainChild(std::move(object));
        });
        at.forEach("joints", [&](const JsonPlace& place) { readJoint(place, mechanism); });
    }

    static layout::JointType jointTypeAt(const JsonPlace& place)
    {
        const std::string type = place.asText();
        if (type == "fixed")
            return layout::JointType::Fixed;
        if (type == "revolute")
            return layout::JointType::Revolute;
        if (type == "continuous")
            return layout::JointType::Continuous;
        if (type == "prismatic")
            return layout::JointType::Prismatic;
        place.fail("\"fixed\", \"revolute\", \"continuous\" or \"prismatic\"");
    }

    static void readJoint(const JsonPlace& at, layout::Mechanism& mechanism)
    {
        at.expectObject({"name", "type", "parent", "child", "origin", "axis", "limits", "value"});
        layout::Joint joint;
        joint.name = at.at("name").asText();
        joint.type = jointTypeAt(at.at("type"));
        joint.parentLink = at.at("parent").asId();
        joint.childLink = at.at("child").asId();
        joint.origin = at.at("origin").asPose();
        refuseKey(at, "axis", !joint.isMoving());
        refuseKey(at, "value", !joint.isMoving());
        refuseKey(at, "limits", !joint.hasLimits());
        if (joint.isMoving()) {
            const std::vector<double> axis = at.at("axis").asNumbers(3);
            joint.axis = {axis[0], axis[1], axis[2]};
            joint.value = at.at("value").asNumber();
        }
        if (joint.hasLimits()) {
            const std::vector<double> limits = at.at("limits").asNumbers(2);
            joint.lower = limits[0];
            joint.upper = limits[1];
            if (joint.lower <= joint.upper && (joint.value < joint.lower || joint.value > joint.upper))
                at.at("value").fail("a value between the limits");
        }
        try {
            mechanism.addJoint(std::move(joint));
        } catch (const std::invalid_argument& failure) {
            at.fail(fmt::format("a joint of its mechanism: {}", failure.what()));
        }
    }

    static void refuseKey(const JsonPlace& at, std::string_view key, bool refused)
    {
        if (refused && at.has(key))
            at.at(key).fail("no such key for a joint of this type");
    }

    std::shared_ptr<layout::Manipulator> readManipulator(const JsonPlace& at)
    {
        at.expectObject(
            {"id", "name", "parent", "pose", "vendor", "links", "objects", "joints", "wrist", "task_frame"});
        const unsigned id = readId(at, sdf::ModelType::Manipulator, true);
        const JsonPlace wrist = at.at("wrist");
        wrist.expectObject({"id", "name", "on", "pose"});
        const JsonPlace taskFrame = at.at("task_frame");
        taskFrame.expectObject({"id", "name", "pose"});
        auto manipulator =
            std::make_shared<layout::Manipulator>(id, readName(at), readId(wrist, sdf::ModelType::Wrist, true),
                                                  readId(taskFrame, sdf::ModelType::Frame, true));
        manipulator->setVendor(at.at("vendor").asText());
        readMechanism(at, *manipulator);
        manipulator->getWrist()->setName(readName(wrist));
        try {
            manipulator->placeWrist(wrist.at("on").asId(), wrist.at("pose").asPose());
        } catch (const std::invalid_argument& failure) {
            wrist.at("on").fail(fmt::format("another id: {}", failure.what()));
        }
        known.at(manipulator->getWrist()->getId()).parent = manipulator->getWrist()->getParentId();
        manipulator->getControllerTaskFrame()->setName(readName(taskFrame));
        manipulator->getControllerTaskFrame()->setPose(taskFrame.at("pose").asPose());
        return manipulator;
    }

    std::shared_ptr<layout::Tool> readTool(const JsonPlace& at)
    {
        at.expectObject({"id", "name", "parent", "pose", "links", "objects", "joints", "frames"});
        auto tool = std::make_shared<layout::Tool>(readId(at, sdf::ModelType::Tool, true), readName(at));
        readMechanism(at, *tool);
        at.forEach("frames", [&](const JsonPlace& place) {
            place.expectObject({"id", "name", "pose"});
            tool->addFrame(std::make_shared<layout::Frame>(readId(place, sdf::ModelType::Frame, true, tool->getId()),
                                                           readName(place), place.at("pose").asPose()));
        });
        return tool;
    }

    std::shared_ptr<layout::Device> readDevice(const JsonPlace& at)
    {
        at.expectObject({"id", "name", "parent", "pose", "links", "objects", "joints", "frames"});
        auto device = std::make_shared<layout::Device>(readId(at, sdf::ModelType::Device, true), readName(at));
        readMechanism(at, *device);
        at.forEach("frames", [&](const JsonPlace& place) {
            place.expectObject({"id", "name", "on", "pose"});
            const unsigned on = place.at("on").asId();
            auto frame = std::make_shared<layout::Frame>(readId(place, sdf::ModelType::Frame, true, on),
                                                         readName(place), place.at("pose").asPose());
            try {
                device->addFrame(std::move(frame), on);
            } catch (const std::invalid_argument& failure) {
                place.at("on").fail(fmt::format("another id: {}", failure.what()));
            }
        });
        return device;
    }

    std::shared_ptr<layout::Frame> readFrame(const JsonPlace& at)
    {
        at.expectObject({"id", "name", "parent", "pose"});
        auto frame = std::make_shared<layout::Frame>(readId(at, sdf::ModelType::Frame, true), readName(at),
                                                     at.at("pose").asPose());
        frame->setParentId(readSeenOwner(at, "parent", frame->getId()));
        return frame;
    }

    std::shared_ptr<layout::Group> readGroup(const JsonPlace& at)
    {
        at.expectObject({"id", "name", "type", "members"});
        const JsonPlace type = at.at("type");
        const unsigned code = type.get().is_number_unsigned() ? type.asId() : 0;
        if (!sdf::isGroup(sdf::ModelType(code)))
            type.fail("a kind of group, from 53 to 57");
        auto group = std::make_shared<layout::Group>(sdf::ModelType(code), readId(at, sdf::ModelType(code), false),
                                                     readName(at));
        readMemberIds(at, *group);
        return group;
    }

    std::shared_ptr<task::Operation> readOperation(const JsonPlace& at)
    {
        at.expectObject({"id", "name", "members"});
        auto operation = std::make_shared<task::Operation>(readId(at, sdf::ModelType::Operation, false), readName(at));
        readMemberIds(at, *operation);
        return operation;
    }

    template <typename Gathering>
    void readMemberIds(const JsonPlace& at, Gathering& gathering)
    {
        at.forEach("members", [&](const JsonPlace& place) {
            const unsigned member = place.asId();
            members.push_back({place, gathering.getId(), member});
            gathering.addMember(member);
        });
    }

    std::shared_ptr<smartcomp::SmartComponent> readComponent(const JsonPlace& at, int depth)
    {
        if (depth == 0)
            at.expectObject({"id", "name", "parent", "kind", "components"});
        else
            at.expectObject({"id", "name", "kind", "components"});
        if (depth > deepestNesting)
            at.fail(fmt::format("no more than {} components in each other", deepestNesting));
        const unsigned id = readId(at, sdf::ModelType::SmartComponent, false);
        auto component = smartcomp::MakeSmartComponent(at.at("kind").asText(), id, readName(at));
        if (!component)
            at.at("kind").fail("a kind of component that the application knows");
        known.at(id).isSeen = component->hasVisual();
        component->setParentId(readOwner(at, "parent", id));
        at.forEach("components", [&](const JsonPlace& place) {
            component->addComponent(readComponent(place, depth + 1));
            known.at(component->getComponents().back()->getId()).parent = id;
        });
        return component;
    }

    std::shared_ptr<task::Task> readTask(const JsonPlace& at)
    {
        at.expectObject({"id", "name", "owner", "manipulator", "data"});
        auto task = std::make_shared<task::Task>(readId(at, sdf::ModelType::Task, false), readName(at));
        task->setOwnerId(readOwner(at, "owner", task->getId()));
        if (at.has("manipulator")) {
            const JsonPlace place = at.at("manipulator");
            const auto found = known.find(place.asId());
            if (found == known.end() || found->second.type != sdf::ModelType::Manipulator)
                place.fail(fmt::format("the id of a manipulator, not {}", place.asId()));
            task->setManipulatorId(found->first);
        }
        at.forEach("data", [&](const JsonPlace& place) { task->addDataItem(readDataItem(place)); });
        return task;
    }

    std::shared_ptr<task::DataItem> readDataItem(const JsonPlace& at)
    {
        if (!at.get().is_object())
            at.fail("an object");
        const std::string type = at.at("type").asText();
        std::shared_ptr<task::DataItem> item;
        if (type == "tool") {
            at.expectObject({"type", "id", "name", "owner", "pose"});
            item = std::make_shared<task::ToolDataItem>(readId(at, sdf::ModelType::ToolData, true), readName(at));
            // The view has no place for one in the world.
            if (readSeenOwner(at, "owner", item->getId()) == 0 || at.at("owner").get().is_string())
                at.fail("an owner that is seen");
        } else if (type == "work_object") {
            item = readWObj(at);
        } else if (type == "joint_target") {
            at.expectObject({"type", "id", "name", "owner", "pose", "values"});
            auto target = std::make_shared<task::JointTargetDataItem>(
                readId(at, sdf::ModelType::JointTargetData, false), readName(at));
            target->jointValues = at.at("values").asNumbers();
            item = std::move(target);
        } else {
            at.at("type").fail("\"tool\", \"work_object\" or \"joint_target\"");
        }
        item->setOwnerId(readOwner(at, "owner", item->getId()));
        item->setPose(at.at("pose").asPose());
        return item;
    }

    std::shared_ptr<task::DataItem> readWObj(const JsonPlace& at)
    {
        at.expectObject({"type", "id", "name", "owner", "pose", "fixed", "object_frame"});
        const JsonPlace frame = at.at("object_frame");
        frame.expectObject({"id", "name", "pose"});
        const unsigned id = readId(at, sdf::ModelType::WObjData, true);
        auto wobj = std::make_shared<task::WObjDataItem>(id, readName(at),
                                                         readId(frame, sdf::ModelType::ObjectFrame, true, id));
        wobj->setFixedUFrame(at.at("fixed").asBool());
        wobj->getObjectFrame()->setName(readName(frame));
        wobj->getObjectFrame()->setPose(frame.at("pose").asPose());
        return wobj;
    }

    void checkReferences() const
    {
        for (const std::vector<Reference>* references : {&owners, &members}) {
            for (const Reference& reference : *references) {
                if (!known.contains(reference.to))
                    reference.place.fail(fmt::format("the id of an object of the station, not {}", reference.to));
            }
        }
        for (const Reference& owner : owners) {
            if (isAbove(owner.from, owner.to))
                owner.place.fail("an owner that does not lie on the object itself");
        }
        checkMembers();
    }

    /// Whether `id` is `of` or carries it. Without loops the way up has an end; one that is there already is found before
    /// as many steps as there are objects.
    bool isAbove(unsigned id, unsigned of) const
    {
        for (std::size_t steps = 0; steps <= known.size(); ++steps) {
            if (of == id)
                return true;
            const auto found = known.find(of);
            if (found == known.end())
                return false;
            of = found->second.parent;
        }
        return false;
    }

    /// Who hides or selects a group goes on to its members: none may lead back.
    void checkMembers() const
    {
        std::unordered_map<unsigned, std::vector<const Reference*>> byGroup;
        for (const Reference& member : members)
            byGroup[member.from].push_back(&member);
        std::unordered_set<unsigned> clear; // leads back to nothing
        std::unordered_set<unsigned> open;  // between the group that was begun with and the one that is looked at
        struct Level {
            unsigned group;
            std::size_t next;
        };
        for (const auto& [first, unused] : byGroup) {
            std::vector<Level> way{{first, 0}};
            open.insert(first);
            while (!way.empty()) {
                Level& level = way.back();
                const auto found = byGroup.find(level.group);
                if (clear.contains(level.group) || found == byGroup.end() || level.next == found->second.size()) {
                    clear.insert(level.group);
                    open.erase(level.group);
                    way.pop_back();
                    continue;
                }
                const Reference& member = *found->second[level.next++];
                if (open.contains(member.to))
                    member.place.fail("a member that does not lead back to the group");
                open.insert(member.to);
                way.push_back({member.to, 0});
            }
        }
    }

    void readAttachments()
    {
        std::unordered_set<unsigned> attached;
        root.forEach("attachments", [&](const JsonPlace& at) {
            at.expectObject({"child", "parent", "pose"});
            layout::Attachment attachment{seenAt(at.at("child")), seenAt(at.at("parent")), at.at("pose").asPose()};
            if (!attached.insert(attachment.child).second)
                at.at("child").fail("an object that nothing else carries");
            if (isAbove(attachment.child, attachment.parent))
                at.at("parent").fail("an object that the child does not carry itself");
            known.at(attachment.child).parent = attachment.parent;
            content.attachments.push_back(attachment);
        });
    }

    unsigned seenAt(const JsonPlace& place) const
    {
        const unsigned id = place.asId();
        const auto found = known.find(id);
        if (found == known.end() || !found->second.isSeen)
            place.fail(fmt::format("the id of an object that is seen, not {}", id));
        return id;
    }

    void readHidden()
    {
        root.forEach("hidden", [&](const JsonPlace& place) {
            if (!known.contains(place.asId()))
                place.fail(fmt::format("the id of an object of the station, not {}", place.asId()));
            content.visibilities.push_back(place.asId());
        });
    }

    const JsonPlace& root;
    GeometryReader& geometry;
    layout::StationContent content;
    std::unordered_map<unsigned, Known> known;
    std::vector<Reference> owners;
    std::vector<Reference> members;
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
