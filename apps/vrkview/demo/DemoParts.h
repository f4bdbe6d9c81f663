#pragma once

#include "demo/DemoSolids.h"
#include "demo/KeptShapes.h"

#include "scene/math/Pose.h"

#include <memory>
#include <string>
#include <vector>

namespace vrk::layout {
class Body;
class Link;
class Mechanism;
class Part;
} // namespace vrk::layout

/// What the demo's things are put together with: parts of the reference model with painted bodies.
namespace vrkview::demo {

namespace color {
constexpr const char* orange = "#E0752D"; // of the arm
constexpr const char* graphite = "#3B4148";
constexpr const char* slate = "#5A646E";
constexpr const char* silver = "#C3C9CE";
constexpr const char* machined = "#E3E6E8";
constexpr const char* steel = "#9AA3AB";
constexpr const char* brightSteel = "#B4BCC3";
constexpr const char* steelBlue = "#5C83A8";
constexpr const char* sage = "#7FA38D";
constexpr const char* brass = "#C8A45C";
constexpr const char* brightBrass = "#D6B672";
constexpr const char* copper = "#B87345";
constexpr const char* casing = "#D9DAD6";
constexpr const char* dark = "#2A2F34";
constexpr const char* wood = "#C9A676";
constexpr const char* granite = "#474C50";
constexpr const char* safety = "#E3B93C"; // what one must not walk into
constexpr const char* red = "#C8473C";
constexpr const char* green = "#4E9E5F";
} // namespace color

struct Paint {
    FaceTest faces;
    const char* color;
};

std::shared_ptr<vrk::layout::Part> makePart(const std::string& name, const vrk::rob::Posed& pose = {});

/// A body of the part. Later paints go over earlier ones. Bodies of one name share their triangles.
std::shared_ptr<vrk::layout::Body> addBody(vrk::layout::Part& part, const std::string& name, const TopoDS_Shape& shape,
                                           const char* bodyColor, const std::vector<Paint>& paints = {});

/// The same with a shape that is `kept` under the body's name.
std::shared_ptr<vrk::layout::Body> addBody(vrk::layout::Part& part, const std::string& name, const ShapeMaker& make,
                                           const char* bodyColor, const std::vector<Paint>& paints = {});
/// A part with one body of its own name.
std::shared_ptr<vrk::layout::Part> single(const std::string& name, const vrk::rob::Posed& pose,
                                          const TopoDS_Shape& shape, const char* bodyColor,
                                          const std::vector<Paint>& paints = {});

/// The first face of the body that passes, from 1.
/// @throws std::runtime_error where there is none.
unsigned faceOf(const vrk::layout::Body& body, const FaceTest& wanted);

/// A link with one part, both of this name; the bodies are the caller's to add.
struct LinkPart {
    std::shared_ptr<vrk::layout::Link> link;
    std::shared_ptr<vrk::layout::Part> part;
};
LinkPart makeLink(const std::string& name);

/// A joint that turns; the limits and the value are in degrees.
struct Turn {
    const char* name;
    vrk::rob::Posd origin;
    vrk::rob::Dird axis;
    double lower, upper, value;
};
void addTurn(vrk::layout::Mechanism& mechanism, const vrk::layout::Link& parent, const vrk::layout::Link& child,
             const Turn& turn);

unsigned newId();
vrk::rob::Posed at(double x, double y, double z, double turnDegrees = 0);
double radians(double degrees);

} // namespace vrkview::demo
