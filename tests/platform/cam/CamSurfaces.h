#pragma once

#include "platform/cam/TriangleSurface.h"

#include <cstddef>

/// Surfaces that are made, and what can be asked of any.
namespace vrk::test {

/// A closed, wavy torus of 2 * along * around triangles, some 28 across.
cam::TriangleSurface waveTorus(unsigned along, unsigned around);
/// A box of 40 x 20 x 10 from the origin, each side of 2 * cells * cells triangles.
cam::TriangleSurface boxOf(unsigned cells);
/// A sheet of 40 x 40 with waves, open all round.
cam::TriangleSurface waveSheet(unsigned cells);
/// A flat sheet of 40 x 40 with another one that stands on its middle line: along it there are three triangles to an edge.
cam::TriangleSurface finOnSheet(unsigned cells);
/// Each triangle with corners of its own.
cam::TriangleSurface soupOf(const cam::TriangleSurface& surface);

/// The largest distance of places on a surface from another one, drawn evenly over its area, and its corners.
double farthest(const cam::TriangleSurface& from, const cam::TriangleSurface& to, unsigned count = 100000);
/// The root of the mean of the squares of such distances.
double rms(const cam::TriangleSurface& from, const cam::TriangleSurface& to);

struct EdgeCounts {
    std::size_t borders = 0, pairs = 0,
                more = 0; ///< of one triangle, of two that run against each other, and all others
    bool operator==(const EdgeCounts&) const = default;
};
EdgeCounts edgesOf(const cam::TriangleSurface& surface);
/// Vertices less edges plus triangles.
long eulerNumber(const cam::TriangleSurface& surface);
/// The sum of the lengths of edges that are not of two triangles.
double endsLength(const cam::TriangleSurface& surface);
double areaOf(const cam::TriangleSurface& surface);
double volumeOf(const cam::TriangleSurface& surface);
double leastArea(const cam::TriangleSurface& surface);
double meanEdge(const cam::TriangleSurface& surface);
/// In degrees.
double meanSmallestAngle(const cam::TriangleSurface& surface);
bool isSame(const cam::TriangleSurface& a, const cam::TriangleSurface& b);

} // namespace vrk::test
