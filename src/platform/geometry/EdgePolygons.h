#pragma once

#include "platform/common/Export.h"

#include <TopoDS_Shape.hxx>

#include <functional>
#include <optional>

class TopoDS_Edge;
class gp_Pnt;

namespace vrk::geometry {

/// Gives each edge of a shape that has no polygon the one by which it is drawn: the points that the triangles of a face of
/// it already have, so that a drawn edge lies on its face. Edges that have one keep it.
///
/// It writes into the edges, which other shapes may share: no other thread may read them meanwhile.
/// @param deflection  of the polygon of an edge that bounds no face with triangles, which is then taken from its curve;
///                    without a deflection that edge gets no polygon. In the unit of the shape.
VRK_EXPORT void addEdgePolygons(const TopoDS_Shape& shape, std::optional<double> deflection = {});

/// The nodes by which an edge is drawn, in their order and where the edge lies: those of its polygon, else those that the
/// triangles of a face of it have. None of an edge that is degenerated or has neither.
VRK_EXPORT void forEachNode(const TopoDS_Edge& edge, const std::function<void(const gp_Pnt&)>& call);

} // namespace vrk::geometry
