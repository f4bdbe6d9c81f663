#pragma once

#include "demo/DemoSolids.h"

/// The workpieces of the demo station, made with Open CASCADE. Millimetres; each stands on z = 0, its middle at x = y = 0
/// unless it says otherwise. None is triangulated.
namespace vrkview::demo {

/// A fixture plate with rows of tapped holes; its top is at z = 0.
TopoDS_Shape fixturePlate();
/// An angle bracket with a rib, rounded corners, two counterbored holes and a bearing bore.
TopoDS_Shape bracket();
/// A welding-neck flange with six bolt holes.
TopoDS_Shape flange();
/// A pipe bend with a flange at either end; it leaves to +x.
TopoDS_Shape pipeBend();
/// A sheet-metal case with rounded edges, closed on all sides; its front is the plane at y = -55.
TopoDS_Shape gearCase();
/// A round foot for the case.
TopoDS_Shape foot(double radius, double height);
/// About the y axis, bevelled at both ends.
TopoDS_Shape shaft(double radius, double length);
/// A spur gear with a hub about the y axis, in the middle at the origin.
TopoDS_Shape spurGear(int teeth, double module, double width, double bore);

/// The way of a torch along the foot of the bracket, down to it and away again: a wire of five edges that meet smoothly.
TopoDS_Shape weldPath();

} // namespace vrkview::demo
