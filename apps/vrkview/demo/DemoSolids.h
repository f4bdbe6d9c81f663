#pragma once

#include <TopoDS_Shape.hxx>
#include <gp_Ax2.hxx>
#include <gp_Dir.hxx>
#include <gp_Pnt.hxx>
#include <gp_Vec.hxx>

#include <functional>
#include <vector>

class TopoDS_Face;

/// Short words for what the demo's shapes are made with. Millimetres; nothing is triangulated.
namespace vrkview::demo {

struct RadiusHeight {
    double radius;
    double height;
};

TopoDS_Shape box(const gp_Pnt& from, const gp_Pnt& to);
TopoDS_Shape cylinder(const gp_Pnt& foot, const gp_Dir& axis, double radius, double height);
/// A solid of revolution about z from a closed outline.
TopoDS_Shape turned(const std::vector<RadiusHeight>& outline);
/// The same about the direction of `axis`, heights from its location.
TopoDS_Shape turnedAbout(const gp_Ax2& axis, const std::vector<RadiusHeight>& outline);
/// A cylinder whose far end is bevelled.
TopoDS_Shape drum(const gp_Pnt& foot, const gp_Dir& axis, double radius, double height, double bevel);

struct Disc {
    double u, v;
    double radius;
};

/// What a belt around discs encloses, in the plane's x and y, grown along its normal. The discs go round anticlockwise,
/// and none holds another.
TopoDS_Shape plate(const gp_Ax2& plane, const std::vector<Disc>& discs, double thickness);
/// The same in x and z, between two places along y.
TopoDS_Shape sidePlate(const std::vector<Disc>& discs, double fromY, double toY);

TopoDS_Shape fused(const TopoDS_Shape& a, const TopoDS_Shape& b);
/// All tools in one step: each step looks at every face again.
TopoDS_Shape without(const TopoDS_Shape& shape, const std::vector<TopoDS_Shape>& tools);
TopoDS_Shape scaled(const TopoDS_Shape& shape, double factor);
/// Side by side, not joined.
TopoDS_Shape together(const std::vector<TopoDS_Shape>& shapes);

using EdgeTest = std::function<bool(const gp_Pnt& middle, const gp_Vec& direction)>;

TopoDS_Shape rounded(const TopoDS_Shape& shape, double radius, const EdgeTest& wanted);
TopoDS_Shape bevelled(const TopoDS_Shape& shape, double width, const EdgeTest& wanted);
EdgeTest isAlong(const gp_Dir& axis);
EdgeTest liesAtHeight(double z);

using FaceTest = std::function<bool(const TopoDS_Face&)>;

// Tests on faces
FaceTest isCylinder(double minRadius, double maxRadius);
/// A plane whose outward normal is this axis: 0 for x, 1 for y, 2 for z; `sign` is 1 or -1.
FaceTest isPlaneFacing(int axis, int sign);
/// A plane at right angles to an axis, at that place along it.
FaceTest isPlaneAt(int axis, double place);

} // namespace vrkview::demo
