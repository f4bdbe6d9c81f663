#pragma once

#include "platform/common/Export.h"
#include "scene/math/Vec.h"

#include <cstddef>
#include <span>
#include <vector>

namespace vrk::geometry {

/// The lines in which a triangle mesh is seen: where it is bent, where it ends, and where more than two triangles meet.
struct MeshEdges {
    std::vector<rob::Posf> points; ///< two for each segment, in the units of the mesh
    std::size_t vertices = 0;      ///< of the mesh
    std::size_t triangles = 0;     ///< of the mesh
    /// Whether nothing but the outsides of the triangles can be seen from where there is no material, so that what turns its back
    /// to the eye need not be drawn. Of a mesh with a gap, a turned triangle or a body inside out it is not so.
    bool isClosed = false;
};

/// The edges of a mesh, each once: those between two triangles that are bent by more than `creaseAngle`, to whichever side each
/// of them faces, borders, and those of three triangles or more. Any thread; about a quarter of a second for a million
/// triangles.
///
/// - Vertices count as one that are equal, or lie within a millionth of the greatest extent: in STL files each triangle has its own.
/// - Triangles without area tell no direction. One whose vertices are different, as lies where one triangle meets two, takes that of
///   its neighbour on the longest side; others are passed over, and so is a triangle at a vertex that is not finite or not there,
///   and one that is there twice.
/// - A border that lies along a row of others is compared with these as if its triangle ended in their vertices.
/// - On a rough surface, as of a scan, nearly each triangle is bent against the next, and all lines together would paint it black.
///   There are at least 500 bends then, and these end or turn sharply at more than 3 of 10 of their vertices. The same is so
///   where the lines are 250 times as long as the area is wide, seen by the greatest extent. Such a mesh is given the bends of more than
///   45, 60 or 90 degrees, whichever suffices, or none of them; and no line at all where it is nothing but borders.
VRK_EXPORT MeshEdges edgesOfMesh(std::span<const rob::Posf> points, std::span<const unsigned> indices);

} // namespace vrk::geometry
