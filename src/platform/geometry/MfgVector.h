#pragma once

#include "platform/geometry/EdgePoints.h"

namespace vrk::geometry {

/// How a tool is held at one point of an edge.
struct VRK_EXPORT MfgVector {
    double parameter = 0; ///< of the edge's curve
    rob::Dird direction{0, 0,
                        1}; ///< away from the edge, towards the tool; in the coordinates of the edge, of any length

    rob::Posd getPos(const TopoDS_Edge& edge) const;
    /// @throws std::overflow_error "0-length vector cannot be normalized."
    rob::Dird getDir(const TopoDS_Edge& edge) const;
    /// In the direction of travel. @throws std::overflow_error as `GetEdgePointInfoAtParam`
    rob::Dird getEdgeTangent(const TopoDS_Edge& edge) const;
    /// What stands on the work here: the z axis is `direction`; the x axis is the tangent, made square to z by taking off its
    /// share along z (Gram-Schmidt).
    /// @throws std::overflow_error "0-length vector cannot be normalized." for a direction along the edge.
    rob::Posed getPose(const TopoDS_Edge& edge) const;
    /// Where a tool stands: the same with the z axis into the edge, turned about x.
    rob::Posed getToolPose(const TopoDS_Edge& edge) const;
};

/// The vectors of one edge, by rising or, on a reversed edge, falling parameters: in the direction of travel.
struct MfgVectors {
    TopoDS_Edge edge;
    std::vector<MfgVector> vectors;
    unsigned body = 0;       ///< the id of the body whose edge it is; 0 where it is of none
    unsigned edgeNumber = 0; ///< from 1, among the edges of the body's shape as `TopExp::MapShapes` counts them
};

} // namespace vrk::geometry
