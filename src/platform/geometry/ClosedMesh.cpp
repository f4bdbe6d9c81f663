#include "platform/geometry/ClosedMesh.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>
#include <unordered_map>

namespace vrk::geometry {
namespace {

bool isEachEdgeUsedBothWays(const EdgeTable& edges)
{
    bool isSo = true;
    edges.forEach([&isSo](unsigned, std::span<const EdgeTable::Side> sides) {
        const auto forward = std::ranges::count_if(sides, &EdgeTable::Side::isForward);
        isSo = isSo && 2 * static_cast<std::size_t>(forward) == sides.size();
    });
    return isSo;
}

/// Numbers of which those that were joined have one and the same root.
class JoinedNumbers {
public:
    explicit JoinedNumbers(std::size_t count) : parents(count) { std::iota(parents.begin(), parents.end(), 0u); }

    unsigned rootOf(unsigned number)
    {
        while (parents[number] != number)
            number = parents[number] = parents[parents[number]];
        return number;
    }
    void join(unsigned one, unsigned other) { parents[rootOf(one)] = rootOf(other); }

private:
    std::vector<unsigned> parents;
};

struct ConnectedSurface {
    double volume = 0; // six times that; negative where the outsides lie inside
    rob::Vec3d low{HUGE_VAL, HUGE_VAL, HUGE_VAL};
    rob::Vec3d high{-HUGE_VAL, -HUGE_VAL, -HUGE_VAL};

    void add(const rob::Vec3d& point)
    {
        low = {std::min(low.x, point.x), std::min(low.y, point.y), std::min(low.z, point.z)};
        high = {std::max(high.x, point.x), std::max(high.y, point.y), std::max(high.z, point.z)};
    }
    bool liesIn(const ConnectedSurface& other) const
    {
        return low.x >= other.low.x && low.y >= other.low.y && low.z >= other.low.z && high.x <= other.high.x &&
               high.y <= other.high.y && high.z <= other.high.z;
    }
};

std::vector<ConnectedSurface> connectedSurfaces(const WeldedPoints& points, const WeldedTriangles& triangles)
{
    JoinedNumbers joined(points.points.size());
    for (const auto& [a, b, c] : triangles.corners) {
        joined.join(a, b);
        joined.join(b, c);
    }
    std::unordered_map<unsigned, ConnectedSurface> byRoot;
    for (const auto& corners : triangles.corners) {
        const unsigned root = joined.rootOf(corners[0]);
        ConnectedSurface& surface = byRoot[root];
        // From a point of the surface itself, far from which digits would be lost.
        const rob::Vec3d from(points.points[root]);
        std::array<rob::Vec3d, 3> at;
        for (std::size_t i = 0; i < 3; ++i) {
            const rob::Vec3d point(points.points[corners[i]]);
            surface.add(point);
            at[i] = point - from;
        }
        surface.volume += at[0].dot(at[1].cross(at[2]));
    }
    std::vector<ConnectedSurface> all;
    for (const auto& [root, surface] : byRoot)
        all.push_back(surface);
    return all;
}

} // namespace

bool isClosed(const WeldedPoints& points, const WeldedTriangles& triangles, const EdgeTable& edges)
{
    constexpr double noVolume = 1e-9;          // of the box: a sheet, of which each side has its triangles
    constexpr std::size_t mostCompared = 1000; // cavities
    if (triangles.corners.empty() || !isEachEdgeUsedBothWays(edges))
        return false;
    std::vector<ConnectedSurface> bodies, cavities;
    for (const ConnectedSurface& surface : connectedSurfaces(points, triangles)) {
        const rob::Vec3d size = surface.high - surface.low;
        if (std::abs(surface.volume) > noVolume * size.x * size.y * size.z)
            (surface.volume > 0 ? bodies : cavities).push_back(surface);
    }
    if (bodies.empty() || cavities.size() > mostCompared)
        return false;
    return std::ranges::all_of(cavities, [&bodies](const ConnectedSurface& cavity) {
        return std::ranges::any_of(bodies, [&cavity](const ConnectedSurface& body) { return cavity.liesIn(body); });
    });
}

} // namespace vrk::geometry
