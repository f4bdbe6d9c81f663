#pragma once

#include "platform/cam/Remesh.h"
#include "platform/cam/SourceLines.h"
#include "platform/cam/SurfaceTree.h"

namespace vrk::cam {

/// A surface that is covered anew. Not installed.
class Remesher {
public:
    /// @param surface  outlives this.
    Remesher(const TriangleSurface& surface, const RemeshOptions& options);

    std::optional<TriangleSurface> run();

private:
    using Number = LinkedTriangles::Number;
    using Triangle = TriangleSurface::Triangle;
    static constexpr Number none = LinkedTriangles::none;

    enum class FlipFor { Valence, Angles };

    bool isStopped();
    void tell(double fraction) const;

    bool splitLong();
    void split(Number t, Number edge);

    bool collapseShort();
    bool collapseEdge(Number a, Number b);
    bool isLineKept(Number kept, Number gone) const;
    bool isTopologyKept(Number kept, Number gone);
    bool isShapeKept(Number vertex, Number other, const rob::Vec3d& place) const;
    void collapse(Number kept, Number gone, const rob::Vec3d& place);

    bool flipEdges(FlipFor purpose);
    bool flipEdge(Number t, Number edge, FlipFor purpose);
    int missing(Number vertex) const;

    bool relax();
    void reckonPlaces(std::size_t begin, std::size_t end);
    bool wouldTurn(Number t) const;
    rob::Vec3d laidOn(const rob::Vec3d& place, const rob::Vec3d& up, Number& hint) const;

    bool isUpright(const Triangle& triangle, const rob::Vec3d& normal) const;
    rob::Vec3d normalNow(Number t) const
    {
        return normalOf(places[triangles[t][0]], places[triangles[t][1]], places[triangles[t][2]]);
    }
    double squareBetween(Number a, Number b) const { return (places[b] - places[a]).squaredLength(); }
    TriangleSurface result() const;

    const TriangleSurface& surface;
    const RemeshOptions& options;
    double longest, shortest; // squares
    std::vector<rob::Vec3d> places;
    LinkedTriangles triangles;
    std::vector<Role> roles;
    std::vector<std::uint8_t> wanted; // triangles at each vertex
    SourceLines lines;
    SurfaceTree tree;
    std::vector<rob::Vec3d> ups; // of unit length, of the surface's triangles
    std::vector<Number> hints;  // of each vertex: the triangle of the surface that it lies on, or the segment of a line
    std::vector<Number> shared; // triangles of the edge that is looked at
    std::vector<Number> marks;  // of vertices: the search in which each was met last
    Number search = 0;
    unsigned sinceStop = 0;

    // What vertices do next
    std::vector<rob::Vec3d> before, laid; // where each is, and where it would lie without being moved
    std::vector<Number> laidHints;
    std::vector<std::uint8_t> steps; // how much of its move each vertex gave up
};

} // namespace vrk::cam
