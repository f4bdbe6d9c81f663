#pragma once

#include "platform/layout/Dimension.h"
#include "platform/measure/Measure.h"
#include "preview/annotation/DimensionsVisual.h"

#include <TopTools_IndexedMapOfShape.hxx>
#include <TopoDS_Shape.hxx>

#include <QString>

#include <array>
#include <functional>
#include <string>
#include <unordered_map>
#include <vector>

namespace vrkview {

// From what a dimension holds on to, to what is measured and drawn. Each takes the model's lock shared for as long as it reads,
// and computes without it.

/// Of the object of this id, in the world; identity for an unknown one.
using PoseOf = std::function<vrk::rob::Posed(unsigned id)>;

/// The vertices, edges and faces of bodies by their numbers. Each body's are counted once: keep one of these for as long as
/// many are asked for and no body gets another shape.
class ShapePieces {
public:
    /// @throws vrk::measure::MeasureError "This body has no edge 12"; where there is no such body.
    const TopoDS_Shape& get(unsigned body, TopAbs_ShapeEnum kind, unsigned number);
    void clear() { all.clear(); }

private:
    using OfEachKind = std::array<TopTools_IndexedMapOfShape, TopAbs_SHAPE>;

    std::unordered_map<unsigned, OfEachKind> all; // by the bodies' ids
};

/// What lies at an end, where it is now.
/// @param poseOf  asked once.
/// @throws vrk::measure::MeasureError where it is no longer there.
vrk::measure::MeasuredThing measuredThing(const vrk::layout::DimensionEnd& end, const PoseOf& poseOf,
                                          ShapePieces& pieces);
/// The same, at the pose that the model has.
vrk::measure::MeasuredThing measuredThing(const vrk::layout::DimensionEnd& end);

/// The value of a dimension of any type but `Nearest`, which takes its time.
/// @throws vrk::measure::MeasureError
vrk::measure::Measurement measure(vrk::layout::Dimension::Type type,
                                  const std::vector<vrk::measure::MeasuredThing>& things);

/// For the user: "edge 12 of Bracket".
QString nameOfEnd(const vrk::layout::DimensionEnd& end);
/// What a new dimension is called: "Bracket, edge 12 to Table".
std::string nameOfDimension(const std::vector<vrk::layout::DimensionEnd>& ends);

/// As it is drawn in the world.
/// @param isWithMarks  round ones at the ends of a distance.
vrk::visual::DimensionDrawing drawingOf(const vrk::measure::Measurement& measured);

} // namespace vrkview
