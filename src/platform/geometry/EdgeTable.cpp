#include "platform/geometry/EdgeTable.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace vrk::geometry {
namespace {

constexpr int mostRounds = 8; // triangles without area lie beside each other in rows, but in short ones

double lengthOf(const std::vector<rob::Posf>& points, unsigned a, unsigned b)
{
    return (rob::Vec3d(points[b]) - rob::Vec3d(points[a])).length();
}

/// The first corner of the longest side.
unsigned longestSide(const std::array<unsigned, 3>& corners, const std::vector<rob::Posf>& points)
{
    unsigned longest = 0;
    double most = -1;
    for (unsigned i = 0; i < 3; ++i)
        if (const double length = lengthOf(points, corners[i], corners[(i + 1) % 3]); length > most) {
            longest = i;
            most = length;
        }
    return longest;
}

/// Where there is but one other triangle at the longest side, and it has a normal.
rob::Vec3f normalOfNeighbour(const WeldedTriangles& triangles, unsigned own, const EdgeTable& edges,
                             const std::vector<rob::Posf>& points)
{
    const std::array<unsigned, 3>& corners = triangles.corners[own];
    const unsigned first = longestSide(corners, points);
    const std::span<const EdgeTable::Side> sides = edges.find(corners[first], corners[(first + 1) % 3]);
    if (sides.size() != 2)
        return {};
    const bool isFirst = sides[0].triangle() == own;
    const rob::Vec3f& normal = triangles.normals[sides[isFirst ? 1 : 0].triangle()];
    return sides[0].isForward() != sides[1].isForward() ? normal : -normal;
}

} // namespace

WeldedTriangles weldedTriangles(const WeldedPoints& points, std::span<const unsigned> indices, double leastHeight)
{
    WeldedTriangles triangles;
    triangles.corners.reserve(indices.size() / 3);
    triangles.normals.reserve(indices.size() / 3);
    const auto numberOf = [&](unsigned index) {
        return index < points.numbers.size() ? points.numbers[index] : WeldedPoints::none;
    };
    for (std::size_t i = 0; i + 2 < indices.size(); i += 3) {
        const std::array corners{numberOf(indices[i]), numberOf(indices[i + 1]), numberOf(indices[i + 2])};
        if (corners[0] == corners[1] || corners[1] == corners[2] || corners[2] == corners[0] ||
            std::ranges::find(corners, WeldedPoints::none) != corners.end())
            continue;
        const rob::Vec3d a(points.points[corners[0]]);
        const rob::Vec3d ab = rob::Vec3d(points.points[corners[1]]) - a, ac = rob::Vec3d(points.points[corners[2]]) - a;
        const rob::Vec3d across = ab.cross(ac);
        const double twiceArea = across.length();
        const double longest = std::max({ab.length(), ac.length(), (ac - ab).length()});
        triangles.area += twiceArea / 2;
        triangles.corners.push_back(corners);
        triangles.normals.push_back(twiceArea > leastHeight * longest ? rob::Vec3f(across * (1 / twiceArea))
                                                                      : rob::Vec3f());
    }
    return triangles;
}

EdgeTable::EdgeTable(const WeldedTriangles& triangles, std::size_t points) : starts(points + 1)
{
    const auto forSides = [&triangles](const auto& call) {
        for (std::uint32_t t = 0; t < triangles.corners.size(); ++t) {
            const auto& [a, b, c] = triangles.corners[t];
            for (const auto& [from, to] : {std::pair(a, b), std::pair(b, c), std::pair(c, a)})
                call(std::min(from, to), Side{std::max(from, to), t << 1 | (from < to ? 1u : 0u)});
        }
    };
    forSides([this](unsigned start, const Side&) { ++starts[start + 1]; });
    for (std::size_t i = 1; i < starts.size(); ++i)
        starts[i] += starts[i - 1];
    sides.resize(starts.back());
    std::vector<std::uint32_t> next(starts.begin(), starts.end() - 1);
    forSides([&](unsigned start, const Side& side) { sides[next[start]++] = side; });
    for (std::size_t i = 0; i + 1 < starts.size(); ++i)
        std::sort(sides.begin() + starts[i], sides.begin() + starts[i + 1], [](const Side& one, const Side& other) {
            return std::pair(one.end, one.tagged) < std::pair(other.end, other.tagged);
        });
}

std::span<const EdgeTable::Side> EdgeTable::find(unsigned one, unsigned other) const
{
    const unsigned start = std::min(one, other), end = std::max(one, other);
    const auto last = sides.begin() + starts[start + 1];
    const auto found = std::lower_bound(sides.begin() + starts[start], last, end,
                                        [](const Side& side, unsigned wanted) { return side.end < wanted; });
    return found == last || found->end != end ? std::span<const Side>()
                                              : sidesFrom(start, static_cast<std::size_t>(found - sides.begin()));
}

void takeNormalsOfNeighbours(WeldedTriangles& triangles, const EdgeTable& edges, const std::vector<rob::Posf>& points)
{
    std::vector<unsigned> left;
    for (unsigned t = 0; t < triangles.normals.size(); ++t)
        if (triangles.normals[t].squaredLength() == 0)
            left.push_back(t);
    for (int round = 0; round < mostRounds && !left.empty(); ++round) {
        // Those of one round are found ahead of it: none depends on which was looked at first.
        std::vector<std::pair<unsigned, rob::Vec3f>> found;
        for (const unsigned t : left)
            if (const rob::Vec3f normal = normalOfNeighbour(triangles, t, edges, points); normal.squaredLength() > 0)
                found.emplace_back(t, normal);
        if (found.empty())
            return;
        for (const auto& [t, normal] : found)
            triangles.normals[t] = normal;
        std::erase_if(left, [&](unsigned t) { return triangles.normals[t].squaredLength() > 0; });
    }
}

} // namespace vrk::geometry
