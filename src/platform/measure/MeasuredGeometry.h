#pragma once

#include "platform/measure/MeasuredThing.h"

#include <TopoDS_Face.hxx>
#include <gp_Circ.hxx>
#include <gp_Lin.hxx>
#include <gp_Pln.hxx>

#include <optional>
#include <variant>

/// What a thing counts as while it is measured, in the world. Not installed.
namespace vrk::measure {

struct Line {
    gp_Lin line;
    double first; ///< of the thing on it, in parameters of the line; infinite where it has no end
    double last;
    bool isAxis; ///< of a cylindrical face, and no edge
};

struct Flat {
    gp_Pln plane;
    TopoDS_Face face;
};

/// Anything that is nearest somewhere, and no more is known of.
struct Other {
    TopoDS_Shape shape;
    std::optional<gp_Circ> circle; ///< of a circular edge
};

struct Geometry {
    std::variant<gp_Pnt, Line, Flat, Other> what;
    gp_Pnt place; ///< of the thing, from where a value is shown that is the same all along
};

gp_Pnt pointOf(const rob::Posd& place);
rob::Posd placeOf(const gp_Pnt& point);

/// The shape where it lies in the world.
/// @throws MeasureError for a null one.
TopoDS_Shape inWorld(const MeasuredShape& thing);
/// The same of any thing; a vertex for a point.
TopoDS_Shape shapeInWorld(const MeasuredThing& thing);
/// @throws MeasureError for shapes that are null or empty, and edges without a curve.
Geometry geometryOf(const MeasuredThing& thing);
/// Whether there is no more to it than triangles.
bool isMesh(const TopoDS_Shape& shape);
/// The note of what was measured between these; empty unless one of them is a sample.
std::string samplesNote(const MeasuredThing& first, const MeasuredThing& second);

} // namespace vrk::measure
