#include "task/bands/Ribbon.h"

namespace vrk::visual {

std::vector<RibbonVertex> MakeRibbon(const task::EdgeMfgShape& shape,
                                     std::span<const task::EdgeMfgShape::PathPoint> points)
{
    std::vector<RibbonVertex> vertices;
    vertices.reserve(2 * points.size());
    for (const task::EdgeMfgShape::PathPoint& point : points) {
        const TopoDS_Edge& edge = shape.getEdge(point.edge);
        const geometry::MfgVector vector = shape.getMfgVector(point);
        const rob::Posd position = vector.getPos(edge);
        const rob::Dird tangent = vector.getEdgeTangent(edge);
        const rob::Dird direction = vector.getDir(edge);
        const rob::Dird normal = rob::normalized(tangent.cross(direction));
        vertices.push_back({position, normal});
        vertices.push_back({position + direction * bandWidth, normal});
    }
    return vertices;
}

} // namespace vrk::visual
