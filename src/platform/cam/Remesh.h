#pragma once

#include "platform/cam/TriangleSurface.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <stop_token>

namespace vrk::cam {

/// More triangles than this are not made.
inline constexpr std::size_t mostRemeshed = 20'000'000;

/// How a surface is covered anew.
struct RemeshOptions {
    double edgeLength = 0; ///< wanted; model units, above 0
    unsigned iterations = 5;
    /// Radians: an edge whose triangles differ by more in their normals is sharp, and stays.
    double sharp = 1.05;
    std::stop_token stop;
    std::function<void(double fraction)> progress; ///< on the calling thread
};

/// The surface covered anew by triangles that are as even as may be: long edges are halved, short ones drawn together, edges
/// are turned towards six at each vertex, and vertices are moved along the surface to the middle of their neighbours and laid
/// on it again (Botsch, Kobbelt, "A Remeshing Approach to Multiresolution Modeling", 2004).
///
/// Vertices of the result lie on the surface, but for those whose move was given back since a triangle would have turned over:
/// they stay where halving and drawing together put them. Borders, sharp edges, and edges that more than two triangles share keep
/// their lines, along which vertices move; the ends and corners of these lines stay where they are. No triangle turns over in
/// a step, and none without area is made. What is one piece stays one, and what is closed stays closed. Where the surface bends
/// within less than the wanted length, edges are as short as it needs.
///
/// The same surface gives the same result, whatever the number of cores.
///
/// Thread: any; places are reckoned on all cores.
/// @param surface  welded.
/// @return empty if it was stopped.
/// @throws std::invalid_argument  for an edge length that is not above 0 and finite.
/// @throws std::length_error      where it would be more than `mostRemeshed` triangles.
VRK_EXPORT std::optional<TriangleSurface> remesh(const TriangleSurface& surface, const RemeshOptions& options);

} // namespace vrk::cam
