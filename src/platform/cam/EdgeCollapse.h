#pragma once

#include "platform/cam/Quadric.h"
#include "platform/cam/Simplify.h"
#include "platform/cam/SurfaceTree.h"

#include <memory>

namespace vrk::cam {

/// A surface whose edges are drawn together, one after the other. Not installed.
class EdgeCollapse {
public:
    /// @param surface  outlives this.
    EdgeCollapse(const TriangleSurface& surface, const SimplifyOptions& options);

    ~EdgeCollapse();
    EdgeCollapse(const EdgeCollapse&) = delete;
    EdgeCollapse& operator=(const EdgeCollapse&) = delete;

    std::optional<TriangleSurface> run();

private:
    using Number = std::uint32_t;
    using Triangle = TriangleSurface::Triangle;

    /// What a vertex may do.
    enum class Role : std::uint8_t {
        Free,
        OnLine, ///< moves along the line that it is on: a border, a sharp edge, or one of several sheets
        Corner, ///< stays
    };
    struct Candidate {
        float cost;
        Number kept, gone; // vertices; the first has the role that remains
        Number stamp;      // of both together, when it was entered
    };
    struct Range {
        Number begin = 0, count = 0; // in `around`
    };

    void findLines();
    void gatherQuadrics();
    void enterAll();
    void enterAllOf(Number vertex);
    void enter(Number a, Number b);
    std::optional<Candidate> pop();
    bool isOnLine(Number a, Number b) const;
    rob::Vec3d placeFor(Number kept, Number gone) const;
    double costOf(Number kept, Number gone, const rob::Vec3d& place) const;

    bool isTopologyKept(Number kept, Number gone);
    Number trianglesOf(Number vertex) const;
    bool keepsShape(Number vertex, Number other, const rob::Vec3d& place) const;
    bool keepsDistance(const Candidate& candidate, const rob::Vec3d& place);
    void collapse(const Candidate& candidate, const rob::Vec3d& place);
    void joinLines(Number kept, Number gone);
    template <typename Visit>
    void forTrianglesOf(Number vertex, const Visit& visit) const;
    bool has(const Triangle& triangle, Number vertex) const
    {
        return triangle[0] == vertex || triangle[1] == vertex || triangle[2] == vertex;
    }
    TriangleSurface rest() const;

    // Points of the surface, each of which the triangle of the result knows that is nearest to it

    void scatterPoints();
    void movePoints();

    const TriangleSurface& surface;
    const SimplifyOptions& options;
    rob::Vec3d middle; // of the surface, which is the origin here: squares of large coordinates would cost digits
    std::vector<rob::Vec3d> places;
    std::vector<Triangle> triangles;
    std::vector<std::uint8_t>
        lines; // of each triangle, a bit for each edge: that from corner i to the next one is on a line
    std::vector<std::uint8_t> isGone; // triangles
    std::vector<Role> roles;
    std::vector<Quadric> quadrics;
    std::vector<Number> stamps;
    std::vector<Range> ranges;
    std::vector<Number> around; // triangles of vertices, those of each one after the other; some may be gone
    std::vector<Candidate> heap;
    std::size_t left;          // triangles
    std::vector<Number> marks; // of vertices: the search in which each was met last
    Number search = 0;

    struct Points;
    std::unique_ptr<Points> points; // with a tolerance
};

} // namespace vrk::cam
