#include "demo/DemoArm.h"

#include "demo/DemoParts.h"

#include "platform/layout/Frame.h"
#include "platform/layout/Mechanism.h"
#include "platform/layout/Part.h"

#include <BRepBuilderAPI_MakeEdge.hxx>
#include <BRepBuilderAPI_MakeFace.hxx>
#include <BRepBuilderAPI_MakeWire.hxx>
#include <BRepPrimAPI_MakeRevol.hxx>
#include <TopoDS_Face.hxx>
#include <gp_Circ.hxx>

#include <array>
#include <cmath>

namespace vrkview::demo {
namespace {

using vrk::layout::Part;
using vrk::rob::Dird;
using vrk::rob::Posd;
using vrk::rob::Posed;

const gp_Dir up = gp::DZ();
const gp_Dir ahead = gp::DX();
const gp_Dir aside = gp::DY();
const gp_Dir back(-1, 0, 0);
const gp_Dir outside(0, -1, 0);

EdgeTest liesAtY(double y)
{
    return [y](const gp_Pnt& middle, const gp_Vec& direction) {
        return std::abs(middle.Y() - y) < 1e-3 && std::abs(direction.Y()) < 1e-3;
    };
}

EdgeTest liesAtX(double x)
{
    return [x](const gp_Pnt& middle, const gp_Vec& direction) {
        return std::abs(middle.X() - x) < 1e-3 && std::abs(direction.X()) < 1e-3;
    };
}

// Each is drawn in the frame of its link: where its joint turns, along the axes of the arm while all joints are 0.

TopoDS_Shape baseShape()
{
    TopoDS_Shape foot = box({-210, -210, 0}, {210, 210, 28});
    foot = bevelled(rounded(foot, 60, isAlong(up)), 5, liesAtHeight(28));
    TopoDS_Shape column = turned({{0, 20}, {182, 20}, {182, 62}, {160, 104}, {160, 196}, {0, 196}});
    column = rounded(column, 24, liesAtHeight(104));
    column = rounded(column, 10, liesAtHeight(196));
    return fused(foot, column);
}

TopoDS_Shape baseBolts()
{
    std::vector<TopoDS_Shape> bolts;
    for (const double x : {-165.0, 165.0})
        for (const double y : {-165.0, 165.0})
            bolts.push_back(drum({x, y, 28}, up, 17, 15, 3));
    return together(bolts);
}

void drawBase(Part& part)
{
    addBody(part, "Base", baseShape, color::graphite);
    addBody(part, "Base bolts", baseBolts, color::brightSteel);
    addBody(
        part, "Connectors",
        [&] {
            return rounded(box({-262, -88, 52}, {-130, 88, 158}), 16, isAlong(ahead));
        },
        color::dark);
    addBody(
        part, "Axis 1 ring",
        [&] {
            return cylinder({0, 0, 190}, up, 150, 22);
        },
        color::dark);
}

TopoDS_Shape shoulder()
{
    const TopoDS_Shape table = rounded(turned({{0, 2}, {178, 2}, {178, 46}, {0, 46}}), 12, liesAtHeight(46));
    TopoDS_Shape casting = sidePlate({{-110, 62, 34}, {118, 62, 34}, {150, 240, 132}}, -80, 92);
    casting = rounded(rounded(casting, 30, liesAtY(92)), 10, liesAtY(-80));
    return fused(table, casting);
}

void drawShoulder(Part& part)
{
    addBody(part, "Shoulder", shoulder, color::orange);
    addBody(
        part, "Axis 2 motor",
        [&] {
            return drum({150, 88, 240}, aside, 96, 150, 22);
        },
        color::graphite);
    addBody(
        part, "Axis 2 motor cap",
        [&] {
            return drum({150, 238, 240}, aside, 52, 14, 4);
        },
        color::dark);
    addBody(
        part, "Axis 1 motor",
        [&] {
            return drum({-82, -2, 44}, up, 62, 186, 16);
        },
        color::graphite);
    addBody(
        part, "Axis 2 ring",
        [&] {
            return cylinder({150, -78, 240}, outside, 112, 12);
        },
        color::dark);
}

TopoDS_Shape upperArm(double inner, double outer)
{
    TopoDS_Shape arm = sidePlate({{0, 0, 126}, {0, 600, 102}}, outer, inner);
    arm = rounded(rounded(arm, 34, liesAtY(outer)), 10, liesAtY(inner));
    const TopoDS_Shape pocket = sidePlate({{0, 185, 50}, {0, 425, 42}}, outer - 1, outer + 20);
    return without(arm, {rounded(pocket, 12, liesAtY(outer + 20))});
}

void drawUpperArm(Part& part)
{
    constexpr double inner = -88, outer = -200;
    addBody(part, "Upper arm", [] { return upperArm(inner, outer); }, color::orange,
            {{isPlaneAt(1, outer + 20), color::graphite}});
    addBody(
        part, "Axis 2 cover",
        [&] {
            return drum({0, outer, 0}, outside, 80, 16, 7);
        },
        color::graphite);
    addBody(
        part, "Axis 3 cover",
        [&] {
            return drum({0, outer, 600}, outside, 64, 16, 7);
        },
        color::graphite);
}

TopoDS_Shape elbow()
{
    TopoDS_Shape casting = sidePlate({{0, 0, 102}, {72, 120, 90}, {-84, 120, 90}}, -80, 80);
    casting = rounded(rounded(casting, 30, liesAtY(80)), 22, liesAtY(-80));
    return fused(casting,
                 turnedAbout(gp_Ax2(gp_Pnt(40, 0, 120), ahead), {{0, 0}, {84, 0}, {84, 146}, {76, 154}, {0, 154}}));
}

TopoDS_Shape wristMotors()
{
    std::vector<TopoDS_Shape> motors;
    for (const std::array<double, 2>& place : {std::array{-40.0, 88.0}, std::array{40.0, 88.0}, std::array{0.0, 160.0}})
        motors.push_back(drum({-165, place[0], place[1]}, back, 36, 104, 9));
    return together(motors);
}

void drawElbow(Part& part)
{
    addBody(part, "Elbow", elbow, color::orange);
    addBody(
        part, "Axis 3 motor",
        [&] {
            return drum({0, 78, 0}, aside, 78, 118, 18);
        },
        color::graphite);
    addBody(
        part, "Axis 3 ring",
        [&] {
            return cylinder({0, -76, 0}, outside, 88, 13);
        },
        color::dark);
    addBody(part, "Wrist motors", wristMotors, color::graphite);
}

TopoDS_Shape forearm()
{
    TopoDS_Shape tube =
        turnedAbout(gp_Ax2(gp::Origin(), ahead), {{0, 2}, {82, 2}, {82, 58}, {62, 214}, {62, 300}, {0, 300}});
    tube = rounded(tube, 90, liesAtX(58));
    tube = rounded(tube, 60, liesAtX(214));
    TopoDS_Shape fork = sidePlate({{262, 0, 60}, {420, 0, 56}}, -84, 84);
    fork = rounded(rounded(fork, 20, liesAtY(-84)), 20, liesAtY(84));
    fork = without(fork, {rounded(box({338, -53, -100}, {520, 53, 100}), 24, [](const gp_Pnt& middle, const gp_Vec& d) {
                       return isAlong(up)(middle, d) && middle.X() < 400;
                   })});
    return fused(tube, fork);
}

void drawForearm(Part& part)
{
    const gp_Ax2 axis(gp::Origin(), ahead);
    addBody(
        part, "Axis 4 ring",
        [&] {
            return turnedAbout(axis, {{0, -8}, {74, -8}, {74, 4}, {0, 4}});
        },
        color::dark);
    addBody(part, "Forearm", forearm, color::orange);
    addBody(
        part, "Axis 5 covers",
        [&] {
            return together({drum({420, -84, 0}, outside, 40, 10, 4), drum({420, 84, 0}, aside, 40, 10, 4)});
        },
        color::graphite);
}

TopoDS_Shape wrist()
{
    const TopoDS_Shape hub = bevelled(cylinder({0, -48, 0}, aside, 53, 96), 7,
                                      [](const gp_Pnt&, const gp_Vec& d) { return std::abs(d.Y()) < 1e-3; });
    const TopoDS_Shape neck = turnedAbout(gp_Ax2(gp::Origin(), ahead), {{0, 0}, {46, 0}, {46, 62}, {40, 68}, {0, 68}});
    return fused(hub, neck);
}

void drawWrist(Part& part)
{
    addBody(part, "Wrist", wrist, color::silver);
}

TopoDS_Shape flangeOfArm()
{
    TopoDS_Shape disc = drum({0, 0, 0}, ahead, 40, 28, 2);
    std::vector<TopoDS_Shape> holes;
    for (int i = 0; i < 6; ++i)
        holes.push_back(cylinder({10, 30 * std::cos(radians(60 * i)), 30 * std::sin(radians(60 * i))}, ahead, 4, 30));
    return without(disc, holes);
}

void drawFlange(Part& part)
{
    addBody(part, "Flange", flangeOfArm, color::steel);
}

// The torch: from the flange straight out, then the neck bends towards x.

constexpr double neckStart = 190, bendRadius = 80, bend = 40; // millimetres, degrees
constexpr double straight = 46, nozzle = 78, wireOut = 14;

/// Where the bend ends, z along what follows.
Posed neckEnd()
{
    const double angle = radians(bend);
    return {Posd(bendRadius * (1 - std::cos(angle)), 0, neckStart + bendRadius * std::sin(angle)),
            vrk::rob::Rotationd(angle, Dird(0, 1, 0))};
}

gp_Ax2 alongNeckEnd(double distance)
{
    const Posed end = neckEnd();
    const Posd place = end * Posd(0, 0, distance);
    return {gp_Pnt(place.x, place.y, place.z), gp_Dir(std::sin(radians(bend)), 0, std::cos(radians(bend)))};
}

TopoDS_Shape bentNeck()
{
    constexpr double radius = 12;
    const gp_Circ ring(gp_Ax2(gp_Pnt(0, 0, neckStart), up), radius);
    const TopoDS_Face disc =
        BRepBuilderAPI_MakeFace(BRepBuilderAPI_MakeWire(BRepBuilderAPI_MakeEdge(ring).Edge()).Wire()).Face();
    const gp_Ax1 pivot(gp_Pnt(bendRadius, 0, neckStart), aside);
    return fused(BRepPrimAPI_MakeRevol(disc, pivot, radians(bend)).Shape(),
                 turnedAbout(alongNeckEnd(0), {{0, 0}, {radius, 0}, {radius, straight}, {0, straight}}));
}

} // namespace

std::shared_ptr<vrk::layout::Manipulator> makeArm(const Posed& pose)
{
    struct Piece {
        const char* name;
        void (*draw)(Part&);
    };
    constexpr std::array pieces = {Piece{"base", drawBase},          Piece{"shoulder", drawShoulder},
                                   Piece{"upper arm", drawUpperArm}, Piece{"elbow", drawElbow},
                                   Piece{"forearm", drawForearm},    Piece{"wrist", drawWrist},
                                   Piece{"flange", drawFlange}};
    const Dird x(1, 0, 0), y(0, 1, 0), z(0, 0, 1);
    const std::array turns = {
        Turn{"axis 1", {0, 0, 210}, z, -170, 170, 0}, Turn{"axis 2", {150, 0, 240}, y, -95, 120, 0},
        Turn{"axis 3", {0, 0, 600}, y, -190, 75, 0},  Turn{"axis 4", {200, 0, 120}, x, -185, 185, 0},
        Turn{"axis 5", {420, 0, 0}, y, -120, 120, 0}, Turn{"axis 6", {72, 0, 0}, x, -350, 350, 0}};

    auto arm = std::make_shared<vrk::layout::Manipulator>(newId(), "Robot");
    arm->setPose(pose);
    for (const Piece& piece : pieces) {
        const LinkPart made = makeLink(piece.name);
        piece.draw(*made.part);
        arm->addLink(made.link);
    }
    const auto& links = arm->getLinks();
    for (std::size_t i = 0; i < turns.size(); ++i)
        addTurn(*arm, *links[i], *links[i + 1], turns[i]);
    arm->placeWrist(links.back()->getId(), {Posd(28, 0, 0), vrk::rob::Rotationd(radians(90), y)});
    arm->getWrist()->setName("tool0");
    arm->getControllerTaskFrame()->setPose(pose);
    return arm;
}

Posed torchTip()
{
    return neckEnd() * Posed(Posd(0, 0, straight + nozzle + wireOut));
}

std::shared_ptr<vrk::layout::Tool> makeTorch()
{
    auto torch = std::make_shared<vrk::layout::Tool>(newId(), "Welding torch");
    const LinkPart made = makeLink("torch");
    addBody(
        *made.part, "Torch mount",
        [&] {
            return turned({{0, 0}, {40, 0}, {40, 14}, {27, 18}, {27, 52}, {0, 52}});
        },
        color::silver);
    addBody(
        *made.part, "Torch body",
        [&] {
            return turned({{0, 50}, {31, 50}, {34, 58}, {34, 150}, {20, 178}, {20, neckStart}, {0, neckStart}});
        },
        color::graphite);
    addBody(
        *made.part, "Torch collar",
        [&] {
            return turned({{33, 78}, {36, 78}, {36, 96}, {33, 96}});
        },
        color::orange);
    addBody(*made.part, "Torch neck", bentNeck, color::brightSteel);
    addBody(
        *made.part, "Torch nozzle",
        [&] {
            return turnedAbout(alongNeckEnd(straight - 12),
                               {{0, 0}, {17, 0}, {17, 52}, {12, 90}, {7, 90}, {7, 80}, {0, 80}});
        },
        color::copper);
    addBody(
        *made.part, "Welding wire",
        [&] {
            return cylinder(alongNeckEnd(straight + nozzle - 12).Location(), alongNeckEnd(0).Direction(), 2,
                            12 + wireOut);
        },
        color::machined);
    torch->addLink(made.link);
    torch->addFrame(std::make_shared<vrk::layout::Frame>(newId(), "Torch tip", torchTip()));
    return torch;
}

} // namespace vrkview::demo
