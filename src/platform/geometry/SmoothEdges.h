#pragma once

#include "platform/common/Export.h"

#include <TopTools_IndexedDataMapOfShapeListOfShape.hxx>

class TopoDS_Edge;
class TopoDS_Shape;

namespace vrk::geometry {

/// Every edge of the shape once, with the faces that it borders. Any thread.
VRK_EXPORT TopTools_IndexedDataMapOfShapeListOfShape facesOfEdges(const TopoDS_Shape& shape);

/// Whether a surface goes on across the edge without a bend: where a face meets itself, as along a cylinder, or where the
/// normals of two faces differ by less than eight degrees, at three places of the edge. A sharp edge is rather taken for one
/// where a surface has no normal. Any thread.
/// @param faces  those that the edge borders.
VRK_EXPORT bool isSmoothEdge(const TopoDS_Edge& edge, const TopTools_ListOfShape& faces);

} // namespace vrk::geometry
