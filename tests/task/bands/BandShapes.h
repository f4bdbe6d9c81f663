#pragma once

#include "platform/task/EdgeMfgShape.h"
#include "visual/Edges.h"

#include <BRepBuilderAPI_MakeEdge.hxx>
#include <gp_Circ.hxx>

#include <cmath>
#include <memory>
#include <numbers>

namespace vrk::test {

/// Straight on by 100 along x, then round a quarter of a circle of radius 50 to the left; the tool leans over from z.
inline std::unique_ptr<task::EdgeMfgShape> seamShape(unsigned id = 900)
{
    auto shape = std::make_unique<task::EdgeMfgShape>(id, "seam");
    shape->addEdge({straightEdge({0, 0, 0}, {100, 0, 0}), {{20, {0, 0, 2}}, {80, {0, 1, 1}}}, 0, 0});
    const gp_Circ circle(gp_Ax2({100, 50, 0}, {0, 0, 1}, {0, -1, 0}), 50);
    const TopoDS_Edge arc = BRepBuilderAPI_MakeEdge(circle, 0, std::numbers::pi / 2).Edge();
    std::vector<gp_Pnt> nodes;
    for (const double a : {0.0, 0.25, 0.5, 0.75, 1.0})
        nodes.emplace_back(100 + 50 * std::sin(a * std::numbers::pi / 2), 50 - 50 * std::cos(a * std::numbers::pi / 2),
                           0);
    shape->addEdge({withPolygon(arc, nodes), {{0.5, {0, 0, 1}}}, 0, 0});
    return shape;
}

/// One straight edge along x with these vectors.
inline std::unique_ptr<task::EdgeMfgShape> straightShape(std::vector<geometry::MfgVector> vectors, unsigned id = 901)
{
    auto shape = std::make_unique<task::EdgeMfgShape>(id, "seam");
    shape->addEdge({straightEdge({0, 0, 0}, {100, 0, 0}), std::move(vectors), 0, 0});
    return shape;
}

} // namespace vrk::test
