#include "platform/cam/EdgeCollapse.h"

#include "platform/cam/NearestOn.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <tuple>
#include <utility>

namespace vrk::cam {

using rob::Vec3d;

namespace {

constexpr std::uint32_t none = 0xFFFFFFFF;
constexpr double lineWeight = 10;    // of the planes that hold lines, beside those of triangles
constexpr double flattest = 0.2;     // cosine by which the normal of a triangle may turn
constexpr double thinnest = 0.01;    // twice the area over the square of the longest edge, unless it was thinner before
constexpr double spare = 0.9;        // of the tolerance, which is kept at points alone
constexpr unsigned tellEvery = 4096; // edges

Vec3d normalOf(const Vec3d& a, const Vec3d& b, const Vec3d& c)
{
    return (b - a).cross(c - a);
}

/// How far it is from being a needle or a cap: about 0.87 for the best.
double shapeOf(const Vec3d& a, const Vec3d& b, const Vec3d& c, double doubleArea)
{
    const double longest = std::max({(b - a).dot(b - a), (c - b).dot(c - b), (a - c).dot(a - c)});
    return longest > 0 ? doubleArea / longest : 0;
}

/// The number of the edge between two corners; none where it has not both.
unsigned edgeOf(const TriangleSurface::Triangle& triangle, std::uint32_t a, std::uint32_t b)
{
    for (unsigned i = 0; i < 3; ++i) {
        const std::uint32_t from = triangle[i], to = triangle[(i + 1) % 3];
        if ((from == a && to == b) || (from == b && to == a))
            return i;
    }
    return none;
}

} // namespace

/// The points of a surface at which the tolerance is held.
struct EdgeCollapse::Points {
    explicit Points(const TriangleSurface& moved) : source(moved), tree(source), first(source.triangles.size(), none) {}

    void add(const Vec3d& point, Number triangle)
    {
        next.push_back(first[triangle]);
        first[triangle] = static_cast<Number>(at.size());
        at.push_back(point);
    }

    TriangleSurface source;
    SurfaceTree tree;
    std::vector<Vec3d> at;
    std::vector<Number> next;  // of the same triangle
    std::vector<Number> first; // of each triangle
    // Of the edge that is looked at
    std::vector<std::array<Vec3d, 3>> corners;      // of the triangles that there would be
    std::vector<Number> numbers;                    // of these
    std::vector<std::pair<Number, Number>> nearest; // point, and triangle among these
};

EdgeCollapse::EdgeCollapse(const TriangleSurface& surface, const SimplifyOptions& options)
    : surface(surface), options(options), triangles(surface.triangles), lines(surface.triangles.size(), 0),
      isGone(surface.triangles.size(), 0), roles(surface.vertices.size(), Role::Free),
      quadrics(surface.vertices.size()), stamps(surface.vertices.size(), 0), ranges(surface.vertices.size()),
      left(surface.triangles.size()), marks(surface.vertices.size(), 0)
{
    places.reserve(surface.vertices.size());
    for (const rob::Posd& place : surface.vertices)
        middle += Vec3d(place) / static_cast<double>(surface.vertices.size());
    for (const rob::Posd& place : surface.vertices)
        places.push_back(Vec3d(place) - middle);
    for (const Triangle& triangle : triangles)
        for (const Number vertex : triangle)
            ++ranges[vertex].count;
    Number begin = 0;
    for (Range& range : ranges) {
        range.begin = begin;
        begin += std::exchange(range.count, 0u);
    }
    around.resize(begin);
    for (Number t = 0; t < triangles.size(); ++t)
        for (const Number vertex : triangles[t])
            around[ranges[vertex].begin + ranges[vertex].count++] = t;
}

EdgeCollapse::~EdgeCollapse() = default;

template <typename Visit>
void EdgeCollapse::forTrianglesOf(Number vertex, const Visit& visit) const
{
    const Range range = ranges[vertex];
    for (Number i = range.begin; i < range.begin + range.count; ++i)
        if (!isGone[around[i]])
            visit(around[i]);
}

std::optional<TriangleSurface> EdgeCollapse::run()
{
    findLines();
    gatherQuadrics();
    if (std::isfinite(options.tolerance))
        scatterPoints();
    enterAll();
    const std::size_t before = left;
    unsigned since = 0;
    while (left > options.triangles) {
        if (since++ % tellEvery == 0) {
            if (options.stop.stop_requested())
                return {};
            if (options.progress)
                options.progress(static_cast<double>(before - left) /
                                 static_cast<double>(std::max<std::size_t>(before - options.triangles, 1)));
        }
        const std::optional<Candidate> candidate = pop();
        if (!candidate)
            break;
        const auto& [cost, kept, gone, stamp] = *candidate;
        const Vec3d place = placeFor(kept, gone);
        if (isTopologyKept(kept, gone) && keepsShape(kept, gone, place) && keepsShape(gone, kept, place) &&
            (!points || keepsDistance(*candidate, place)))
            collapse(*candidate, place);
    }
    return rest();
}

// What stays

void EdgeCollapse::findLines()
{
    struct Side {
        Number low, high;
        Number triangle;
        std::uint8_t edge;
        bool isRising;
    };
    std::vector<Side> sides;
    sides.reserve(3 * triangles.size());
    for (Number t = 0; t < triangles.size(); ++t)
        for (std::uint8_t i = 0; i < 3; ++i) {
            const Number from = triangles[t][i], to = triangles[t][(i + 1) % 3];
            sides.push_back({std::min(from, to), std::max(from, to), t, i, from < to});
        }
    std::ranges::sort(sides, {}, [](const Side& side) { return std::tuple(side.low, side.high, side.triangle); });

    const auto normal = [&](Number t) {
        return normalOf(places[triangles[t][0]], places[triangles[t][1]], places[triangles[t][2]]);
    };
    const double sharpCosine = std::cos(options.sharp);
    const auto differs = [&](const Vec3d& a, const Vec3d& b) {
        return a.dot(b) < sharpCosine * std::sqrt(a.dot(a) * b.dot(b));
    };
    std::vector<std::array<Number, 2>> onLine(places.size(), {none, none}); // the first neighbours along lines
    std::vector<Number> count(places.size(), 0);
    for (std::size_t i = 0, end = 0; i < sides.size(); i = end) {
        while (end < sides.size() && sides[end].low == sides[i].low && sides[end].high == sides[i].high)
            ++end;
        const bool isSmooth = end - i == 2 && sides[i].isRising != sides[i + 1].isRising &&
                              !differs(normal(sides[i].triangle), normal(sides[i + 1].triangle));
        if (isSmooth)
            continue;
        for (std::size_t k = i; k < end; ++k)
            lines[sides[k].triangle] |= static_cast<std::uint8_t>(1u << sides[k].edge);
        for (const auto& [vertex, other] : {std::pair(sides[i].low, sides[i].high), {sides[i].high, sides[i].low}}) {
            if (count[vertex] < 2)
                onLine[vertex][count[vertex]] = other;
            ++count[vertex];
        }
    }
    for (Number v = 0; v < places.size(); ++v) {
        if (count[v] == 0)
            continue;
        const bool isBend =
            count[v] == 2 && differs(places[v] - places[onLine[v][0]], places[onLine[v][1]] - places[v]);
        roles[v] = count[v] == 2 && !isBend ? Role::OnLine : Role::Corner;
    }
}

void EdgeCollapse::gatherQuadrics()
{
    for (Number t = 0; t < triangles.size(); ++t) {
        const Triangle& triangle = triangles[t];
        const Vec3d across = normalOf(places[triangle[0]], places[triangle[1]], places[triangle[2]]);
        const double doubleArea = across.length();
        const Vec3d normal = across / doubleArea;
        for (const Number vertex : triangle)
            quadrics[vertex].addPlane(normal, places[triangle[0]], doubleArea / 2);
        for (unsigned i = 0; i < 3; ++i) {
            if (!(lines[t] >> i & 1))
                continue;
            const Number from = triangle[i], to = triangle[(i + 1) % 3];
            const Vec3d along = places[to] - places[from];
            const Vec3d outwards = along.cross(normal) / along.length();
            for (const Number vertex : {from, to})
                quadrics[vertex].addPlane(outwards, places[from], lineWeight * along.dot(along));
        }
    }
}

bool EdgeCollapse::isOnLine(Number a, Number b) const
{
    bool found = false;
    forTrianglesOf(a, [&](Number t) {
        const unsigned edge = edgeOf(triangles[t], a, b);
        found = found || (edge != none && (lines[t] >> edge & 1));
    });
    return found;
}

// Which edge is next

void EdgeCollapse::enterAll()
{
    heap.reserve(4 * triangles.size());
    for (Number v = 0; v < places.size(); ++v) {
        ++search;
        forTrianglesOf(v, [&](Number t) {
            for (const Number other : triangles[t])
                if (other > v && std::exchange(marks[other], search) != search)
                    enter(v, other);
        });
    }
}

void EdgeCollapse::enterAllOf(Number vertex)
{
    ++search;
    forTrianglesOf(vertex, [&](Number t) {
        for (const Number other : triangles[t])
            if (other != vertex && std::exchange(marks[other], search) != search)
                enter(vertex, other);
    });
}

void EdgeCollapse::enter(Number a, Number b)
{
    const bool isFirstKept = roles[a] != roles[b] ? roles[a] > roles[b] : a < b;
    const Number kept = isFirstKept ? a : b, gone = isFirstKept ? b : a;
    if (roles[gone] == Role::Corner || (roles[gone] == Role::OnLine && !isOnLine(a, b)))
        return;
    const double cost = costOf(kept, gone, placeFor(kept, gone));
    heap.push_back({static_cast<float>(cost), kept, gone, stamps[kept] + stamps[gone]});
    std::ranges::push_heap(heap, std::ranges::greater(),
                           [](const Candidate& c) { return std::tuple(c.cost, c.kept, c.gone); });
}

std::optional<EdgeCollapse::Candidate> EdgeCollapse::pop()
{
    while (!heap.empty()) {
        std::ranges::pop_heap(heap, std::ranges::greater(),
                              [](const Candidate& c) { return std::tuple(c.cost, c.kept, c.gone); });
        const Candidate candidate = heap.back();
        heap.pop_back();
        if (stamps[candidate.kept] + stamps[candidate.gone] == candidate.stamp)
            return candidate;
    }
    return {};
}

Vec3d EdgeCollapse::placeFor(Number kept, Number gone) const
{
    if (roles[kept] != roles[gone] || roles[kept] == Role::Corner)
        return places[kept];
    const Quadric sum = quadrics[kept] + quadrics[gone];
    const Vec3d half = (places[kept] + places[gone]) / 2.0;
    const Vec3d edge = places[gone] - places[kept];
    const Vec3d least = sum.least(half);
    if ((least - half).dot(least - half) <= edge.dot(edge))
        return least;
    Vec3d best = half;
    for (const Vec3d& other : {places[kept], places[gone]})
        if (sum.at(other) < sum.at(best))
            best = other;
    return best;
}

/// Where nothing is lost by any of them, the shortest goes first.
double EdgeCollapse::costOf(Number kept, Number gone, const Vec3d& place) const
{
    const Vec3d edge = places[gone] - places[kept];
    const double square = edge.dot(edge);
    return std::max((quadrics[kept] + quadrics[gone]).at(place), 0.0) + 1e-9 * square * square;
}

// Whether it may go

EdgeCollapse::Number EdgeCollapse::trianglesOf(Number vertex) const
{
    Number count = 0;
    forTrianglesOf(vertex, [&count](Number) { ++count; });
    return count;
}

/// Both ends have no neighbours in common but those across the edge's own triangles (Dey, Edelsbrunner, Guha, Nekhayev,
/// "Topology preserving edge contraction", 1999), and none of these would be left with two triangles on each other.
bool EdgeCollapse::isTopologyKept(Number kept, Number gone)
{
    const Number ofGone = ++search, inCommon = ++search;
    Number shared = 0, common = 0;
    bool isKept = true;
    forTrianglesOf(gone, [&](Number t) {
        shared += has(triangles[t], kept) ? 1 : 0;
        for (const Number vertex : triangles[t])
            marks[vertex] = ofGone;
    });
    forTrianglesOf(kept, [&](Number t) {
        for (const Number vertex : triangles[t]) {
            if (vertex == kept || vertex == gone || marks[vertex] != ofGone)
                continue;
            marks[vertex] = inCommon;
            ++common;
            isKept = isKept && trianglesOf(vertex) > (roles[vertex] == Role::Free ? 3 : 1);
        }
    });
    return isKept && common == shared;
}

bool EdgeCollapse::keepsShape(Number vertex, Number other, const Vec3d& place) const
{
    bool isKept = true;
    forTrianglesOf(vertex, [&](Number t) {
        if (!isKept || has(triangles[t], other))
            return;
        std::array<Vec3d, 3> now, then;
        for (unsigned i = 0; i < 3; ++i) {
            now[i] = places[triangles[t][i]];
            then[i] = triangles[t][i] == vertex ? place : now[i];
        }
        const Vec3d before = normalOf(now[0], now[1], now[2]), after = normalOf(then[0], then[1], then[2]);
        const double areaBefore = before.length(), areaAfter = after.length();
        isKept = before.dot(after) > flattest * areaBefore * areaAfter;
        if (!isKept)
            return;
        const double shape = shapeOf(then[0], then[1], then[2], areaAfter);
        isKept = shape >= thinnest || (shape > 1e-6 && shape >= shapeOf(now[0], now[1], now[2], areaBefore));
    });
    return isKept;
}

// How far it would lie from the surface

void EdgeCollapse::scatterPoints()
{
    TriangleSurface moved{{}, triangles};
    for (const Vec3d& place : places)
        moved.vertices.emplace_back(place);
    points = std::make_unique<Points>(std::move(moved));
    std::vector<bool> isThere(places.size(), false);
    for (Number t = 0; t < triangles.size(); ++t) {
        Vec3d sum;
        for (const Number vertex : triangles[t]) {
            sum += places[vertex];
            if (!isThere[vertex])
                points->add(places[vertex], t);
            isThere[vertex] = true;
        }
        points->add(sum / 3.0, t);
    }
}

bool EdgeCollapse::keepsDistance(const Candidate& candidate, const Vec3d& place)
{
    const double limit = spare * options.tolerance;
    const auto isNear = [&](const Vec3d& point) { return points->tree.squaredDistance(point, limit) < limit * limit; };
    if (!isNear(place))
        return false;
    points->corners.clear();
    points->numbers.clear();
    points->nearest.clear();
    const auto addOf = [&](Number vertex, Number other) {
        forTrianglesOf(vertex, [&](Number t) {
            if (has(triangles[t], other))
                return;
            std::array<Vec3d, 3> corners;
            for (unsigned i = 0; i < 3; ++i)
                corners[i] = triangles[t][i] == vertex ? place : places[triangles[t][i]];
            points->corners.push_back(corners);
            points->numbers.push_back(t);
        });
    };
    addOf(candidate.kept, candidate.gone);
    addOf(candidate.gone, candidate.kept);
    for (const auto& [a, b, c] : points->corners)
        if (!isNear((a + b + c) / 3.0) || !isNear((a + b) / 2.0) || !isNear((b + c) / 2.0) || !isNear((c + a) / 2.0))
            return false;
    const auto isPointKept = [&](Number point) {
        double least = limit * limit;
        Number nearest = none;
        for (Number i = 0; i < points->corners.size(); ++i) {
            const auto& [a, b, c] = points->corners[i];
            const Vec3d off = nearestOn(a, b, c, points->at[point]).place - points->at[point];
            if (const double square = off.dot(off); square < least) {
                least = square;
                nearest = i;
            }
        }
        points->nearest.emplace_back(point, nearest);
        return nearest != none;
    };
    bool isKept = true;
    const auto look = [&](Number t) {
        for (Number point = points->first[t]; isKept && point != none; point = points->next[point])
            isKept = isPointKept(point);
    };
    forTrianglesOf(candidate.kept, look);
    forTrianglesOf(candidate.gone, [&](Number t) {
        if (!has(triangles[t], candidate.kept))
            look(t);
    });
    return isKept;
}

void EdgeCollapse::movePoints()
{
    for (const Number t : points->numbers)
        points->first[t] = none;
    for (const auto& [point, index] : points->nearest) {
        Number& first = points->first[points->numbers[index]];
        points->next[point] = std::exchange(first, point);
    }
}

// What comes of it

/// The two edges to a neighbour across become one, which is on a line if one of them is.
void EdgeCollapse::joinLines(Number kept, Number gone)
{
    forTrianglesOf(gone, [&](Number shared) {
        const unsigned edge = edgeOf(triangles[shared], kept, gone);
        if (edge == none)
            return;
        const Number across = triangles[shared][(edge + 2) % 3];
        const auto isMarked = [&](Number end) {
            return (lines[shared] >> edgeOf(triangles[shared], end, across) & 1) != 0;
        };
        if (!isMarked(kept) && !isMarked(gone))
            return;
        for (const Number end : {kept, gone})
            forTrianglesOf(end, [&](Number t) {
                if (const unsigned other = edgeOf(triangles[t], end, across); other != none)
                    lines[t] |= static_cast<std::uint8_t>(1u << other);
            });
    });
}

void EdgeCollapse::collapse(const Candidate& candidate, const Vec3d& place)
{
    const Number kept = candidate.kept, gone = candidate.gone;
    joinLines(kept, gone);
    Range range{static_cast<Number>(around.size()), 0};
    std::vector<Number>& list = around;
    const auto append = [&](Number t) {
        list.push_back(t);
        ++range.count;
    };
    const Range ofKept = ranges[kept], ofGone = ranges[gone];
    for (Number i = ofGone.begin; i < ofGone.begin + ofGone.count; ++i) {
        const Number t = around[i];
        if (isGone[t] || !has(triangles[t], kept))
            continue;
        isGone[t] = 1;
        --left;
    }
    for (const Range& of : {ofKept, ofGone})
        for (Number i = of.begin; i < of.begin + of.count; ++i) {
            const Number t = around[i];
            if (isGone[t])
                continue;
            std::ranges::replace(triangles[t], gone, kept);
            append(t);
        }
    ranges[kept] = range;
    ranges[gone] = {};
    quadrics[kept] = quadrics[kept] + quadrics[gone];
    places[kept] = place;
    ++stamps[kept];
    ++stamps[gone];
    if (points)
        movePoints();
    enterAllOf(kept);
}

TriangleSurface EdgeCollapse::rest() const
{
    TriangleSurface result;
    std::vector<Number> numbers(places.size(), none);
    for (Number t = 0; t < triangles.size(); ++t)
        if (!isGone[t])
            for (const Number vertex : triangles[t])
                numbers[vertex] = 0;
    for (Number v = 0; v < places.size(); ++v) {
        if (numbers[v] == none)
            continue;
        numbers[v] = static_cast<Number>(result.vertices.size());
        // To the last digit where it was, if it was not moved
        const bool isMoved = !(places[v] == Vec3d(surface.vertices[v]) - middle);
        result.vertices.push_back(isMoved ? rob::Posd(places[v] + middle) : surface.vertices[v]);
    }
    result.triangles.reserve(left);
    for (Number t = 0; t < triangles.size(); ++t)
        if (!isGone[t])
            result.triangles.push_back({numbers[triangles[t][0]], numbers[triangles[t][1]], numbers[triangles[t][2]]});
    return result;
}

} // namespace vrk::cam
