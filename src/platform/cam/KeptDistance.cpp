#include "platform/cam/KeptDistance.h"

#include "platform/cam/NearestOn.h"
#include "platform/cam/TriangleShape.h"
#include "platform/common/ParallelFor.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace vrk::cam {

using rob::Vec3d;

namespace {

constexpr double spare = 0.98;          // of the tolerance, at the end
constexpr unsigned mostCuts = 8;        // of a triangle in four, at the end
constexpr double smallest = 0.25;       // of a limit: a piece that is looked at in its middle alone
constexpr unsigned mostSteps = 4096;    // along an edge: a limit that is less than can be reckoned is not held
constexpr double shortest = 1.0 / 64.0; // of a limit: what does not get on by so much along an edge is not held

} // namespace

double KeptDistance::Corners::squaredDistance(const Vec3d& place) const
{
    return (nearestOn(a, b, c, place).place - place).squaredLength();
}

KeptDistance::Source::Source(const LinkedTriangles& triangles, TriangleSurface surface)
    : surface(std::move(surface)), side(triangles, placesOf(this->surface), this->surface)
{
}

KeptDistance::KeptDistance(std::shared_ptr<const Source> of, double tolerance, double limit)
    : source(std::move(of)), tolerance(tolerance), limit(limit),
      first(source->surface.triangles.size(), LinkedTriangles::none), isTouched(first.size(), false)
{
    const auto add = [this](Number point, Number triangle) { next[point] = std::exchange(first[triangle], point); };
    points = placesOf(source->surface);
    next.assign(points.size() + first.size(), LinkedTriangles::none);
    hints.assign(points.size(), LinkedTriangles::none);
    for (Number t = 0; t < first.size(); ++t) {
        Vec3d sum;
        for (const Number vertex : source->surface.triangles[t]) {
            sum += points[vertex];
            if (hints[vertex] == LinkedTriangles::none)
                add(vertex, t);
            hints[vertex] = t;
        }
        add(static_cast<Number>(points.size()), t);
        points.push_back(sum / 3.0);
    }
}

bool KeptDistance::Side::isWithin(const Vec3d& place, double limit, Number& hint) const
{
    const SourcePatches::Place found = patches.nearest(place, hint);
    hint = found.triangle;
    // Where neighbours do not lead to it, all are asked.
    return (found.place - place).squaredLength() < limit * limit || tree.isWithin(place, limit);
}

/// A triangle is convex: a piece whose ends are within of it is so all along. And no distance changes by more than the way that
/// is gone. Each step along the edge is as long as one of these tells, so that nothing lies between places that were asked.
bool KeptDistance::Side::isEdgeWithin(const Vec3d& from, const Vec3d& to, double limit, Number hint) const
{
    const double length = (to - from).length();
    const Vec3d along = length > 0 ? (to - from) / length : Vec3d();
    unsigned steps = 0;
    for (double gone = 0; gone < length;) {
        const Vec3d place = from + along * gone;
        const SourcePatches::Place found = patches.nearest(place, hint);
        hint = found.triangle;
        const double distance = (found.place - place).length();
        double step = limit - distance;
        if (distance < limit) {
            if (patches.distance(hint, to) < limit)
                return true;
            const double end = patches.leaves(hint, place, along);
            const double there = patches.distance(hint, place + along * end);
            if (there < limit)
                step = std::max(step, end + limit - there);
        }
        // Where neighbours do not lead to what is nearest, all are asked.
        if (step < shortest * limit)
            step = limit - std::sqrt(tree.squaredDistance(place, limit));
        if (!(step >= shortest * limit) || ++steps > mostSteps)
            return false;
        gone += step;
    }
    return isWithin(to, limit, hint);
}

/// A triangle is convex: what has its corners within of it is so all over. What is left is cut in four, down to pieces
/// that are small beside the limit, which are asked about in their middle.
bool KeptDistance::Side::isTriangleWithin(const Corners& of, double limit, Number hint, unsigned cuts) const
{
    const auto& [a, b, c] = of;
    const Vec3d middle = (a + b + c) / 3.0;
    const SourcePatches::Place found = patches.nearest(middle, hint);
    hint = found.triangle;
    const double radius = std::max({(a - middle).length(), (b - middle).length(), (c - middle).length()});
    double distance = (found.place - middle).length();
    if (distance + radius < limit ||
        (patches.distance(hint, a) < limit && patches.distance(hint, b) < limit && patches.distance(hint, c) < limit))
        return true;
    // Where neighbours do not lead to what is nearest, all are asked.
    if (!(distance < limit))
        distance = std::sqrt(tree.squaredDistance(middle, limit));
    if (!(distance < limit) || cuts == 0 || radius < smallest * limit)
        return distance < limit;
    const Vec3d ab = (a + b) / 2.0, bc = (b + c) / 2.0, ca = (c + a) / 2.0;
    return isTriangleWithin({ab, bc, ca}, limit, hint, cuts - 1) &&
           isTriangleWithin({a, ab, ca}, limit, hint, cuts - 1) &&
           isTriangleWithin({ab, b, bc}, limit, hint, cuts - 1) && isTriangleWithin({ca, bc, c}, limit, hint, cuts - 1);
}

bool KeptDistance::isKept(const LinkedTriangles& triangles, const std::vector<Vec3d>& places, Number kept, Number gone,
                          const Vec3d& place)
{
    if (!look(triangles, places, kept, gone, place))
        return false;
    for (Number i = 0; i < numbers.size(); ++i)
        for (Number point = first[numbers[i]]; point != LinkedTriangles::none; point = next[point])
            if (!isPointWithin(point, i < corners.size() ? i : 0))
                return false;
    // Each new edge is the first of one triangle, but at a border.
    for (const auto& [a, b, c] : corners) {
        Number near = hint;
        if (!source->side.isEdgeWithin(a, b, limit, hint) || !source->side.isWithin((a + b + c) / 3.0, limit, near) ||
            !source->side.isWithin((a + c) / 2.0, limit, near))
            return false;
    }
    return true;
}

bool KeptDistance::look(const LinkedTriangles& triangles, const std::vector<Vec3d>& places, Number kept, Number gone,
                        const Vec3d& place)
{
    vertex = kept;
    hint = hints[kept];
    corners.clear();
    numbers.clear();
    if (!source->side.isWithin(place, limit, hint))
        return false;
    for (const auto& [vertex, other] : {std::pair(kept, gone), {gone, kept}})
        triangles.forCornersAt(vertex, [&, other = other](Number t, Number i) {
            if (triangles.has(t, other))
                return;
            corners.push_back({place, places[triangles[t][LinkedTriangles::nextOf(i)]],
                               places[triangles[t][LinkedTriangles::previousOf(i)]]});
            numbers.push_back(t);
        });
    triangles.forTrianglesOn(kept, gone, [this](Number t) { numbers.push_back(t); });
    return true;
}

/// Most points stay near the triangle that they were near, which is asked at first.
bool KeptDistance::isPointWithin(Number point, Number likely) const
{
    const Vec3d& at = points[point];
    const auto isNear = [&](const Corners& of) { return of.squaredDistance(at) < limit * limit; };
    return (likely < corners.size() && isNear(corners[likely])) || std::ranges::any_of(corners, isNear);
}

void KeptDistance::move()
{
    hints[vertex] = hint;
    moved.clear();
    for (const Number t : numbers) {
        for (Number point = first[t]; point != LinkedTriangles::none; point = next[point])
            moved.push_back(point);
        first[t] = LinkedTriangles::none;
        isTouched[t] = true;
    }
    for (const Number point : moved) {
        double least = std::numeric_limits<double>::infinity();
        Number nearest = 0;
        for (Number i = 0; i < corners.size(); ++i) {
            const double square = corners[i].squaredDistance(points[point]);
            if (square < least) {
                least = square;
                nearest = i;
            }
        }
        next[point] = std::exchange(first[numbers[nearest]], point);
    }
}

std::vector<KeptDistance::Number> KeptDistance::verticesBeyond(const LinkedTriangles& triangles,
                                                               const std::vector<Vec3d>& places,
                                                               const std::stop_token& stop) const
{
    std::vector<Number> nearestTo(points.size(), LinkedTriangles::none);
    std::vector<TriangleSurface::Triangle> there;
    for (Number t = 0; t < triangles.slots(); ++t) {
        if (triangles.isGone(t))
            continue;
        there.push_back(triangles[t]);
        for (Number point = first[t]; point != LinkedTriangles::none; point = next[point])
            nearestTo[point] = t;
    }
    const Side ofResult(triangles, places, surfaceOf(places, std::move(there)));
    // Bytes, which several threads may write next to each other. Triangles of the result have the numbers of those of the
    // surface that they were.
    std::vector<std::uint8_t> isBeyond(triangles.slots(), 0), isSourceBeyond(triangles.slots(), 0);
    parallelFor(triangles.slots(), [&](std::size_t begin, std::size_t end) {
        for (auto t = static_cast<Number>(begin); t < end && !stop.stop_requested(); ++t) {
            if (!triangles.isGone(t) && isTouched[t]) {
                const auto& [a, b, c] = triangles[t];
                isBeyond[t] = !source->side.isTriangleWithin({places[a], places[b], places[c]}, spare * tolerance,
                                                             hints[a], mostCuts);
            }
            for (Number i = 0; i < 3 && (triangles.isGone(t) || isTouched[t]); ++i) {
                const Number a = source->surface.triangles[t][i],
                             b = source->surface.triangles[t][LinkedTriangles::nextOf(i)];
                // An edge that is near one triangle with both ends is so all along.
                if (nearestTo[a] != nearestTo[b] &&
                    !ofResult.isEdgeWithin(points[a], points[b], spare * tolerance, nearestTo[a]))
                    isSourceBeyond[t] = 1;
            }
        }
    });
    std::vector<bool> isListed(source->surface.vertices.size(), false);
    const auto listAll = [&](const TriangleSurface::Triangle& corners) {
        for (const Number vertex : corners)
            isListed[vertex] = true;
    };
    for (Number t = 0; t < triangles.slots(); ++t) {
        if (isSourceBeyond[t])
            listAll(source->surface.triangles[t]);
        if (!isBeyond[t])
            continue;
        listAll(triangles[t]);
        for (Number point = first[t]; point != LinkedTriangles::none; point = next[point])
            if (point < source->surface.vertices.size())
                isListed[point] = true;
            else
                listAll(source->surface.triangles[point - source->surface.vertices.size()]);
    }
    std::vector<Number> beyond;
    for (Number v = 0; v < isListed.size(); ++v)
        if (isListed[v])
            beyond.push_back(v);
    return beyond;
}

} // namespace vrk::cam
