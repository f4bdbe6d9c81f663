#pragma once

#include "platform/common/Export.h"
#include "scene/math/Pose.h"

#include <TopoDS_Edge.hxx>

#include <utility>
#include <vector>

/// Points and directions on the curve of an edge, by the curve's parameter. The location of the edge is applied. Any
/// thread. Each throws `Standard_Failure` for an edge without a curve.
namespace vrk::geometry {

VRK_EXPORT rob::Posd GetPointAtParameter(const TopoDS_Edge& edge, double parameter);

/// The point, and the unit tangent in the direction of travel: that of the edge, which is against its curve where the edge
/// is reversed.
/// @throws std::overflow_error "0-length vector cannot be normalized." where the derivative is zero.
VRK_EXPORT std::pair<rob::Posd, rob::Dird> GetEdgePointInfoAtParam(const TopoDS_Edge& edge, double parameter);

/// The parameters of the first and the last point in the direction of travel; the first is the greater one of a reversed
/// edge.
VRK_EXPORT std::pair<double, double> GetEdgeParameters(const TopoDS_Edge& edge);

/// Parameters from `from` to `to`, both included, as `GCPnts_TangentialDeflection` spaces them: the chord between two stays
/// within `chord` model units of the curve, which turns by 0.2 radians at most. Two for a straight edge or equal ends.
VRK_EXPORT std::vector<double> SampleEdge(const TopoDS_Edge& edge, double from, double to, double chord);

} // namespace vrk::geometry
