#include "platform/geometry/MeshEdges.h"

#include "platform/geometry/BorderRows.h"
#include "platform/geometry/ClosedMesh.h"
#include "platform/geometry/CreaseLines.h"
#include "platform/geometry/EdgeTable.h"
#include "platform/geometry/WeldPoints.h"

#include <algorithm>
#include <cmath>

namespace vrk::geometry {
namespace {

constexpr double samePlace = 1e-6;       // of the greatest extent
constexpr double leastHeight = 1e-5;     // of the same: places as near as that tell no direction
constexpr std::size_t mostCompared = 64; // triangles at one edge

using Side = EdgeTable::Side;

/// Of the triangle, the corner that is no end of this side.
unsigned cornerAcross(unsigned start, const Side& side, const WeldedTriangles& triangles)
{
    const auto& [a, b, c] = triangles.corners[side.triangle()];
    return a ^ b ^ c ^ start ^ side.end;
}

/// What one side of a body is drawn by twice, once for each direction, counts once.
std::vector<Side> withoutTwins(std::span<const Side> sides, unsigned start, const WeldedTriangles& triangles)
{
    const auto opposite = [&](const Side& side) { return cornerAcross(start, side, triangles); };
    if (sides.size() > mostCompared)
        return {sides.begin(), sides.end()};
    std::vector<Side> different;
    for (const Side& side : sides)
        if (std::ranges::none_of(different, [&](const Side& o) { return opposite(o) == opposite(side); }))
            different.push_back(side);
    return different;
}

/// The cosine of how two triangles are bent, whichever sides they show; 1 where one of them tells no direction.
float bendOf(const rob::Vec3f& one, const rob::Vec3f& other, bool runAlike)
{
    if (one.squaredLength() == 0 || other.squaredLength() == 0)
        return 1;
    const float cosine = one.dot(other);
    return std::clamp(runAlike ? -cosine : cosine, -1.0f, 1.0f);
}

/// All lines that may be drawn: the bends beyond the least angle, and what has no bend.
class LineFinder {
public:
    LineFinder(const WeldedPoints& welded, const WeldedTriangles& triangles, const EdgeTable& edges, double extent)
        : points(welded.points), triangles(triangles)
    {
        edges.forEach([this](unsigned start, std::span<const Side> sides) { addEdge(start, sides); });
        addBorders(extent);
    }

    const std::vector<CreaseLine>& all() const { return lines; }

private:
    void addEdge(unsigned start, std::span<const Side> sides)
    {
        std::vector<Side> different;
        if (sides.size() > 1 && (sides.size() > 2 || sides[0].isForward() == sides[1].isForward() || isFolded(sides))) {
            different = withoutTwins(sides, start, triangles);
            sides = different;
        }
        const unsigned end = sides.front().end;
        if (sides.size() == 1)
            borders.push_back({start, end, triangles.normals[sides.front().triangle()], sides.front().isForward()});
        else if (sides.size() == 2)
            addBend(start, end,
                    bendOf(triangles.normals[sides[0].triangle()], triangles.normals[sides[1].triangle()],
                           sides[0].isForward() == sides[1].isForward()),
                    isHollow(start, sides[0], sides[1]));
        else
            lines.push_back({start, end, CreaseLine::noBend});
    }
    /// Whether two triangles lie back to back, as those of a surface of two sides do.
    bool isFolded(std::span<const Side> sides) const
    {
        return triangles.normals[sides[0].triangle()].dot(triangles.normals[sides[1].triangle()]) < -0.9f;
    }
    /// Whether the second triangle lies on the side to which the first one faces.
    bool isHollow(unsigned start, const Side& one, const Side& other) const
    {
        const rob::Vec3f way(points[cornerAcross(start, other, triangles)] - points[start]);
        return triangles.normals[one.triangle()].dot(way) > 0;
    }
    void addBend(unsigned from, unsigned to, float cosine, bool isHollow)
    {
        if (cosine < leastBend)
            lines.push_back({from, to, cosine, isHollow});
    }
    void addBorders(double extent)
    {
        std::vector<bool> isInSeam(borders.size(), false);
        for (const BorderSeam& seam : seamsOf(borders, points, leastHeight * extent)) {
            const BorderEdge& border = borders[seam.border];
            isInSeam[seam.border] = true;
            unsigned point = border.from;
            for (const std::size_t each : seam.row) {
                const BorderEdge& other = borders[each];
                isInSeam[each] = true;
                const bool runsOn = other.isForward == (other.from == point);
                point = other.from == point ? other.to : other.from;
                addBend(other.from, other.to, bendOf(border.normal, other.normal, runsOn == border.isForward), false);
            }
        }
        for (std::size_t i = 0; i < borders.size(); ++i)
            if (!isInSeam[i] && borders[i].normal.squaredLength() > 0)
                lines.push_back({borders[i].from, borders[i].to, CreaseLine::noBend});
    }

    const std::vector<rob::Posf>& points;
    const WeldedTriangles& triangles;
    float leastBend = static_cast<float>(std::cos(leastUsefulBend));
    std::vector<CreaseLine> lines;
    std::vector<BorderEdge> borders;
};

double extentOf(std::span<const rob::Posf> points)
{
    rob::Posf least, most;
    bool isFirst = true;
    for (const rob::Posf& p : points) {
        if (!p.isFinite())
            continue;
        least =
            isFirst ? rob::Posf(p) : rob::Posf(std::min(least.x, p.x), std::min(least.y, p.y), std::min(least.z, p.z));
        most = isFirst ? rob::Posf(p) : rob::Posf(std::max(most.x, p.x), std::max(most.y, p.y), std::max(most.z, p.z));
        isFirst = false;
    }
    return std::max({double{most.x} - least.x, double{most.y} - least.y, double{most.z} - least.z});
}

} // namespace

MeshEdges edgesOfMesh(std::span<const rob::Posf> points, std::span<const unsigned> indices)
{
    MeshEdges edges;
    edges.vertices = points.size();
    edges.triangles = indices.size() / 3;
    const double extent = extentOf(points);
    if (!(extent > 0))
        return edges;
    const WeldedPoints welded = weldPoints(points, static_cast<float>(samePlace * extent));
    WeldedTriangles triangles = weldedTriangles(welded, indices, leastHeight * extent);
    const EdgeTable table(triangles, welded.points.size());
    edges.isClosed = isClosed(welded, triangles, table);
    takeNormalsOfNeighbours(triangles, table, welded.points);
    const std::vector<CreaseLine> lines =
        linesToDraw(LineFinder(welded, triangles, table, extent).all(), welded.points, triangles.area, extent);
    edges.points.reserve(2 * lines.size());
    for (const CreaseLine& line : lines)
        for (const unsigned end : {line.from, line.to})
            edges.points.push_back(rob::Posf(welded.points[end]));
    return edges;
}

} // namespace vrk::geometry
