#include "platform/geometry/MfgVector.h"

namespace vrk::geometry {
namespace {

rob::Posed frameAlong(const TopoDS_Edge& edge, double parameter, const rob::Dird& z)
{
    const auto [point, tangent] = GetEdgePointInfoAtParam(edge, parameter);
    const rob::Dird y = rob::normalized(z.cross(tangent));
    const rob::Dird x(y.cross(z));
    return {point, rob::Rotationd::FromAxes(x, y, z)};
}

} // namespace

rob::Posd MfgVector::getPos(const TopoDS_Edge& edge) const
{
    return GetPointAtParameter(edge, parameter);
}

rob::Dird MfgVector::getDir(const TopoDS_Edge&) const
{
    return rob::normalized(direction);
}

rob::Dird MfgVector::getEdgeTangent(const TopoDS_Edge& edge) const
{
    return GetEdgePointInfoAtParam(edge, parameter).second;
}

rob::Posed MfgVector::getPose(const TopoDS_Edge& edge) const
{
    return frameAlong(edge, parameter, getDir(edge));
}

rob::Posed MfgVector::getToolPose(const TopoDS_Edge& edge) const
{
    return frameAlong(edge, parameter, -getDir(edge));
}

} // namespace vrk::geometry
