#include "platform/measure/TriangleTree.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <unordered_map>
#include <utility>

namespace vrk::measure {
namespace {

using rob::Posd;
using rob::Vec3d;

constexpr std::uint32_t leafSize = 4;

// Nearest places of pieces: Ericson, "Real-Time Collision Detection" (2005), 5.1.

NearestPlaces between(const Posd& first, const Posd& second)
{
    return {(second - first).length(), first, second};
}

/// Of two segments, either of which may be a point.
NearestPlaces nearestOfSegments(const Posd& a, const Posd& b, const Posd& c, const Posd& d)
{
    const Vec3d along = b - a, other = d - c, apart = a - c;
    const double aa = along.squaredLength(), ee = other.squaredLength(), f = other.dot(apart);
    double s = 0, t = 0;
    if (aa == 0 && ee == 0)
        return between(a, c);
    if (aa == 0) {
        t = std::clamp(f / ee, 0.0, 1.0);
    } else {
        const double ac = along.dot(apart);
        if (ee == 0) {
            s = std::clamp(-ac / aa, 0.0, 1.0);
        } else {
            const double both = along.dot(other), denominator = aa * ee - both * both;
            s = denominator > 0 ? std::clamp((both * f - ac * ee) / denominator, 0.0, 1.0) : 0;
            t = (both * s + f) / ee;
            if (t < 0 || t > 1) {
                t = std::clamp(t, 0.0, 1.0);
                s = std::clamp((both * t - ac) / aa, 0.0, 1.0);
            }
        }
    }
    return between(a + along * s, c + other * t);
}

/// The foot of the perpendicular, where it lies within the triangle. Elsewhere an edge is nearer.
std::optional<Posd> footOn(const Triangle& triangle, const Posd& place)
{
    const Vec3d ab = triangle[1] - triangle[0], ac = triangle[2] - triangle[0], ap = place - triangle[0];
    const Vec3d normal = ab.cross(ac);
    const double area = normal.squaredLength();
    if (area == 0)
        return std::nullopt;
    const double v = ap.cross(ac).dot(normal) / area, w = ab.cross(ap).dot(normal) / area;
    if (v < 0 || w < 0 || v + w > 1)
        return std::nullopt;
    return triangle[0] + ab * v + ac * w;
}

/// Where a segment goes through a triangle.
std::optional<Posd> crossing(const Posd& from, const Posd& to, const Triangle& triangle)
{
    const Vec3d normal = (triangle[1] - triangle[0]).cross(triangle[2] - triangle[0]);
    const double before = (from - triangle[0]).dot(normal), after = (to - triangle[0]).dot(normal);
    if ((before > 0) == (after > 0) || before == after)
        return std::nullopt;
    const Posd through = from + (to - from) * (before / (before - after));
    return footOn(triangle, through);
}

void takeNearer(NearestPlaces& best, const NearestPlaces& other)
{
    if (other.distance < best.distance)
        best = other;
}

NearestPlaces swapped(const NearestPlaces& places)
{
    return {places.distance, places.second, places.first};
}

/// Between the corners and edges of one triangle and the inside of the other.
NearestPlaces nearestToInside(const Triangle& triangle, const Triangle& inside)
{
    NearestPlaces best{std::numeric_limits<double>::infinity(), {}, {}};
    for (std::size_t i = 0; i < 3; ++i) {
        if (const auto foot = footOn(inside, triangle[i]))
            takeNearer(best, between(triangle[i], *foot));
        if (const auto place = crossing(triangle[i], triangle[(i + 1) % 3], inside))
            return {0, *place, *place};
    }
    return best;
}

struct CornerHash {
    std::size_t operator()(const Posd& place) const
    {
        std::size_t hash = 0;
        for (const double each : {place.x, place.y, place.z})
            hash = (hash ^ std::hash<double>()(each)) * 0x9E3779B97F4A7C15ull;
        return hash ^ (hash >> 32);
    }
};

} // namespace

NearestPlaces nearestOf(const Triangle& first, const Triangle& second)
{
    NearestPlaces best = nearestToInside(first, second);
    if (best.distance > 0)
        takeNearer(best, swapped(nearestToInside(second, first)));
    for (std::size_t i = 0; i < 3 && best.distance > 0; ++i)
        for (std::size_t k = 0; k < 3; ++k)
            takeNearer(best, nearestOfSegments(first[i], first[(i + 1) % 3], second[k], second[(k + 1) % 3]));
    return best;
}

// The tree

double TriangleTree::Box::squaredDistanceTo(const Box& other) const
{
    const auto gap = [](double lowA, double highA, double lowB, double highB) {
        return std::max({0.0, lowA - highB, lowB - highA});
    };
    return Vec3d(gap(low.x, high.x, other.low.x, other.high.x), gap(low.y, high.y, other.low.y, other.high.y),
                 gap(low.z, high.z, other.low.z, other.high.z))
        .squaredLength();
}

TriangleTree::Box TriangleTree::boxOf(std::uint32_t begin, std::uint32_t end) const
{
    constexpr double far = std::numeric_limits<double>::infinity();
    Box box{{far, far, far}, {-far, -far, -far}};
    for (std::uint32_t i = begin; i < end; ++i)
        for (const Posd& corner : triangles[i]) {
            box.low = {std::min(box.low.x, corner.x), std::min(box.low.y, corner.y), std::min(box.low.z, corner.z)};
            box.high = {std::max(box.high.x, corner.x), std::max(box.high.y, corner.y), std::max(box.high.z, corner.z)};
        }
    return box;
}

TriangleTree::TriangleTree(std::vector<Triangle> all, const std::stop_token& stop) : triangles(std::move(all))
{
    if (triangles.empty())
        return;
    const auto count = static_cast<std::uint32_t>(triangles.size());
    nodes.reserve(count);
    nodes.push_back({boxOf(0, count), 0, count});
    for (std::size_t node = 0; node < nodes.size(); ++node)
        if (split(node) && stop.stop_requested()) {
            nodes.clear();
            return;
        }
}

/// Halves the triangles of a node across its longest side. False for a leaf.
bool TriangleTree::split(std::size_t node)
{
    const auto [box, begin, end, left] = nodes[node];
    if (end - begin <= leafSize)
        return false;
    const Vec3d size = box.high - box.low;
    const unsigned axis = size.x >= size.y && size.x >= size.z ? 0 : size.y >= size.z ? 1 : 2;
    const auto centre = [axis](const Triangle& each) { return each[0][axis] + each[1][axis] + each[2][axis]; };
    const std::uint32_t middle = begin + (end - begin) / 2;
    std::nth_element(triangles.begin() + begin, triangles.begin() + middle, triangles.begin() + end,
                     [&centre](const Triangle& a, const Triangle& b) { return centre(a) < centre(b); });
    nodes[node].left = static_cast<std::uint32_t>(nodes.size());
    nodes.push_back({boxOf(begin, middle), begin, middle});
    nodes.push_back({boxOf(middle, end), middle, end});
    return true;
}

bool TriangleTree::holds(const Posd& place) const
{
    return !nodes.empty() && nodes.front().box.squaredDistanceTo({place, place}) == 0;
}

std::optional<NearestPlaces> TriangleTree::Nearest(const TriangleTree& first, const TriangleTree& second,
                                                   const std::stop_token& stop)
{
    if (first.nodes.empty() || second.nodes.empty())
        return std::nullopt;
    struct Pair {
        std::uint32_t first, second;
        double least; // squared
    };
    const auto pairOf = [&](std::uint32_t a, std::uint32_t b) {
        return Pair{a, b, first.nodes[a].box.squaredDistanceTo(second.nodes[b].box)};
    };
    NearestPlaces best{std::numeric_limits<double>::infinity(), {}, {}};
    std::vector<Pair> open{pairOf(0, 0)};
    while (!open.empty() && best.distance > 0) {
        if (stop.stop_requested())
            return std::nullopt;
        const Pair pair = open.back();
        open.pop_back();
        if (pair.least >= best.distance * best.distance)
            continue;
        const Node &a = first.nodes[pair.first], &b = second.nodes[pair.second];
        if (a.left == 0 && b.left == 0) {
            for (std::uint32_t i = a.begin; i < a.end; ++i)
                for (std::uint32_t k = b.begin; k < b.end; ++k)
                    takeNearer(best, nearestOf(first.triangles[i], second.triangles[k]));
            continue;
        }
        // The larger box is opened; of its halves the nearer one is looked at first.
        const bool opensFirst = b.left == 0 || (a.left != 0 && a.box.size() >= b.box.size());
        Pair near = opensFirst ? pairOf(a.left, pair.second) : pairOf(pair.first, b.left);
        Pair far = opensFirst ? pairOf(a.left + 1, pair.second) : pairOf(pair.first, b.left + 1);
        if (far.least < near.least)
            std::swap(near, far);
        open.push_back(far);
        open.push_back(near);
    }
    return best;
}

// What lies inside

bool isInside(const std::vector<Triangle>& closed, const Posd& place)
{
    // The sum of the solid angles: Van Oosterom, Strackee, "The Solid Angle of a Plane Triangle" (1983).
    double sum = 0;
    for (const Triangle& triangle : closed) {
        const Vec3d a = triangle[0] - place, b = triangle[1] - place, c = triangle[2] - place;
        const double la = a.length(), lb = b.length(), lc = c.length();
        sum += 2 * std::atan2(a.dot(b.cross(c)), la * lb * lc + a.dot(b) * lc + b.dot(c) * la + c.dot(a) * lb);
    }
    return sum > 2 * std::numbers::pi; // once about is 4 pi
}

Connected connectedOf(const std::vector<Triangle>& triangles)
{
    std::unordered_map<Posd, std::uint32_t, CornerHash> numbers;
    std::vector<Posd> places;
    std::vector<std::uint32_t> above; // for each corner one of the same set, or itself: a forest
    const auto rootOf = [&above](std::uint32_t corner) {
        while (above[corner] != corner)
            corner = above[corner] = above[above[corner]];
        return corner;
    };
    std::unordered_map<std::uint64_t, int> runs; // along each edge: one way less the other
    for (const Triangle& triangle : triangles) {
        std::array<std::uint32_t, 3> corners{};
        for (std::size_t i = 0; i < 3; ++i) {
            const auto next = static_cast<std::uint32_t>(places.size());
            // Adding 0 makes the two zeros one.
            const auto [found, isNew] = numbers.try_emplace(triangle[i] + Vec3d(0, 0, 0), next);
            if (isNew) {
                places.push_back(triangle[i]);
                above.push_back(next);
            }
            corners[i] = found->second;
        }
        for (std::size_t i = 0; i < 3; ++i) {
            const std::uint32_t from = corners[i], to = corners[(i + 1) % 3];
            above[rootOf(from)] = rootOf(to);
            const std::uint64_t edge = std::uint64_t{std::min(from, to)} << 32 | std::max(from, to);
            runs[edge] += from < to ? 1 : from > to ? -1 : 0;
        }
    }
    Connected connected;
    connected.areClosed = std::ranges::all_of(runs, [](const auto& run) { return run.second == 0; });
    for (std::uint32_t corner = 0; corner < above.size(); ++corner)
        if (rootOf(corner) == corner)
            connected.places.push_back(places[corner]);
    return connected;
}

} // namespace vrk::measure
