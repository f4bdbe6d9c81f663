#pragma once

#include "platform/cam/TriangleSurface.h"

#include <cstddef>
#include <functional>
#include <limits>
#include <optional>
#include <stop_token>

namespace vrk::cam {

/// How far a surface is made coarser: until it has so many triangles, or until no edge can be taken out within the tolerance.
struct SimplifyOptions {
    std::size_t triangles = 0;
    /// How far the result may lie from the surface, and the surface from the result. Model units.
    double tolerance = std::numeric_limits<double>::infinity();
    /// Radians: an edge whose triangles differ by more in their normals is sharp, and stays.
    double sharp = 1.05;
    std::stop_token stop;
    /// On the calling thread; the fraction never falls and is 1 at last. What it throws ends the work and is passed on.
    std::function<void(double fraction)> progress;
};

/// The surface with fewer triangles, by edges that are drawn together, those first whose end moves least from the planes of
/// the triangles that it stands for (Garland, Heckbert, "Surface Simplification Using Quadric Error Metrics", 1997). Planes of
/// triangles that there were count for half beside those that there are, with each edge anew: of all of them the mean distance
/// would be greater, and of those alone that there are the largest one (Lindstrom, Turk, "Fast and Memory Efficient Polygonal
/// Simplification", 1998).
///
/// Borders, sharp edges, and edges that more than two triangles share keep their lines, and the ends and corners of these
/// stay where they are. No triangle turns over, and none without area is made. The same surface gives the same result.
///
/// The result lies within a tolerance of the surface, and the surface within it of the result: of each step the new edges are
/// looked at all along, and vertices and middles of the triangles that they stand for; at the end all edges of the surface are,
/// and the triangles of the result all over, but pieces of a quarter of the tolerance in their middle alone. Where it is not
/// held then with a fiftieth to spare, the surface stays as it is, and what depends on it is done again.
/// This takes several times as long as a number of triangles does.
///
/// Thread: any; places are looked at on all cores, in the end.
/// @param surface  welded.
/// @return empty if it was stopped.
/// @throws std::invalid_argument  for a tolerance that is negative or not a number.
VRK_EXPORT std::optional<TriangleSurface> simplify(const TriangleSurface& surface, const SimplifyOptions& options);

} // namespace vrk::cam
