#pragma once

#include "platform/geometry/EdgeTable.h"

/// Not installed.
namespace vrk::geometry {

/// Whether nothing but the outsides of these triangles can be seen from where there is no material: at each edge as many run
/// along it one way as the other, and each connected surface encloses a volume on its inner side, or is a cavity: lies in the
/// box of one that does. Any thread.
bool isClosed(const WeldedPoints& points, const WeldedTriangles& triangles, const EdgeTable& edges);

} // namespace vrk::geometry
