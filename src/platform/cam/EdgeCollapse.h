#pragma once

#include "platform/cam/Contraction.h"
#include "platform/cam/EdgeQueue.h"
#include "platform/cam/KeptDistance.h"
#include "platform/cam/Quadric.h"
#include "platform/cam/Simplify.h"

#include <memory>

namespace vrk::cam {

/// A surface whose edges are drawn together, one after the other. Not installed.
class EdgeCollapse {
public:
    using Number = LinkedTriangles::Number;

    /// @param surface  outlives this.
    /// @param held     vertices that stay.
    EdgeCollapse(const TriangleSurface& surface, const SimplifyOptions& options, const std::vector<Number>& held);

    /// @return false if it was stopped.
    bool run();
    /// The vertices near which the tolerance is not held; some of them where it was stopped.
    std::vector<Number> verticesBeyond() const;
    TriangleSurface result() const;

private:
    using Triangle = TriangleSurface::Triangle;

    void gatherQuadrics();
    bool drawTogether();
    bool tell(std::size_t before);
    void enterAll();
    void enterAllOf(Number vertex);
    void enter(Number a, Number b);
    bool mayGo(const EdgeQueue::Edge& edge, const rob::Vec3d& place);
    rob::Vec3d placeFor(Number kept, Number gone, const Quadric& sum) const;
    bool isShapeKept(Number vertex, Number other, const rob::Vec3d& place) const;

    const TriangleSurface& surface;
    const SimplifyOptions& options;
    rob::Vec3d middle; // of the surface, which is the origin here: squares of large coordinates would cost digits
    std::vector<rob::Vec3d> places;
    LinkedTriangles triangles;
    std::vector<Role> roles;
    Contraction contraction;
    std::vector<Quadric> quadrics;
    std::vector<Number> stamps;
    EdgeQueue queue;
    std::vector<Number> marks; // of vertices: the search in which each was met last
    Number search = 0;
    std::unique_ptr<KeptDistance> distance; // with a tolerance
};

} // namespace vrk::cam
