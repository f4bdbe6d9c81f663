#pragma once

#include "platform/task/EdgeMfgShape.h"
#include "scene/core/CameraSnapshot.h"

#include <QPointF>

#include <optional>
#include <vector>

namespace vrkview {

/// All of the edges of a run as one line, also where the run does not reach: by the length along it, and by its picture.
///
/// A value. Lengths are model units; places between two samples of the run are on the straight line between them, as it is
/// drawn.
class RunPlaces {
public:
    using PathPoint = vrk::task::EdgeMfgShape::PathPoint;

    /// @param pose  in the world, of the coordinates of the run.
    RunPlaces(const vrk::task::EdgeMfgShape& run, const vrk::rob::Posed& pose);

    double length() const { return samples.empty() ? 0 : samples.back().along; }
    /// Of a place of the run.
    double alongOf(PathPoint point) const;
    /// A length beyond either end is that of the end. The run must have an edge.
    PathPoint at(double along) const;
    /// The length to the place whose image is nearest to a pixel; empty where nothing of the run is before the eye.
    std::optional<double> nearestTo(const vrk::visual::CameraSnapshot& camera, const QPointF& pixel) const;

private:
    struct Sample {
        PathPoint point;
        vrk::rob::Posd place; // in the world
        double along;
    };

    std::vector<Sample> samples;
};

} // namespace vrkview
