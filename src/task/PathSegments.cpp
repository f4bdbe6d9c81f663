#include "task/PathSegments.h"

#include <algorithm>
#include <cmath>

namespace vrk::visual {
namespace {

constexpr double shortestLine = 0.001;   // model units, as the two below
constexpr double shortestArrow = 1.0;    // what is shorter has no room for one
constexpr double wholeArrow = 20;        // length of the arrow's mesh
constexpr double arrowShare = 0.1;       // of the segment's length
constexpr double straightLimit = 0.0001; // squared sine of the angle between two sides
constexpr int arcSteps = 20;
constexpr int dashes = 5;
constexpr float dashShare = 0.15f; // of the whole segment; 5 % are left for each gap

// The comparisons below are written so that a coordinate that is no number fails them.

/// Whether two sides of the triangle of a circular move lie on one line. A side of no length lies on any.
bool isStraight(const rob::Vec3d& a, const rob::Vec3d& b)
{
    const double lengths = a.squaredLength() * b.squaredLength();
    return !(lengths > 0) || !std::isfinite(lengths) || !(a.cross(b).squaredLength() >= straightLimit * lengths);
}

/// Empty where the segment is too short for a line, or no line at all.
std::optional<double> drawnLength(const PathSegment& segment)
{
    const double length = (rob::Posd(segment.to) - rob::Posd(segment.from)).length();
    return length >= shortestLine && std::isfinite(length) ? std::optional(length) : std::nullopt;
}

PathArrow arrowAt(const rob::Posd& position, const rob::Dird& direction, double length)
{
    return {rob::Posf(position), rob::Dirf(direction), std::min(1.0, length * arrowShare / wholeArrow)};
}

} // namespace

std::optional<rob::TPCircle> arcOf(const PathSegment& segment)
{
    if (!segment.via)
        return std::nullopt;
    const rob::Posd from(segment.from), via(*segment.via), to(segment.to);
    if (isStraight(via - from, to - from) || isStraight(via - from, to - via))
        return std::nullopt;
    return rob::TPCircle(segment.from, *segment.via, segment.to);
}

void appendStrip(const PathSegment& segment, bool isFirst, std::vector<rob::PosTemplate<float>>& points)
{
    if (!drawnLength(segment))
        return;
    if (const std::optional<rob::TPCircle> arc = arcOf(segment)) {
        for (int i = isFirst ? 0 : 1; i <= arcSteps; ++i)
            points.emplace_back(rob::PosTemplate<float>(rob::Posd(arc->getPoint(static_cast<double>(i) / arcSteps))));
        return;
    }
    if (isFirst)
        points.push_back(segment.from);
    points.push_back(segment.to);
}

void appendDashes(const PathSegment& segment, std::vector<rob::PosTemplate<float>>& points)
{
    if (!drawnLength(segment))
        return;
    const rob::Vec3Template<float> way = segment.to - segment.from;
    for (int i = 0; i < dashes; ++i) {
        const rob::PosTemplate<float> start = segment.from + way * (static_cast<float>(i) / dashes);
        points.push_back(start);
        points.push_back(start + way * dashShare);
    }
}

std::optional<PathArrow> arrowOf(const PathSegment& segment)
{
    if (const std::optional<rob::TPCircle> arc = arcOf(segment)) {
        if (!(arc->getLength() >= shortestArrow))
            return std::nullopt;
        return arrowAt(rob::Posd(arc->getPoint(0.5)), rob::normalized(arc->getTangent(0.5)), arc->getLength());
    }
    const std::optional<double> length = drawnLength(segment);
    if (!length || *length < shortestArrow)
        return std::nullopt;
    const rob::Vec3d way = rob::Posd(segment.to) - rob::Posd(segment.from);
    return arrowAt(rob::Posd(segment.from) + way * 0.5, rob::normalized(way), *length);
}

} // namespace vrk::visual
