#pragma once

#include "platform/common/Export.h"
#include "platform/geometry/PointColor.h"
#include "scene/math/Vec.h"

#include <vector>

namespace vrk::geometry {

/// Triangles that share their vertices. Not installed.
struct TriangleMesh {
    std::vector<rob::Posf> points;
    std::vector<rob::Vec3f> normals; ///< one for each point, or none at all
    std::vector<PointColor> colors;  ///< one for each point, or none at all
    std::vector<unsigned> indices;   ///< three for each triangle
};

constexpr double creaseAngle = 0.61; ///< radians, 35 degrees: what is bent more is an edge

/// Gives a mesh normals that are smooth within surfaces and not across their edges: each corner of a triangle takes the mean
/// of those triangles at its place whose normals lie within `angle` of its own, weighted by their angles there (Thürmer and
/// Wüthrich, "Computing vertex normals from polygonal facets", 1998). Points at which several
/// surfaces meet are doubled; points of the same place count as one. Any thread.
VRK_EXPORT void addCreaseNormals(TriangleMesh& mesh, double angle = creaseAngle);

} // namespace vrk::geometry
