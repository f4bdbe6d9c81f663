#pragma once

#include "platform/common/Export.h"
#include "selection/geometry/BVH.h"
#include "selection/geometry/BVHPrimitive.h"

#include <deque>
#include <mutex>
#include <span>
#include <vector>

class TopoDS_Shape;

namespace vrk::selection {

/// The edges and vertices of the faces that a solid shows, the edges by the polygons that its triangles end at. An edge
/// without a polygon, and a place that is not finite in single precision, is left out.
///
/// Units: those of the shape, in double precision. Thread: made by one; any may ask then.
class VRK_EXPORT ShapeBorders {
public:
    struct Edge {
        unsigned number;         ///< from 1 in the map of the shape's edges
        std::size_t begin, end;  ///< its points, see `pointsOf`
        rob::Posd lower, higher; ///< corners of a box around them
    };
    /// Up to eight neighbouring sections of an edge, or a vertex.
    class Piece final : public BVHPrimitive {
    public:
        Piece(std::span<const rob::Posd> points, unsigned number, bool isVertex);

        std::span<const rob::Posd> points; ///< in their order along the edge; one of a vertex
        unsigned number;                   ///< in the map of edges or of vertices of the shape, from 1
        bool isVertex;
    };

    /// @param shape  whose maps number the edges and vertices. @param faces  `SensitiveFace`s of it. Both outlive this.
    ShapeBorders(const TopoDS_Shape& shape, const std::vector<BVHPrimitive*>& faces);

    /// Each edge once, in the order of the faces.
    const std::vector<Edge>& getEdges() const { return edges; }
    /// Two at least, in their order along the edge.
    std::span<const rob::Posd> pointsOf(const Edge& edge) const
    {
        return std::span(points).subspan(edge.begin, edge.end - edge.begin);
    }
    /// The hierarchy over the pieces of all edges and vertices, null without any. The first who asks makes it, and gathers
    /// the vertices: regions need neither.
    const BVHNode* getRoot() const;

private:
    void addEdge(unsigned number, const std::vector<rob::Posd>& polygon);
    void gatherVertices() const;
    void buildHierarchy() const;

    struct Vertex {
        unsigned number;
        rob::Posd place;
    };

    const TopoDS_Shape& shape;
    const std::vector<BVHPrimitive*>& faces;
    std::vector<rob::Posd> points; // of all edges
    std::vector<Edge> edges;
    mutable std::once_flag treeAsked;
    mutable std::vector<Vertex> vertices;
    mutable std::deque<Piece> pieces;
    mutable BVH bvh;
};

} // namespace vrk::selection
