#include "station/support/TestCell.h"

#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>
#include <gp_Ax2.hxx>

namespace vrk::test {
namespace {

constexpr const char* orange = "#D9772F";
constexpr const char* graphite = "#454B52";
constexpr const char* silver = "#BFC5CA";
constexpr const char* sage = "#7FA38D";
constexpr const char* wood = "#C9A676";

/// In x and y around the origin, from z = 0 upwards.
TopoDS_Shape block(double x, double y, double z)
{
    return BRepPrimAPI_MakeBox(gp_Pnt(-x / 2, -y / 2, 0), x, y, z).Shape();
}

TopoDS_Shape drum(double radius, double height)
{
    return BRepPrimAPI_MakeCylinder(radius, height).Shape();
}

/// Along y, around the origin.
TopoDS_Shape hub(double radius, double length)
{
    return BRepPrimAPI_MakeCylinder(gp_Ax2(gp_Pnt(0, -length / 2, 0), gp_Dir(0, 1, 0)), radius, length).Shape();
}

rob::Posed at(double x, double y, double z)
{
    return rob::Posed(rob::Posd(x, y, z));
}

std::shared_ptr<layout::Body> addBody(layout::Part& part, const std::string& name, const TopoDS_Shape& shape,
                                      const char* color)
{
    const std::shared_ptr<layout::Body> body = part.addBody(name);
    body->setGeometry("cell#" + name, "brep");
    body->setShape(meshed(shape));
    body->setColor(color);
    return body;
}

std::shared_ptr<layout::Part> makeNamed(const std::string& name)
{
    return std::make_shared<layout::Part>(newId(), name);
}

std::shared_ptr<layout::Link> addLink(layout::Mechanism& mechanism, const std::shared_ptr<layout::Part>& part)
{
    auto link = std::make_shared<layout::Link>(newId(), part->getName());
    link->addPart(part);
    mechanism.addLink(link);
    return link;
}

void addTurn(layout::Mechanism& mechanism, const rob::Posed& origin, const rob::Dird& axis, double value)
{
    const auto& links = mechanism.getLinks();
    layout::Joint joint;
    joint.name = "turn " + std::to_string(mechanism.getJoints().size());
    joint.type = layout::JointType::Continuous;
    joint.parentLink = links[links.size() - 2]->getId();
    joint.childLink = links.back()->getId();
    joint.origin = origin;
    joint.axis = axis;
    joint.value = value;
    mechanism.addJoint(joint);
}

std::shared_ptr<layout::Manipulator> makeCellArm()
{
    auto arm = std::make_shared<layout::Manipulator>(newId(), "arm");
    const auto base = makeNamed("base");
    addBody(*base, "base", drum(90, 110), graphite);
    const auto shoulder = makeNamed("shoulder");
    addBody(*shoulder, "shoulder", drum(75, 60), orange);
    addBody(*shoulder, "shoulder hub", hub(58, 150), graphite)->setPose(at(0, 0, 90));
    const auto upper = makeNamed("upper arm");
    addBody(*upper, "upper arm", block(80, 90, 300), orange);
    const auto fore = makeNamed("forearm");
    addBody(*fore, "elbow hub", hub(55, 130), graphite);
    addBody(*fore, "forearm", BRepPrimAPI_MakeBox(gp_Pnt(0, -35, -35), 290, 70, 70).Shape(), orange);

    addLink(*arm, base);
    addLink(*arm, shoulder);
    addTurn(*arm, at(0, 0, 110), {0, 0, 1}, -0.15);
    addLink(*arm, upper);
    addTurn(*arm, at(0, 0, 90), {0, 1, 0}, 0.18);
    const auto hand = addLink(*arm, fore);
    addTurn(*arm, at(0, 0, 300), {0, 1, 0}, 0.34);
    arm->placeWrist(hand->getId(), {rob::Posd(290, 0, 0), rob::Rotationd(1.5707963267948966, rob::Dird(0, 1, 0))});
    return arm;
}

std::shared_ptr<layout::Tool> makeGripper()
{
    auto gripper = std::make_shared<layout::Tool>(newId(), "gripper");
    const auto jaws = makeNamed("jaws");
    addBody(*jaws, "palm", block(90, 110, 40), silver);
    for (const double y : {-42.0, 42.0})
        addBody(*jaws, "finger", block(40, 20, 80), graphite)->setPose(at(0, y, 40));
    addLink(*gripper, jaws);
    gripper->addFrame(std::make_shared<layout::Frame>(newId(), "tip", at(0, 0, 120)));
    return gripper;
}

std::shared_ptr<layout::Device> makeTurnTable()
{
    auto table = std::make_shared<layout::Device>(newId(), "turn table");
    const auto foot = makeNamed("foot");
    addBody(*foot, "foot", block(220, 220, 170), graphite);
    const auto plate = makeNamed("plate");
    addBody(*plate, "plate", drum(150, 30), silver);
    addLink(*table, foot);
    addLink(*table, plate);
    addTurn(*table, at(0, 0, 170), {0, 0, 1}, 0.4);
    table->setPose(at(480, -60, 0));
    return table;
}

void collectBodies(const sdf::SdfObject& object, std::vector<unsigned>& ids)
{
    if (object.getModelType() == sdf::ModelType::Body)
        ids.push_back(object.getId());
    for (const std::shared_ptr<sdf::SdfObject>& piece : object.getPieces())
        collectBodies(*piece, ids);
}

} // namespace

TestCell addCell()
{
    TestCell cell{makeCellArm(), makeGripper(), makeTurnTable(), makeNamed("workpiece"),
                  std::make_shared<layout::Assembly>(newId(), "crate")};
    addBody(*cell.workpiece, "workpiece", block(150, 90, 70), sage);
    const auto floor = makeNamed("crate floor"), goods = makeNamed("goods");
    addBody(*floor, "crate floor", block(220, 160, 40), wood);
    addBody(*goods, "goods", drum(55, 90), sage)->setPose(at(0, 0, 40));
    cell.crate->addPart(floor);
    cell.crate->addPart(goods);
    cell.crate->setPose(at(130, -330, 0));

    layout::Layout& station = layout::Layout::inst();
    station.addManipulator(cell.arm);
    station.addTool(cell.gripper);
    station.addDevice(cell.table);
    station.addPart(cell.workpiece);
    station.addAssembly(cell.crate);
    station.addAttachment(cell.gripper->getId(), cell.arm->getWrist()->getId(), {});
    station.addAttachment(cell.workpiece->getId(), cell.table->getLinks().back()->getId(), at(0, 0, 30));
    return cell;
}

std::vector<unsigned> bodyIdsOf(const sdf::SdfObject& object)
{
    std::vector<unsigned> ids;
    collectBodies(object, ids);
    return ids;
}

} // namespace vrk::test
