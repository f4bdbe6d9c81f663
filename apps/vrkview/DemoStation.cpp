#include "DemoStation.h"

#include "DemoScan.h"
#include "DemoShapes.h"

#include "platform/layout/Body.h"
#include "platform/layout/Frame.h"
#include "platform/layout/Part.h"
#include "platform/layout/PointCloud.h"
#include "platform/sdf/SdfManager.h"
#include "platform/station/Import.h"
#include "scene/math/Vec.h"

#include <TopoDS.hxx>
#include <TopoDS_Face.hxx>

#include <array>
#include <cmath>
#include <cstdint>
#include <fstream>
#include <numbers>
#include <stdexcept>

namespace vrkview {
namespace {

using vrk::layout::Body;
using vrk::layout::Part;
using vrk::rob::Posd;
using vrk::rob::Posed;
using vrk::rob::Rotationd;

constexpr double pi = std::numbers::pi;
constexpr double plateBottom = -25;

namespace color {
constexpr const char* plate = "#5A646E";
constexpr const char* tapped = "#2F363D";
constexpr const char* aluminium = "#C3C9CE";
constexpr const char* machined = "#E3E6E8";
constexpr const char* steelBlue = "#5C83A8";
constexpr const char* sage = "#7FA38D";
constexpr const char* brass = "#C8A45C";
constexpr const char* orange = "#D98A4A";
constexpr const char* casing = "#D9DAD6";
constexpr const char* steel = "#9AA3AB";
constexpr const char* brightBrass = "#D6B672";
constexpr const char* brightSteel = "#B4BCC3";
constexpr const char* clay = "#C56F52";
} // namespace color

struct Paint {
    demo::FaceTest faces;
    const char* color;
};

std::shared_ptr<Part> makePart(const std::string& name, const Posed& pose)
{
    auto part = std::make_shared<Part>(sdf::SdfManager::inst().generateId(), name);
    part->setPose(pose);
    return part;
}

/// A body of the part. Later paints go over earlier ones. Bodies of one name share their triangles.
std::shared_ptr<Body> addBody(Part& part, const std::string& name, const TopoDS_Shape& shape, const char* bodyColor,
                              const std::vector<Paint>& paints = {})
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

unsigned faceOf(const Body& body, const demo::FaceTest& wanted)
{
    const vrk::layout::FaceMap& faces = body.getFaceMap();
    for (int face = 1; face <= faces.Extent(); ++face)
        if (wanted(TopoDS::Face(faces(face))))
            return static_cast<unsigned>(face);
    throw std::runtime_error("the demo station's body " + body.getName() + " has no such face");
}

Posed at(double x, double y, double z, double turnDegrees = 0)
{
    return {Posd(x, y, z), Rotationd(turnDegrees * pi / 180, vrk::rob::Dird(0, 0, 1))};
}

std::shared_ptr<Part> single(const std::string& name, const Posed& pose, const TopoDS_Shape& shape,
                             const char* bodyColor, const std::vector<Paint>& paints)
{
    std::shared_ptr<Part> part = makePart(name, pose);
    addBody(*part, name, shape, bodyColor, paints);
    return part;
}

/// A pair of gears on their shafts in a case whose front is left away.
std::shared_ptr<Part> gearUnit(std::vector<HiddenFace>& hidden)
{
    constexpr double module = 4, caseHeight = 8, head = 1.5;
    constexpr int largeTeeth = 26, smallTeeth = 17;
    constexpr double largeX = -42, axisHeight = 76;
    constexpr double smallX = largeX + module * (largeTeeth + smallTeeth) / 2;

    std::shared_ptr<Part> part = makePart("Gear unit", at(-140, 95, caseHeight));
    const auto body = addBody(*part, "Case", demo::gearCase(), color::casing);
    hidden.push_back({body->getId(), faceOf(*body, demo::isPlaneAt(1, -55))});

    for (const Posd& place : {Posd(-85, -38, -caseHeight), Posd(85, -38, -caseHeight), Posd(-85, 38, -caseHeight),
                              Posd(85, 38, -caseHeight)})
        addBody(*part, "Foot", demo::foot(12, caseHeight + head), color::tapped)->setPose(Posed(place));

    // The pinion has an odd number of teeth, so that a gap of it stands before the wheel's tooth.
    const Posed largeAxis(Posd(largeX, 0, axisHeight)), smallAxis(Posd(smallX, 0, axisHeight));
    const demo::FaceTest front = demo::isPlaneFacing(1, -1);
    addBody(*part, "Wheel", demo::spurGear(largeTeeth, module, 34, 12), color::brass, {{front, color::brightBrass}})
        ->setPose(largeAxis);
    addBody(*part, "Pinion", demo::spurGear(smallTeeth, module, 34, 10), color::steel, {{front, color::brightSteel}})
        ->setPose(smallAxis);
    addBody(*part, "Wheel shaft", demo::shaft(12, 106), color::steel)->setPose(largeAxis);
    addBody(*part, "Pinion shaft", demo::shaft(10, 106), color::steelBlue)->setPose(smallAxis);
    return part;
}

// The vase: a twisted outline of soft lobes, as a printer makes it.

constexpr int lobes = 9, aroundCount = 216, upCount = 96;
constexpr double vaseHeight = 145, vaseTwist = 1.3; // radians over the height

std::array<float, 3> vasePoint(int around, int up)
{
    const double t = static_cast<double>(up) / upCount;
    const double angle = 2 * pi * around / aroundCount;
    const double belly = 37 + 11 * std::sin(2 * pi * (0.02 + 0.87 * t)) - 3 * t;
    const double radius = belly * (1 + 0.06 * std::cos(lobes * angle));
    const double turned = angle + vaseTwist * t;
    return {static_cast<float>(radius * std::cos(turned)), static_cast<float>(radius * std::sin(turned)),
            static_cast<float>(vaseHeight * t)};
}

struct Triangle {
    std::array<float, 3> a, b, c;
};

std::vector<Triangle> vaseTriangles()
{
    std::vector<Triangle> triangles;
    for (int around = 0; around < aroundCount; ++around) {
        const int next = (around + 1) % aroundCount;
        triangles.push_back({{0, 0, 0}, vasePoint(next, 0), vasePoint(around, 0)});
        for (int up = 0; up < upCount; ++up) {
            triangles.push_back({vasePoint(around, up), vasePoint(next, up), vasePoint(next, up + 1)});
            triangles.push_back({vasePoint(around, up), vasePoint(next, up + 1), vasePoint(around, up + 1)});
        }
    }
    return triangles;
}

std::array<float, 3> normalOf(const Triangle& t)
{
    using vrk::rob::Posf;
    const Posf a(t.a[0], t.a[1], t.a[2]), b(t.b[0], t.b[1], t.b[2]), c(t.c[0], t.c[1], t.c[2]);
    const vrk::rob::Dirf normal = vrk::rob::normalized((b - a).cross(c - a));
    return {normal.x, normal.y, normal.z};
}

/// Binary STL.
void writeStl(const std::filesystem::path& file, const std::vector<Triangle>& triangles)
{
    std::ofstream stream(file, std::ios::binary);
    const std::array<char, 80> header{};
    const auto count = static_cast<std::uint32_t>(triangles.size());
    const std::uint16_t attribute = 0;
    stream.write(header.data(), header.size());
    stream.write(reinterpret_cast<const char*>(&count), sizeof count);
    for (const Triangle& triangle : triangles) {
        for (const std::array<float, 3>& triple : {normalOf(triangle), triangle.a, triangle.b, triangle.c})
            stream.write(reinterpret_cast<const char*>(triple.data()), sizeof triple);
        stream.write(reinterpret_cast<const char*>(&attribute), sizeof attribute);
    }
    if (!stream.flush())
        throw std::runtime_error(file.string() + ": the demo station's STL file cannot be written");
}

std::shared_ptr<Part> printedVase(const std::filesystem::path& folder, const Posed& pose)
{
    const std::filesystem::path file = folder / "Printed vase.stl";
    writeStl(file, vaseTriangles());
    const std::shared_ptr<Part> part = vrk::station::ImportFile(file).front();
    part->setPose(pose);
    part->getBodies().front()->setColor(color::clay);
    return part;
}

std::shared_ptr<vrk::layout::Frame> frame(const std::string& name, const Posed& pose)
{
    return std::make_shared<vrk::layout::Frame>(sdf::SdfManager::inst().generateId(), name, pose);
}

} // namespace

DemoStation::DemoStation()
{
    using namespace demo;
    station.title = "Demo station";
    station.parts = {
        single("Fixture plate", at(0, 0, 0), fixturePlate(), color::plate,
               {{isCylinder(4.9, 5.1), color::tapped}, {isPlaneAt(2, -18), color::tapped}}),
        gearUnit(station.hiddenFaces),
        single("Pipe bend", at(70, 100, 0, -90), pipeBend(), color::steelBlue,
               {{isPlaneAt(2, 0), color::machined},
                {isCylinder(4.9, 5.1), color::machined},
                {isPlaneAt(2, 12), color::machined},
                {isPlaneAt(0, 108), color::machined},
                {isPlaneAt(0, 96), color::machined}}),
        single("Flange", at(-185, -75, 0, 120), flange(), color::aluminium,
               {{isCylinder(6.4, 6.6), color::orange}, {isCylinder(25.9, 26.1), color::orange}}),
        single("Bracket", at(-15, -80, 0), bracket(), color::sage,
               {{isCylinder(5.9, 6.1), color::machined},
                {isCylinder(9.9, 10.1), color::machined},
                {isCylinder(23.9, 24.1), color::orange},
                {isPlaneAt(2, 8), color::machined}}),
        single("Turned baluster", at(185, -115, 0, 135), turnedPart(), color::brass, {}),
        printedVase(folder.getPath(), at(205, 55, 0)),
        single("Tool path", at(0, 0, 0), toolPath(), color::steelBlue, {}),
    };
    station.arrowedCurves = {station.parts.back()->getBodies().front()->getId()};
    station.clouds = {scanOfBracket(at(-190, -330, plateBottom))};
    station.frames = {
        frame("Bearing bore", {Posd(-75 + 16, -80, 86), Rotationd(pi / 2, vrk::rob::Dird(0, 1, 0))}),
        frame("Scan", at(-225, -450, plateBottom)),
    };
}

} // namespace vrkview
