#include "demo/DemoParts.h"

#include "platform/layout/Body.h"
#include "platform/layout/Mechanism.h"
#include "platform/layout/Part.h"
#include "platform/sdf/SdfManager.h"
#include "platform/station/Import.h"

#include <TopoDS.hxx>
#include <TopoDS_Face.hxx>

#include <numbers>
#include <stdexcept>

namespace vrkview::demo {

using vrk::layout::Body;
using vrk::layout::Link;
using vrk::layout::Part;
using vrk::rob::Posed;

unsigned newId()
{
    return sdf::SdfManager::inst().generateId();
}

double radians(double degrees)
{
    return degrees * std::numbers::pi / 180;
}

Posed at(double x, double y, double z, double turnDegrees)
{
    return {vrk::rob::Posd(x, y, z), vrk::rob::Rotationd(radians(turnDegrees), vrk::rob::Dird(0, 0, 1))};
}

std::shared_ptr<Part> makePart(const std::string& name, const Posed& pose)
{
    auto part = std::make_shared<Part>(newId(), name);
    part->setPose(pose);
    return part;
}

std::shared_ptr<Body> addBody(Part& part, const std::string& name, const TopoDS_Shape& shape, const char* bodyColor,
                              const std::vector<Paint>& paints)
{
    vrk::station::meshShape(shape);
    const std::shared_ptr<Body> body = part.addBody(name);
    body->setGeometry("demo#" + name, "brep");
    body->setShape(shape);
    body->setColor(bodyColor);
    const vrk::layout::FaceMap& faces = body->getFaceMap();
    for (int face = 1; face <= faces.Extent(); ++face)
        for (const Paint& paint : paints)
            if (paint.faces(TopoDS::Face(faces(face))))
                body->setFaceColor(static_cast<unsigned>(face), paint.color);
    return body;
}

std::shared_ptr<Body> addBody(Part& part, const std::string& name, const ShapeMaker& make, const char* bodyColor,
                              const std::vector<Paint>& paints)
{
    return addBody(part, name, kept(name, make), bodyColor, paints);
}

std::shared_ptr<Part> single(const std::string& name, const Posed& pose, const TopoDS_Shape& shape,
                             const char* bodyColor, const std::vector<Paint>& paints)
{
    std::shared_ptr<Part> part = makePart(name, pose);
    addBody(*part, name, shape, bodyColor, paints);
    return part;
}

unsigned faceOf(const Body& body, const FaceTest& wanted)
{
    const vrk::layout::FaceMap& faces = body.getFaceMap();
    for (int face = 1; face <= faces.Extent(); ++face)
        if (wanted(TopoDS::Face(faces(face))))
            return static_cast<unsigned>(face);
    throw std::runtime_error("the demo station's body " + body.getName() + " has no such face");
}

LinkPart makeLink(const std::string& name)
{
    LinkPart made{std::make_shared<Link>(newId(), name), makePart(name)};
    made.link->addPart(made.part);
    return made;
}

void addTurn(vrk::layout::Mechanism& mechanism, const Link& parent, const Link& child, const Turn& turn)
{
    vrk::layout::Joint joint;
    joint.name = turn.name;
    joint.type = vrk::layout::JointType::Revolute;
    joint.parentLink = parent.getId();
    joint.childLink = child.getId();
    joint.origin = Posed(turn.origin);
    joint.axis = turn.axis;
    joint.lower = radians(turn.lower);
    joint.upper = radians(turn.upper);
    joint.value = radians(turn.value);
    mechanism.addJoint(joint);
}

} // namespace vrkview::demo
