#include "platform/geometry/EdgePoints.h"

#include <BRepAdaptor_Curve.hxx>
#include <GCPnts_TangentialDeflection.hxx>
#include <TopAbs_Orientation.hxx>

#include <algorithm>

namespace vrk::geometry {
namespace {

constexpr double angularDeflection = 0.2; // radians
constexpr double sameParameter = 1e-9;

rob::Posd toPosd(const gp_Pnt& point)
{
    return {point.X(), point.Y(), point.Z()};
}

} // namespace

rob::Posd GetPointAtParameter(const TopoDS_Edge& edge, double parameter)
{
    return toPosd(BRepAdaptor_Curve(edge).Value(parameter));
}

std::pair<rob::Posd, rob::Dird> GetEdgePointInfoAtParam(const TopoDS_Edge& edge, double parameter)
{
    gp_Pnt point;
    gp_Vec along;
    BRepAdaptor_Curve(edge).D1(parameter, point, along);
    if (edge.Orientation() == TopAbs_REVERSED)
        along.Reverse();
    return {toPosd(point), rob::normalized(rob::Vec3d(along.X(), along.Y(), along.Z()))};
}

std::pair<double, double> GetEdgeParameters(const TopoDS_Edge& edge)
{
    const BRepAdaptor_Curve curve(edge);
    if (edge.Orientation() == TopAbs_REVERSED)
        return {curve.LastParameter(), curve.FirstParameter()};
    return {curve.FirstParameter(), curve.LastParameter()};
}

std::vector<double> SampleEdge(const TopoDS_Edge& edge, double from, double to, double chord)
{
    if (std::abs(to - from) <= sameParameter)
        return {from, to};
    const BRepAdaptor_Curve curve(edge);
    const GCPnts_TangentialDeflection points(curve, std::min(from, to), std::max(from, to), angularDeflection, chord,
                                             2);
    std::vector<double> parameters;
    for (int i = 1; i <= points.NbPoints(); ++i)
        parameters.push_back(points.Parameter(i));
    if (from > to)
        std::ranges::reverse(parameters);
    parameters.front() = from;
    parameters.back() = to;
    return parameters;
}

} // namespace vrk::geometry
