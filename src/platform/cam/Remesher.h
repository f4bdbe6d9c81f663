#pragma once

#include "platform/cam/Contraction.h"
#include "platform/cam/Remesh.h"
#include "platform/cam/SourceLines.h"
#include "platform/cam/SourcePatches.h"
#include "platform/cam/TriangleShape.h"

namespace vrk::cam {

inline constexpr const char* tooManyTriangles = "the edge length is too small for a surface of this size";

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

    struct LongestEdge {
        Number triangle;
        Number edge;
        double square;
    };

    bool splitLong();
    LongestEdge longestOf(Number t) const;
    LongestEdge longestFrom(LongestEdge edge) const;
    void split(Number t, Number edge);

    bool collapseShort();
    bool collapseEdge(Number a, Number b);
    template <typename Visit>
    void forLinesAt(Number vertex, const Visit& visit) const;
    bool isLineKept(Number kept, Number gone) const;
    bool isShapeKept(Number vertex, Number other, const rob::Vec3d& place) const;
    void collapse(Number kept, Number gone, const rob::Vec3d& place);

    bool flipEdges(FlipFor purpose);
    bool flipEdge(Number t, Number edge, FlipFor purpose);
    int missing(Number vertex) const;

    bool relax();
    void moveToMiddle(Number vertex);
    void moveAlongLine(Number vertex);
    void layBack();
    bool wouldTurn(Number t) const;

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
    Contraction contraction;
    std::vector<std::uint8_t> wanted; // triangles at each vertex
    SourceLines lines;
    SourcePatches patches;
    std::vector<rob::Vec3d> ups; // of unit length, of the surface's triangles
    std::vector<Number> hints;  // of each vertex: the triangle of the surface that it lies on, or the segment of a line
    std::vector<Number> shared; // triangles of the edge that is looked at
    unsigned sinceStop = 0;

    // Where vertices were before they were moved, and how much of their move each has given up
    std::vector<rob::Vec3d> before;
    std::vector<Number> hintsBefore;
    std::vector<std::uint8_t> givenUp;
};

} // namespace vrk::cam
