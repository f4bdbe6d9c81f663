#include "demo/DemoShapes.h"

#include <BRepAlgoAPI_Cut.hxx>
#include <BRepBuilderAPI_MakeFace.hxx>
#include <BRepBuilderAPI_MakePolygon.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>
#include <BRepPrimAPI_MakePrism.hxx>
#include <gp_Ax2.hxx>

#include <cmath>
#include <numbers>

namespace vrkview::demo {
namespace {

struct FlankPoint {
    double radius;    // from the pitch circle, in modules
    double halfWidth; // of the tooth there, as a share of the pitch
};

// From root to tip: near enough to an involute for the eye.
constexpr FlankPoint flank[] = {{-1.25, 0.36}, {-0.6, 0.30}, {0.0, 0.245}, {0.55, 0.175}, {1.0, 0.10}};

} // namespace

TopoDS_Shape spurGear(int teeth, double module, double width, double bore)
{
    const double pitchRadius = teeth * module / 2;
    const double pitch = 2 * std::numbers::pi / teeth;
    BRepBuilderAPI_MakePolygon outline;
    const auto add = [&](double radius, double angle) {
        outline.Add(gp_Pnt(radius * std::cos(angle), -width / 2, radius * std::sin(angle)));
    };
    for (int tooth = 0; tooth < teeth; ++tooth) {
        const double middle = tooth * pitch;
        for (const FlankPoint& point : flank)
            add(pitchRadius + point.radius * module, middle - point.halfWidth * pitch);
        for (auto point = std::rbegin(flank); point != std::rend(flank); ++point)
            add(pitchRadius + point->radius * module, middle + point->halfWidth * pitch);
    }
    outline.Close();
    TopoDS_Shape gear =
        BRepPrimAPI_MakePrism(BRepBuilderAPI_MakeFace(outline.Wire()).Face(), gp_Vec(0, width, 0)).Shape();

    // A recess on the front leaves rim and hub standing.
    const auto disc = [](double radius, double from, double to) {
        return BRepPrimAPI_MakeCylinder(gp_Ax2(gp_Pnt(0, from, 0), gp::DY()), radius, to - from).Shape();
    };
    const double rim = pitchRadius - 3 * module;
    const double hub = bore + 2.5 * module;
    if (rim > hub + 2 * module) {
        const TopoDS_Shape recess = BRepAlgoAPI_Cut(disc(rim, -width, -width / 4), disc(hub, -width, width)).Shape();
        gear = BRepAlgoAPI_Cut(gear, recess).Shape();
    }
    return BRepAlgoAPI_Cut(gear, disc(bore, -width, width)).Shape();
}

} // namespace vrkview::demo
