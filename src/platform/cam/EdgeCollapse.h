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
    /// @param before   null, or the same with fewer vertices that stay, which was run; outlives run(). What it did is done again
    ///                 where it may be, and edges are looked at only where something is not as it was at its end.
    EdgeCollapse(const TriangleSurface& surface, const SimplifyOptions& options, const std::vector<Number>& held,
                 const EdgeCollapse* before);

    /// @return false if it was stopped.
    bool run();
    /// The vertices near which the tolerance is not held; some of them where it was stopped.
    std::vector<Number> verticesBeyond() const;
    TriangleSurface result() const;

private:
    using Triangle = TriangleSurface::Triangle;

    struct Step {
        Number kept, gone;
        rob::Vec3d place;
    };

    void gatherQuadrics();
    Quadric quadricAt(Number vertex) const;
    bool repeat();
    bool isAsBefore(Number vertex) const;
    bool drawTogether();
    void drawTogether(Number kept, Number gone, const rob::Vec3d& place);
    void refuse(Number kept, Number gone);
    bool tell(std::size_t looked);
    void enterAll();
    void enterAllOf(Number vertex);
    void enter(Number a, Number b);
    bool mayGo(Number kept, Number gone, const rob::Vec3d& place);
    rob::Vec3d placeFor(Number kept, Number gone, const Quadric& sum) const;
    bool isShapeKept(Number vertex, Number other, const rob::Vec3d& place) const;

    const TriangleSurface& surface;
    const SimplifyOptions& options;
    const EdgeCollapse* before;
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
    // What was refused is so as long as neither end's triangles change.
    Number time = 0;                                    // edges drawn together
    std::vector<Number> changes;                        // of vertices: when their triangles changed last
    std::vector<Number> refusals;                       // of edges of triangles: from when a change counts
    std::vector<Step> steps;                            // with a tolerance
    std::shared_ptr<const KeptDistance::Source> source; // with a tolerance
    std::unique_ptr<KeptDistance> distance;             // with a tolerance
};

} // namespace vrk::cam
