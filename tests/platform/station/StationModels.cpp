#include "StationModels.h"

#include "platform/layout/Assembly.h"
#include "platform/layout/Body.h"
#include "platform/layout/Frame.h"
#include "platform/layout/Group.h"
#include "platform/layout/Mechanism.h"
#include "platform/layout/Part.h"
#include "platform/sdf/SdfManager.h"
#include "platform/smart/SmartComponent.h"
#include "platform/task/DataItem.h"
#include "platform/task/Task.h"

namespace vrk::test {
namespace {

using rob::Posd;
using rob::Posed;

unsigned newId()
{
    return sdf::SdfManager::inst().generateId();
}

std::shared_ptr<layout::Part> newPart(const std::string& name, const std::string& geometry)
{
    auto part = std::make_shared<layout::Part>(newId(), name);
    part->setPose(Posed(Posd(1.25, -2, 1.0 / 3), rob::Rotationd(0.3, 0.2, 0.1)));
    if (geometry.empty())
        return part;
    const auto body = part->addBody(name + " body");
    body->setGeometry(geometry, "stl");
    body->setColor("#ED1C24");
    body->setFaceColor(2, "#00FF00");
    body->setFaceColor(10, "#0000ff");
    body->setMaterialName("Glass");
    body->setPose(Posed(Posd(0, 0, 5)));
    return part;
}

std::shared_ptr<layout::Link> newLink(layout::Mechanism& mechanism, const std::string& name,
                                      const std::string& geometry)
{
    auto link = std::make_shared<layout::Link>(newId(), name);
    link->addPart(newPart(name + " part", geometry));
    mechanism.addLink(link);
    return link;
}

void join(layout::Mechanism& mechanism, layout::JointType type, const layout::Link& parent, const layout::Link& child)
{
    layout::Joint joint;
    joint.name = parent.getName() + " to " + child.getName();
    joint.type = type;
    joint.parentLink = parent.getId();
    joint.childLink = child.getId();
    joint.origin = Posed(Posd(0, 0, 330), rob::Rotationd(0.1, 0.2, 0.3));
    joint.axis = {0, -1, 0};
    joint.lower = -2;
    joint.upper = 2.5;
    joint.value = joint.isMoving() ? 0.7 : 0;
    mechanism.addJoint(joint);
}

} // namespace

WholeStation::WholeStation(const std::string& geometry)
    : arm(std::make_shared<layout::Manipulator>(newId(), "arm")),
      gripper(std::make_shared<layout::Tool>(newId(), "gripper")),
      table(std::make_shared<layout::Device>(newId(), "turn table")),
      fixture(std::make_shared<layout::Assembly>(newId(), "fixture \"A\"")), part(newPart("workpiece", geometry)),
      frame(std::make_shared<layout::Frame>(newId(), "corner", Posed(Posd(9, 8, 7)))),
      program(std::make_shared<task::Task>(newId(), "Grüße"))
{
    const auto base = newLink(*arm, "base", geometry);
    const auto shoulder = newLink(*arm, "shoulder", geometry);
    const auto slide = newLink(*arm, "slide", geometry);
    const auto roll = newLink(*arm, "roll", geometry);
    const auto flange = newLink(*arm, "flange", {});
    join(*arm, layout::JointType::Revolute, *base, *shoulder);
    join(*arm, layout::JointType::Prismatic, *shoulder, *slide);
    join(*arm, layout::JointType::Continuous, *slide, *roll);
    join(*arm, layout::JointType::Fixed, *roll, *flange);
    arm->addPlainChild(std::make_shared<layout::Frame>(newId(), "cable", Posed(Posd(3, 3, 3))));
    arm->setVendor("kuka");
    arm->setPose(Posed(Posd(100, 200, 0)));
    arm->setParentId(sdf::SdfManager::stationId);
    arm->placeWrist(flange->getId(), Posed(Posd(0, 0, 80)));
    arm->getControllerTaskFrame()->setPose(Posed(Posd(100, 200, 330)));

    newLink(*gripper, "jaws", geometry);
    gripper->addFrame(std::make_shared<layout::Frame>(newId(), "tip", Posed(Posd(0, 0, 120))));
    const auto plate = newLink(*table, "plate", geometry);
    table->addFrame(std::make_shared<layout::Frame>(newId(), "foot"), table->getId());
    table->addFrame(std::make_shared<layout::Frame>(newId(), "centre"), plate->getId());

    const auto clamps = std::make_shared<layout::Assembly>(newId(), "clamps");
    clamps->addPart(newPart("clamp", geometry));
    fixture->addPart(newPart("plate", geometry));
    fixture->addAssembly(clamps);
    fixture->addPart(newPart("pin", geometry));
    part->setParentId(table->getId());
    part->setDetectable(false);
    frame->setParentId(part->getId());

    const auto toolData = std::make_shared<task::ToolDataItem>(newId(), "gripper tip");
    toolData->setOwnerId(gripper->getId());
    toolData->setPose(Posed(Posd(0, 0, 120)));
    const auto wobj = std::make_shared<task::WObjDataItem>(newId(), "on the table");
    wobj->setOwnerId(table->getId());
    wobj->setFixedUFrame(false);
    wobj->getObjectFrame()->setPose(Posed(Posd(5, 5, 0)));
    const auto target = std::make_shared<task::JointTargetDataItem>(newId(), "home");
    target->jointValues = {0, -1.5, 0.1};
    for (const std::shared_ptr<task::DataItem>& item :
         {std::shared_ptr<task::DataItem>(toolData), std::shared_ptr<task::DataItem>(wobj),
          std::shared_ptr<task::DataItem>(target)})
        program->addDataItem(item);
    program->setOwnerId(arm->getId());
    program->setManipulatorId(arm->getId());
    const auto operation = std::make_shared<task::Operation>(newId(), "take");
    operation->addMember(program->getId());
    operation->addMember(part->getId());
    const auto group = std::make_shared<layout::Group>(sdf::ModelType(55), newId(), "everything fixed");
    group->addMember(fixture->getId());
    group->addMember(frame->getId());
    const auto logic = std::make_shared<smartcomp::SmartComponent>(newId(), "logic");
    logic->addComponent(std::make_shared<smartcomp::SmartComponent>(newId(), "inside"));

    layout::Layout& station = layout::Layout::inst();
    station.addManipulator(arm);
    station.addTool(gripper);
    station.addDevice(table);
    station.addAssembly(fixture);
    station.addPart(part);
    station.addFrame(frame);
    station.addGroup(group);
    station.addSmartComponent(logic);
    station.addTask(program);
    station.addOperation(operation);
    station.addAttachment(gripper->getId(), arm->getWrist()->getId(), Posed(Posd(0, 0, 1)));
    station.setHidden(fixture->getId(), true);
    station.setHidden(frame->getId(), true);
    using End = layout::DimensionEnd;
    station.addDimension(std::make_shared<layout::Dimension>(layout::Dimension{
        "height of the frame",
        layout::Dimension::Type::Distance,
        {{End::Kind::Frame, frame->getId(), 0, {}}, {End::Kind::MeshVertex, part->getId(), 2, Posd(0.1, 0, 50)}}}));
    station.addDimension(std::make_shared<layout::Dimension>(
        layout::Dimension{"", layout::Dimension::Type::Area, {{End::Kind::Face, part->getId(), 1, Posd(3, 4, 5)}}}));
    station.lastViewPointPose = Posed(Posd(1000, -2000, 1500), rob::Rotationd(0.9, 0, 0.4));
}

} // namespace vrk::test
