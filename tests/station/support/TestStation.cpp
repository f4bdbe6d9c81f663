#include "station/support/TestStation.h"

#include "platform/sdf/SdfManager.h"

namespace vrk::test {
namespace {

rob::Posed at(double x, double y, double z)
{
    return rob::Posed(rob::Posd(x, y, z));
}

std::shared_ptr<layout::Link> makeLink(const std::string& name)
{
    auto link = std::make_shared<layout::Link>(newId(), name);
    link->addPart(makePart(name + " part"));
    return link;
}

} // namespace

unsigned newId()
{
    return sdf::SdfManager::inst().generateId();
}

std::shared_ptr<layout::Part> makePart(const std::string& name, const rob::Posd& position)
{
    static const TopoDS_Shape box = meshedBox(10, 10, 10);
    auto part = std::make_shared<layout::Part>(newId(), name);
    const std::shared_ptr<layout::Body> body = part->addBody(name + " body");
    body->setGeometry("station-test-box", "brep");
    body->setShape(box);
    body->setColor("#808080");
    part->setPose(at(position.x, position.y, position.z));
    return part;
}

std::shared_ptr<layout::Assembly> makeAssembly(const std::string& name, int parts)
{
    auto assembly = std::make_shared<layout::Assembly>(newId(), name);
    for (int i = 0; i < parts; ++i)
        assembly->addPart(makePart(name + std::to_string(i), {20.0 * i, 0, 0}));
    return assembly;
}

std::shared_ptr<layout::Manipulator> makeArm(const std::string& vendor)
{
    auto arm = std::make_shared<layout::Manipulator>(newId(), "arm");
    arm->setVendor(vendor);
    const std::shared_ptr<layout::Link> lower = makeLink("lower");
    const std::shared_ptr<layout::Link> upper = makeLink("upper");
    arm->addLink(lower);
    arm->addLink(upper);
    layout::Joint joint;
    joint.name = "elbow";
    joint.type = layout::JointType::Revolute;
    joint.parentLink = lower->getId();
    joint.childLink = upper->getId();
    joint.origin = at(0, 0, 100);
    joint.lower = -2;
    joint.upper = 2;
    arm->addJoint(joint);
    arm->placeWrist(upper->getId(), at(0, 0, 30));
    return arm;
}

std::shared_ptr<layout::Tool> makeTool()
{
    auto tool = std::make_shared<layout::Tool>(newId(), "tool");
    tool->addLink(makeLink("jaw"));
    tool->addFrame(std::make_shared<layout::Frame>(newId(), "tip", at(50, 0, 0)));
    return tool;
}

std::shared_ptr<layout::Device> makeDevice()
{
    auto device = std::make_shared<layout::Device>(newId(), "device");
    const std::shared_ptr<layout::Link> table = makeLink("table");
    device->addLink(table);
    device->addFrame(std::make_shared<layout::Frame>(newId(), "seat", at(0, 0, 5)), table->getId());
    return device;
}

} // namespace vrk::test
