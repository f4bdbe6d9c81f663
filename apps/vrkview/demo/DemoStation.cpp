#include "demo/DemoStation.h"

#include "demo/DemoArm.h"
#include "demo/DemoFurniture.h"
#include "demo/DemoParts.h"
#include "demo/DemoPositioner.h"
#include "demo/DemoProgram.h"
#include "demo/DemoScan.h"
#include "demo/DemoShapes.h"
#include "demo/KeptShapes.h"

#include "platform/layout/Assembly.h"
#include "platform/layout/Body.h"
#include "platform/layout/Frame.h"
#include "platform/layout/Mechanism.h"
#include "platform/layout/Part.h"
#include "platform/layout/PointCloud.h"
#include "platform/task/Seam.h"
#include "platform/task/Task.h"

#include <BRepAdaptor_Curve.hxx>
#include <TopExp.hxx>
#include <TopTools_IndexedMapOfShape.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Edge.hxx>

#include <algorithm>
#include <array>
#include <cmath>
#include <span>
#include <stdexcept>

namespace vrkview {
namespace {

using namespace demo;
using vrk::layout::Body;
using vrk::layout::Part;
using vrk::rob::Posd;
using vrk::rob::Posed;
using vrk::rob::Rotationd;

constexpr double pedestalHeight = 250;
constexpr double bracketScale = 2; // of the one that is welded, and of its scan
constexpr double fixtureScale = 0.7, fixtureHeight = 25 * fixtureScale;

// Where the arm stands ready, degrees: the torch's tip at the middle of the seam.
constexpr std::array welding = {-12.1, 23.8, 12.0, 5.5, 40.0, 69.9};

std::shared_ptr<Part> makeFixture()
{
    std::shared_ptr<Part> part = makePart("Fixture");
    addBody(*part, "Fixture plate", [&] { return scaled(fixturePlate(), fixtureScale); }, color::slate,
            {{isCylinder(3.4, 3.6), color::dark}, {isPlaneAt(2, -18 * fixtureScale), color::dark}});
    // Stops at the back of the bracket, and a clamp on its foot.
    addBody(
        *part, "Stop",
        [&] {
            return rounded(box({-142, -60, 0}, {-121, 60, 46}), 6, isAlong(gp::DY()));
        },
        color::brass);
    addBody(
        *part, "Side stop",
        [&] {
            return rounded(box({-70, 91, 0}, {40, 112, 46}), 6, isAlong(gp::DX()));
        },
        color::brass);
    return part;
}

std::shared_ptr<Part> makeWorkpiece(const TopoDS_Shape& largeBracket, unsigned& path)
{
    std::shared_ptr<Part> part = makePart("Workpiece");
    addBody(*part, "Bracket", largeBracket, color::sage,
            {{isCylinder(11.8, 12.2), color::machined},
             {isCylinder(19.8, 20.2), color::machined},
             {isCylinder(47.8, 48.2), color::machined},
             {isPlaneAt(2, 16), color::machined}});
    path = addBody(
               *part, "Weld seam", [&] { return scaled(weldPath(), bracketScale); }, color::steelBlue)
               ->getId();
    return part;
}

/// A pair of gears on their shafts in a case whose front is left away.
std::shared_ptr<Part> gearUnit(const Posed& pose, std::vector<HiddenFace>& hidden)
{
    constexpr double module = 4, caseHeight = 8, head = 1.5;
    constexpr int largeTeeth = 26, smallTeeth = 17;
    constexpr double largeX = -42, axisHeight = 76 + caseHeight;
    constexpr double smallX = largeX + module * (largeTeeth + smallTeeth) / 2;
    constexpr double scale = 1.6;
    const auto place = [](double x, double y, double z) { return at(scale * x, scale * y, scale * z); };

    std::shared_ptr<Part> part = makePart("Gear unit", pose);
    const auto body = addBody(
        *part, "Case", [&] { return scaled(gearCase(), scale); }, color::casing);
    body->setPose(place(0, 0, caseHeight));
    hidden.push_back({body->getId(), faceOf(*body, isPlaneAt(1, -55 * scale))});

    const TopoDS_Shape caseFoot = kept("Foot", [&] { return scaled(foot(12, caseHeight + head), scale); });
    for (const double x : {-85.0, 85.0})
        for (const double y : {-38.0, 38.0})
            addBody(*part, "Foot", caseFoot, color::dark)->setPose(place(x, y, 0));

    // The pinion has an odd number of teeth, so that a gap of it stands before the wheel's tooth.
    const Posed largeAxis = place(largeX, 0, axisHeight), smallAxis = place(smallX, 0, axisHeight);
    const FaceTest front = isPlaneFacing(1, -1);
    addBody(*part, "Wheel", [&] { return scaled(spurGear(largeTeeth, module, 34, 12), scale); }, color::brass,
            {{front, color::brightBrass}})
        ->setPose(largeAxis);
    addBody(*part, "Pinion", [&] { return scaled(spurGear(smallTeeth, module, 34, 10), scale); }, color::steel,
            {{front, color::brightSteel}})
        ->setPose(smallAxis);
    addBody(
        *part, "Wheel shaft", [&] { return scaled(shaft(12, 106), scale); }, color::steel)
        ->setPose(largeAxis);
    addBody(
        *part, "Pinion shaft", [&] { return scaled(shaft(10, 106), scale); }, color::steelBlue)
        ->setPose(smallAxis);
    return part;
}

/// Parts in rows on the pallet.
void addGoods(const Posed& pallet, std::vector<std::shared_ptr<Part>>& parts)
{
    constexpr double scale = 1.6;
    const TopoDS_Shape bend = kept("Pipe bend", [&] { return scaled(pipeBend(), scale); });
    const TopoDS_Shape disc = kept("Welding-neck flange", [&] { return scaled(flange(), scale); });
    const double faces[] = {0, 12 * scale, 108 * scale, 96 * scale};
    for (int column = 0; column < 4; ++column) {
        const double x = -435 + 290.0 * column;
        parts.push_back(single("Pipe bend", pallet * at(x - 40, 240, palletHeight), bend, color::steelBlue,
                               {{isPlaneAt(2, faces[0]), color::machined},
                                {isCylinder(4.9 * scale, 5.1 * scale), color::machined},
                                {isPlaneAt(2, faces[1]), color::machined},
                                {isPlaneAt(0, faces[2]), color::machined},
                                {isPlaneAt(0, faces[3]), color::machined}}));
        for (const double y : {-250.0, -5.0})
            parts.push_back(single("Welding-neck flange", pallet * at(x, y, palletHeight), disc, color::silver,
                                   {{isCylinder(6.4 * scale, 6.6 * scale), color::dark},
                                    {isCylinder(25.9 * scale, 26.1 * scale), color::machined}}));
    }
}

/// The same run with a few vectors on each edge: the directions between them turn evenly.
std::shared_ptr<vrk::task::EdgeMfgShape> withFewVectors(const vrk::task::EdgeMfgShape& run)
{
    constexpr std::size_t parts = 3; // of an edge
    auto thin = std::make_shared<vrk::task::EdgeMfgShape>(run.getId(), run.getName());
    thin->chordTolerance = run.chordTolerance;
    for (const vrk::geometry::MfgVectors& edge : run.getMfgVectors()) {
        vrk::geometry::MfgVectors few = edge;
        few.vectors.clear();
        const std::size_t last = edge.vectors.size() - 1;
        for (std::size_t i = 0; i <= std::min(parts, last); ++i)
            few.vectors.push_back(edge.vectors[i * last / std::min(parts, last)]);
        thin->addEdge(few);
    }
    return thin;
}

/// The tool's way over the back of the bracket: up one side, around the round corners and down the other, pointing away
/// from it.
std::shared_ptr<vrk::task::EdgeMfgShape> makeSeam(const Body& of)
{
    constexpr double front = -44 * bracketScale, lowest = 26 * bracketScale, top = 128 * bracketScale;
    TopTools_IndexedMapOfShape edges;
    TopExp::MapShapes(of.getShape(), TopAbs_EDGE, edges);
    std::vector<unsigned> chain;
    unsigned upper = 0;
    for (int i = 1; i <= edges.Size(); ++i) {
        const BRepAdaptor_Curve curve(TopoDS::Edge(edges(i)));
        const gp_Pnt ends[] = {curve.Value(curve.FirstParameter()), curve.Value(curve.LastParameter())};
        const bool isOnBack = std::ranges::all_of(
            ends, [](const gp_Pnt& p) { return std::abs(p.X() - front) < 0.01 && p.Z() > lowest - 0.01; });
        const bool isClosed = ends[0].IsEqual(ends[1], 0.01); // the eye
        const bool isRib =
            std::ranges::all_of(ends, [](const gp_Pnt& p) { return std::abs(p.Y()) < 6.01 * bracketScale; }) &&
            ends[0].Z() < top - 0.01;
        if (!isOnBack || isClosed || isRib)
            continue;
        chain.push_back(static_cast<unsigned>(i));
        if (ends[0].Z() > top - 0.01 && ends[1].Z() > top - 0.01)
            upper = chain.back();
    }
    const unsigned id = newId();
    const auto seamOn = [&](vrk::task::ToolSide side) {
        return vrk::task::MakeSeam(id, "Edge of the bracket", of.getShape(), of.getId(), chain,
                                   {.side = side, .chordTolerance = 1});
    };
    // Away from the back, to whichever hand that is: along its thickness the band would be a tunnel.
    const auto seam = seamOn(vrk::task::ToolSide::Left);
    const auto onTop = std::ranges::find(seam->getMfgVectors(), upper, &vrk::geometry::MfgVectors::edgeNumber);
    return withFewVectors(*(onTop->vectors.front().direction.z > 0.5 ? seam : seamOn(vrk::task::ToolSide::Right)));
}

void setJoints(vrk::layout::Mechanism& mechanism, std::span<const double> degrees)
{
    std::vector<double> values;
    for (const double value : degrees)
        values.push_back(radians(value));
    mechanism.setJointValues(values);
}

Posed lookingFrom(const Posd& eye, const Posd& target)
{
    const vrk::rob::Dird z = vrk::rob::normalized(eye - target);
    const vrk::rob::Dird x = vrk::rob::normalized(vrk::rob::Dird(0, 0, 1).cross(z));
    return {eye, Rotationd::FromAxes(x, vrk::rob::Dird(z.cross(x)), z)};
}

} // namespace

Station demoStation()
{
    Station station;
    station.title = "Demo station";
    vrk::layout::StationContent& cell = station.whole.emplace();

    const auto arm = makeArm(at(0, 0, pedestalHeight));
    setJoints(*arm, welding);
    const auto torch = makeTorch();
    const auto positioner = makePositioner(at(1050, 0, 0));
    const auto fence = makeFence();
    cell.manipulators = {arm};
    cell.tools = {torch};
    cell.devices = {positioner};
    cell.assemblies = {fence};
    for (const std::shared_ptr<sdf::SdfObject>& object : cell.objects())
        if (object->isStandalone())
            cell.listMembers(*object);

    unsigned path = 0;
    const auto fixture = makeFixture();
    const TopoDS_Shape largeBracket = kept("Bracket", [] { return scaled(bracket(), bracketScale); });
    const auto workpiece = makeWorkpiece(largeBracket, path);
    station.arrowedCurves = {path};
    const unsigned table = positioner->getLinks().back()->getId();
    cell.attachments = {{torch->getId(), arm->getWrist()->getId(), {}},
                        {fixture->getId(), table, at(0, 0, fixtureHeight)},
                        {workpiece->getId(), fixture->getId(), at(0, 0, 0)}};
    cell.tasks = {makeTask(*arm, torch->getId(), fixture->getId())};

    const Posed bench = at(770, -920, 0), pallet = at(-430, -1170, 0);
    const Posed scanned = bench * at(-225, 0, benchHeight + 1.5); // clear of the stone
    const auto measured = single("Bracket as drawn", scanned, largeBracket, color::sage);
    station.parts = {makePedestal(pedestalHeight),
                     fixture,
                     workpiece,
                     makeCabinet(at(-1180, 120, 0)),
                     makeBench(bench),
                     gearUnit(bench * at(300, 20, benchHeight), station.hiddenFaces),
                     measured,
                     makePallet(pallet)};
    addGoods(pallet, station.parts);
    cell.visibilities = {measured->getId()};
    station.clouds = {scanOfBracket(scanned, static_cast<float>(bracketScale))};
    addProgram(*cell.tasks.front());
    cell.tasks.front()->addMfgShape(makeSeam(*workpiece->getBodies().front()));
    cell.lastViewPointPose = lookingFrom({5400, -5650, 3950}, {225, -205, 455});
    return station;
}

} // namespace vrkview
