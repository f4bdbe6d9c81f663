#pragma once

#include "platform/layout/Dimension.h"
#include "platform/measure/Measure.h"
#include "preview/annotation/DimensionsVisual.h"

#include <QString>

#include <functional>
#include <string>
#include <vector>

namespace vrkview {

// From what a dimension holds on to, to what is measured and drawn. Each takes the model's lock shared for as long as it reads,
// and computes without it.

/// Of the object of this id, in the world; identity for an unknown one.
using PoseOf = std::function<vrk::rob::Posed(unsigned id)>;

/// What lies at an end, where it is now.
/// @param poseOf  asked once.
/// @throws vrk::measure::MeasureError where it is no longer there: "This body has no edge 12".
vrk::measure::MeasuredThing measuredThing(const vrk::layout::DimensionEnd& end, const PoseOf& poseOf);
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
