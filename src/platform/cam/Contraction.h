#pragma once

#include "platform/cam/SurfaceLines.h"

namespace vrk::cam {

/// The drawing together of an edge, as far as it is about which triangles are neighbours. Not installed.
class Contraction {
public:
    using Number = LinkedTriangles::Number;

    /// Both outlive this; vertices may be added to them.
    Contraction(LinkedTriangles& triangles, const std::vector<Role>& roles) : triangles(triangles), roles(roles) {}

    /// Whether the ends have no neighbours in common but those across the edge's own triangles (Dey, Edelsbrunner, Guha,
    /// Nekhayev, "Topology preserving edge contraction", 1999), none of these would be left with two triangles on each other,
    /// and no two lines would become one.
    bool isTopologyKept(Number kept, Number gone);
    /// @return the triangles that are gone; good until the next call.
    const std::vector<Number>& contract(Number kept, Number gone);

private:
    LinkedTriangles& triangles;
    const std::vector<Role>& roles;
    std::vector<Number> shared;
    std::vector<Number> marks; // of vertices: the search in which each was met last
    Number search = 0;
};

} // namespace vrk::cam
