#include "demo/DemoShapes.h"

#include <BRepBuilderAPI_MakeEdge.hxx>
#include <BRepBuilderAPI_MakeFace.hxx>
#include <BRepBuilderAPI_MakePolygon.hxx>
#include <BRepBuilderAPI_MakeWire.hxx>
#include <BRepPrimAPI_MakePrism.hxx>
#include <BRepPrimAPI_MakeRevol.hxx>
#include <GC_MakeArcOfCircle.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Edge.hxx>
#include <TopoDS_Face.hxx>
#include <gp_Circ.hxx>

#include <cmath>
#include <numbers>
#include <vector>

namespace vrkview::demo {
namespace {

constexpr double pi = std::numbers::pi;

std::vector<TopoDS_Shape> holesOnCircle(int count, double circle, double radius, double height)
{
    std::vector<TopoDS_Shape> holes;
    for (int i = 0; i < count; ++i) {
        const double angle = 2 * pi * (i + 0.5) / count;
        holes.push_back(
            cylinder(gp_Pnt(circle * std::cos(angle), circle * std::sin(angle), -1), gp::DZ(), radius, height + 2));
    }
    return holes;
}

bool near(double a, double b)
{
    return std::abs(a - b) < 1e-3;
}

} // namespace

TopoDS_Shape fixturePlate()
{
    constexpr double length = 550, depth = 350, thickness = 25, pitch = 50, holeRadius = 5;
    TopoDS_Shape plate = box({-length / 2, -depth / 2, -thickness}, {length / 2, depth / 2, 0});
    plate = rounded(plate, 18, isAlong(gp::DZ()));
    plate = bevelled(plate, 2.5, liesAtHeight(0));
    std::vector<TopoDS_Shape> holes;
    for (double x = -length / 2 + pitch / 2; x < length / 2; x += pitch)
        for (double y = -depth / 2 + pitch / 2; y < depth / 2; y += pitch)
            holes.push_back(cylinder({x, y, -18}, gp::DZ(), holeRadius, 20));
    return without(plate, holes);
}

TopoDS_Shape bracket()
{
    constexpr double width = 90, length = 120, height = 128, foot = 14, wall = 16;
    TopoDS_Shape base = box({-length / 2, -width / 2, 0}, {length / 2, width / 2, foot});
    base = rounded(base, 18, [&](const gp_Pnt& middle, const gp_Vec& direction) {
        return isAlong(gp::DZ())(middle, direction) && middle.X() > 0;
    });
    TopoDS_Shape back = box({-length / 2, -width / 2, 0}, {-length / 2 + wall, width / 2, height});
    back = rounded(back, 40, [&](const gp_Pnt& middle, const gp_Vec& direction) {
        return isAlong(gp::DX())(middle, direction) && near(middle.Z(), height);
    });
    TopoDS_Shape shape = fused(base, back);
    shape = rounded(shape, 12, [&](const gp_Pnt& middle, const gp_Vec& direction) {
        return isAlong(gp::DY())(middle, direction) && near(middle.X(), -length / 2 + wall) && near(middle.Z(), foot);
    });
    const TopoDS_Shape counterbores =
        fused(cylinder({36, 24, foot - 6}, gp::DZ(), 10, 10), cylinder({36, -24, foot - 6}, gp::DZ(), 10, 10));
    shape =
        without(shape, {counterbores, cylinder({36, 24, -1}, gp::DZ(), 6, 30), cylinder({36, -24, -1}, gp::DZ(), 6, 30),
                        cylinder({-length / 2 - 1, 0, 86}, gp::DX(), 24, wall + 2)});

    // The rib goes in last: it meets the round at the foot of the wall.
    BRepBuilderAPI_MakePolygon outline;
    outline.Add({-length / 2 + wall - 2, -6, foot - 2});
    outline.Add({18, -6, foot - 2});
    outline.Add({18, -6, foot + 4});
    outline.Add({-length / 2 + wall + 5, -6, 56});
    outline.Add({-length / 2 + wall - 2, -6, 56});
    outline.Close();
    const gp_Vec across(0, 12, 0);
    const TopoDS_Shape rib = BRepPrimAPI_MakePrism(BRepBuilderAPI_MakeFace(outline.Wire()).Face(), across).Shape();
    return fused(shape, rib);
}

TopoDS_Shape weldPath()
{
    // Along the foot, around its rounded corner and back along the end. The tangent where one edge ends is that with which
    // the next begins.
    constexpr double side = -45, end = 60, corner = 18, height = 1.5;
    BRepBuilderAPI_MakeWire wire;
    wire.Add(BRepBuilderAPI_MakeEdge(gp_Pnt(-45, side, height), gp_Pnt(end - corner, side, height)).Edge());
    const double middle = corner * (1 - std::numbers::sqrt2 / 2);
    wire.Add(BRepBuilderAPI_MakeEdge(GC_MakeArcOfCircle(gp_Pnt(end - corner, side, height),
                                                        gp_Pnt(end - middle, side + middle, height),
                                                        gp_Pnt(end, side + corner, height))
                                         .Value())
                 .Edge());
    wire.Add(BRepBuilderAPI_MakeEdge(gp_Pnt(end, side + corner, height), gp_Pnt(end, 20, height)).Edge());
    return wire.Wire();
}

TopoDS_Shape flange()
{
    constexpr double bore = 26, outer = 70, disc = 16, neck = 34, height = 62;
    TopoDS_Shape shape =
        turned({{bore, 0}, {outer, 0}, {outer, disc}, {44, disc}, {neck, height - 14}, {neck, height}, {bore, height}});
    shape = rounded(shape, 8, [&](const gp_Pnt& middle, const gp_Vec&) {
        return near(middle.Z(), disc) && near(std::hypot(middle.X(), middle.Y()), 44);
    });
    shape = bevelled(shape, 2, [&](const gp_Pnt& middle, const gp_Vec& direction) {
        return near(middle.Z(), disc) && near(std::hypot(middle.X(), middle.Y()), outer) && near(direction.Z(), 0);
    });
    return without(shape, holesOnCircle(6, 56, 6.5, disc));
}

TopoDS_Shape pipeBend()
{
    constexpr double outer = 26, inner = 20, disc = 48, thickness = 12, rise = 46, bend = 62;
    const gp_Dir up = gp::DZ();
    const TopoDS_Shape lower =
        fused(cylinder(gp::Origin(), up, disc, thickness), cylinder(gp::Origin(), up, outer, rise));
    const TopoDS_Shape lowerPart =
        without(without(lower, {cylinder({0, 0, -1}, up, inner, rise + 2)}), holesOnCircle(4, 37, 5, thickness));

    // A quarter turn about the y direction takes the straight part's end, and the flange with it, to +x.
    const gp_Ax1 pivot(gp_Pnt(bend, 0, rise), gp::DY());
    const auto ring = [&](double radius) {
        const gp_Circ circle(gp_Ax2(gp_Pnt(0, 0, rise), up), radius);
        return BRepBuilderAPI_MakeWire(BRepBuilderAPI_MakeEdge(circle).Edge()).Wire();
    };
    BRepBuilderAPI_MakeFace annulus(ring(outer));
    annulus.Add(TopoDS::Wire(ring(inner).Reversed()));
    const TopoDS_Shape elbow = BRepPrimAPI_MakeRevol(annulus.Face(), pivot, pi / 2).Shape();

    // The same end piece mirrored at the bend's 45 degree plane, upside down at the far end.
    gp_Trsf turn;
    turn.SetRotation(gp_Ax1(gp::Origin(), gp::DY()), -pi / 2);
    gp_Trsf place;
    place.SetTranslation(gp_Vec(bend + rise, 0, rise + bend));
    const TopoDS_Shape farPart = lowerPart.Moved(TopLoc_Location(place * turn));
    return fused(fused(lowerPart, elbow), farPart);
}

TopoDS_Shape gearCase()
{
    return rounded(box({-120, -55, 0}, {120, 55, 150}), 16, isAlong(gp::DY()));
}

TopoDS_Shape foot(double radius, double height)
{
    return cylinder(gp::Origin(), gp::DZ(), radius, height);
}

TopoDS_Shape shaft(double radius, double length)
{
    const TopoDS_Shape rod = cylinder({0, -length / 2, 0}, gp::DY(), radius, length);
    return bevelled(rod, 1.5, [&](const gp_Pnt& middle, const gp_Vec& direction) {
        return near(std::abs(middle.Y()), length / 2) && near(direction.Y(), 0);
    });
}

} // namespace vrkview::demo
