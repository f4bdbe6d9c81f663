#pragma once

#include "platform/common/Export.h"
#include "scene/math/Vec.h"
#include "selection/geometry/Box.h"

#include <TopoDS_Shape.hxx>

#include <span>
#include <vector>

namespace vrk::selection {

/// The edges of a shape as the strips of nodes that are stored with it, in the shape's coordinates. An edge without a
/// strip, and a node that is not finite as floats, is left out.
///
/// Thread: any; it never changes.
class VRK_EXPORT ShapeEdges {
public:
    struct Edge {
        unsigned number; ///< from 1 in the map of the shape's edges
        Box box;         ///< of the nodes
        std::size_t begin, end;
    };

    explicit ShapeEdges(const TopoDS_Shape& shape);

    const std::vector<Edge>& getEdges() const { return edges; }
    std::span<const rob::PosTemplate<float>> nodesOf(const Edge& edge) const
    {
        return std::span(nodes).subspan(edge.begin, edge.end - edge.begin);
    }

private:
    std::vector<Edge> edges;
    std::vector<rob::PosTemplate<float>> nodes;
};

} // namespace vrk::selection
