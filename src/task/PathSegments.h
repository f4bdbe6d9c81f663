#pragma once

#include "scene/math/Shapes.h"

#include <optional>
#include <vector>

/// The geometry of a robot's path: what is drawn from one target to the next. Plain values; any thread.
namespace vrk::visual {

/// The way of one move, in the frame of its work object.
struct PathSegment {
    rob::PosTemplate<float> from;
    rob::PosTemplate<float> to;
    std::optional<rob::PosTemplate<float>> via{}; ///< of a circular move
};

/// The arc over the via point. Empty without one, and where it lies on a line with the ends or at one of them, or is no place
/// at all: the way is straight then.
std::optional<rob::TPCircle> arcOf(const PathSegment& segment);

/// Appends what a segment adds to the points of a strip. One of no length, or with ends that are no place, adds nothing.
/// @param isFirst  whether the strip has no points yet; else its last one is taken for the start of this segment.
void appendStrip(const PathSegment& segment, bool isFirst, std::vector<rob::PosTemplate<float>>& points);
/// Appends the ends of five dashes, of 15 % of the length each; a via point counts for nothing. As `appendStrip` otherwise.
void appendDashes(const PathSegment& segment, std::vector<rob::PosTemplate<float>>& points);

/// An arrow in the middle of a segment.
struct PathArrow {
    rob::PosTemplate<float> position;
    rob::DirTemplate<float> direction;
    double scale; ///< of the arrow's mesh; smaller than 1 on a short segment
};

/// Empty on a segment that is shorter than 1.
std::optional<PathArrow> arrowOf(const PathSegment& segment);

} // namespace vrk::visual
