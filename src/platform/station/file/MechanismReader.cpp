#include "platform/station/file/MechanismReader.h"

#include "platform/layout/Frame.h"
#include "platform/layout/Mechanism.h"

#include <fmt/format.h>

namespace vrk::station {
namespace {

layout::JointType jointTypeAt(const JsonPlace& place)
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

void refuseKey(const JsonPlace& at, std::string_view key, bool refused)
{
    if (refused && at.has(key))
        at.at(key).fail("no such key for a joint of this type");
}

layout::JointFollowing followingAt(const JsonPlace& at)
{
    at.expectObject({"joint", "factor", "offset"});
    return {at.at("joint").asText(), at.at("factor").asNumber(), at.at("offset").asNumber()};
}

void readJoint(const JsonPlace& at, layout::Mechanism& mechanism)
{
    at.expectObject({"name", "type", "parent", "child", "origin", "axis", "limits", "value", "follows"});
    layout::Joint joint;
    joint.name = at.at("name").asText();
    joint.type = jointTypeAt(at.at("type"));
    joint.parentLink = at.at("parent").asId();
    joint.childLink = at.at("child").asId();
    joint.origin = at.at("origin").asPose();
    refuseKey(at, "axis", !joint.isMoving());
    refuseKey(at, "follows", !joint.isMoving());
    if (at.has("follows"))
        joint.follows = followingAt(at.at("follows"));
    refuseKey(at, "value", !joint.isDriven());
    refuseKey(at, "limits", !joint.hasLimits());
    if (joint.isMoving()) {
        const std::vector<double> axis = at.at("axis").asNumbers(3);
        joint.axis = {axis[0], axis[1], axis[2]};
        joint.value = joint.isDriven() ? at.at("value").asNumber() : 0;
    }
    if (joint.hasLimits()) {
        const std::vector<double> limits = at.at("limits").asNumbers(2);
        joint.lower = limits[0];
        joint.upper = limits[1];
        if (joint.isDriven() && joint.lower <= joint.upper && (joint.value < joint.lower || joint.value > joint.upper))
            at.at("value").fail("a value between the limits");
    }
    try {
        mechanism.addJoint(std::move(joint));
    } catch (const std::invalid_argument& failure) {
        at.fail(fmt::format("a joint of its mechanism: {}", failure.what()));
    }
}

} // namespace

void MechanismReader::readMechanism(const JsonPlace& at, layout::Mechanism& mechanism)
{
    const unsigned id = mechanism.getId();
    mechanism.setParentId(ids.readOwner(at, "parent", id));
    mechanism.setPose(at.at("pose").asPose());
    at.forEach("links", [&](const JsonPlace& place) {
        place.expectObject({"id", "name", "pose", "members"});
        auto link = std::make_shared<layout::Link>(ids.read(place, sdf::ModelType::Link, true, id), nameAt(place));
        link->setPose(place.at("pose").asPose());
        parts.readMembers(place, *link, 0);
        mechanism.addLink(std::move(link));
    });
    at.forEach("objects", [&](const JsonPlace& place) {
        place.expectObject({"id", "name", "pose"});
        auto object = std::make_shared<layout::Frame>(ids.read(place, sdf::ModelType::Frame, true, id), nameAt(place),
                                                      place.at("pose").asPose());
        mechanism.addPlainChild(std::move(object));
    });
    at.forEach("joints", [&](const JsonPlace& place) { readJoint(place, mechanism); });
    std::size_t next = 0;
    at.forEach("joints", [&](const JsonPlace& place) {
        if (!mechanism.driverOf(mechanism.getJoints()[next++]))
            place.at("follows").at("joint").fail("the name of a joint that moves by itself, or follows one that does");
    });
}

std::shared_ptr<layout::Manipulator> MechanismReader::readManipulator(const JsonPlace& at)
{
    at.expectObject({"id", "name", "parent", "pose", "vendor", "links", "objects", "joints", "wrist", "task_frame"});
    const unsigned id = ids.read(at, sdf::ModelType::Manipulator, true);
    const JsonPlace wrist = at.at("wrist");
    wrist.expectObject({"id", "name", "on", "pose"});
    const JsonPlace taskFrame = at.at("task_frame");
    taskFrame.expectObject({"id", "name", "pose"});
    auto manipulator = std::make_shared<layout::Manipulator>(
        id, nameAt(at), ids.read(wrist, sdf::ModelType::Wrist, true), ids.read(taskFrame, sdf::ModelType::Frame, true));
    manipulator->setVendor(at.at("vendor").asText());
    readMechanism(at, *manipulator);
    manipulator->getWrist()->setName(nameAt(wrist));
    try {
        manipulator->placeWrist(wrist.at("on").asId(), wrist.at("pose").asPose());
    } catch (const std::invalid_argument& failure) {
        wrist.at("on").fail(fmt::format("another id: {}", failure.what()));
    }
    ids.setParent(manipulator->getWrist()->getId(), manipulator->getWrist()->getParentId());
    manipulator->getControllerTaskFrame()->setName(nameAt(taskFrame));
    manipulator->getControllerTaskFrame()->setPose(taskFrame.at("pose").asPose());
    return manipulator;
}

std::shared_ptr<layout::Tool> MechanismReader::readTool(const JsonPlace& at)
{
    at.expectObject({"id", "name", "parent", "pose", "links", "objects", "joints", "frames"});
    auto tool = std::make_shared<layout::Tool>(ids.read(at, sdf::ModelType::Tool, true), nameAt(at));
    readMechanism(at, *tool);
    at.forEach("frames", [&](const JsonPlace& place) {
        place.expectObject({"id", "name", "pose"});
        tool->addFrame(std::make_shared<layout::Frame>(ids.read(place, sdf::ModelType::Frame, true, tool->getId()),
                                                       nameAt(place), place.at("pose").asPose()));
    });
    return tool;
}

std::shared_ptr<layout::Device> MechanismReader::readDevice(const JsonPlace& at)
{
    at.expectObject({"id", "name", "parent", "pose", "links", "objects", "joints", "frames"});
    auto device = std::make_shared<layout::Device>(ids.read(at, sdf::ModelType::Device, true), nameAt(at));
    readMechanism(at, *device);
    at.forEach("frames", [&](const JsonPlace& place) {
        place.expectObject({"id", "name", "on", "pose"});
        const unsigned on = place.at("on").asId();
        auto frame = std::make_shared<layout::Frame>(ids.read(place, sdf::ModelType::Frame, true, on), nameAt(place),
                                                     place.at("pose").asPose());
        try {
            device->addFrame(std::move(frame), on);
        } catch (const std::invalid_argument& failure) {
            place.at("on").fail(fmt::format("another id: {}", failure.what()));
        }
    });
    return device;
}

} // namespace vrk::station
