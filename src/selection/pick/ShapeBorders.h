#pragma once

#include "platform/common/Export.h"
#include "selection/geometry/BVH.h"
#include "selection/geometry/BVHPrimitive.h"

#include <deque>
#include <span>
#include <vector>

class TopoDS_Shape;

namespace vrk::selection {

class SensitiveFace;

/// The edges and vertices of the faces that a solid shows, by the polygons that its triangles end at, under a hierarchy of
/// their own.
///
/// Units: those of the shape, in double precision. Thread: made by one; it never changes.
class ShapeBorders {
public:
    /// Up to eight neighbouring sections of an edge, or a vertex.
    class Piece final : public BVHPrimitive {
    public:
        Piece(const rob::Posd* first, unsigned count, unsigned number, bool isVertex);

        std::span<const rob::Posd> points; ///< in their order along the edge; one of a vertex
        unsigned number;                   ///< in the map of edges or of vertices of the shape, from 1
        bool isVertex;
    };

    /// @param shape  whose maps number the edges and vertices.
    ShapeBorders(const TopoDS_Shape& shape, const std::vector<BVHPrimitive*>& faces);

    /// Over all pieces; null without any.
    const BVHNode* getRoot() const { return bvh.root; }

private:
    std::vector<rob::Posd> points;
    std::deque<Piece> pieces;
    BVH bvh;
};

} // namespace vrk::selection
