#include "platform/cam/EdgeCollapse.h"

#include "platform/cam/TriangleShape.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace vrk::cam {

using rob::Vec3d;

namespace {

constexpr double lineWeight = 10;    // of the planes that hold lines, beside those of triangles
constexpr double flattest = 0.2;     // cosine by which the normal of a triangle may turn
constexpr double thinnest = 0.01;    // twice the area over the square of the longest edge, unless it was thinner before
constexpr double spare = 0.8;        // of the tolerance, at each step
constexpr double worthwhile = 0.97;  // what a further round must leave at most
constexpr unsigned stopEvery = 1024; // edges

/// The vertices, from the middle of all.
std::vector<Vec3d> centred(const TriangleSurface& surface, Vec3d& middle)
{
    std::vector<Vec3d> places = placesOf(surface);
    for (const Vec3d& place : places)
        middle += place / static_cast<double>(places.size());
    for (Vec3d& place : places)
        place -= middle;
    return places;
}

} // namespace

EdgeCollapse::EdgeCollapse(const TriangleSurface& surface, const SimplifyOptions& options,
                           const std::vector<Number>& held)
    : surface(surface), options(options), places(centred(surface, middle)),
      triangles(surface.triangles, surface.vertices.size()), roles(findLines(triangles, places, options.sharp)),
      contraction(triangles, roles), quadrics(surface.vertices.size()), stamps(surface.vertices.size(), 0),
      marks(surface.vertices.size(), 0)
{
    for (const Number vertex : held)
        roles[vertex] = Role::Corner;
    if (!std::isfinite(options.tolerance))
        return;
    distance = std::make_unique<KeptDistance>(triangles, surfaceOf(places, surface.triangles), options.tolerance,
                                              spare * options.tolerance);
}

bool EdgeCollapse::run()
{
    gatherQuadrics();
    // What may not go may do so when its surroundings have changed.
    for (std::size_t before = 2 * triangles.size();
         triangles.size() > options.triangles &&
         static_cast<double>(triangles.size()) <= worthwhile * static_cast<double>(before);) {
        before = triangles.size();
        enterAll();
        if (!drawTogether())
            return false;
    }
    return true;
}

bool EdgeCollapse::drawTogether()
{
    const std::size_t before = surface.triangles.size();
    unsigned since = 0;
    while (triangles.size() > options.triangles) {
        if (since++ % stopEvery == 0 && !tell(before))
            return false;
        const std::optional<EdgeQueue::Edge> edge = queue.pop();
        if (!edge)
            break;
        const auto& [kept, gone, stamp] = *edge;
        if (stamps[kept] + stamps[gone] != stamp)
            continue;
        const Quadric sum = quadrics[kept] + quadrics[gone];
        const Vec3d place = placeFor(kept, gone, sum);
        if (!mayGo(*edge, place))
            continue;
        contraction.contract(kept, gone);
        quadrics[kept] = sum;
        places[kept] = place;
        ++stamps[kept];
        ++stamps[gone];
        if (distance)
            distance->move();
        enterAllOf(kept);
    }
    return true;
}

/// @return false if it was stopped.
bool EdgeCollapse::tell(std::size_t before)
{
    if (options.stop.stop_requested())
        return false;
    if (options.progress)
        options.progress(static_cast<double>(before - triangles.size()) /
                         static_cast<double>(std::max<std::size_t>(before - std::min(before, options.triangles), 1)));
    return true;
}

std::vector<EdgeCollapse::Number> EdgeCollapse::verticesBeyond() const
{
    return distance ? distance->verticesBeyond(triangles, places, options.stop) : std::vector<Number>();
}

void EdgeCollapse::gatherQuadrics()
{
    for (Number t = 0; t < triangles.slots(); ++t) {
        const Triangle& triangle = triangles[t];
        const Vec3d across = normalOf(places[triangle[0]], places[triangle[1]], places[triangle[2]]);
        const double doubleArea = across.length();
        const Vec3d normal = across / doubleArea;
        Quadric plane;
        plane.addPlane(normal, places[triangle[0]], doubleArea / 2);
        for (const Number vertex : triangle)
            quadrics[vertex] = quadrics[vertex] + plane;
        for (Number i = 0; i < 3; ++i) {
            if (!triangles.isOnLine(t, i))
                continue;
            const Number from = triangle[i], to = triangle[LinkedTriangles::nextOf(i)];
            const Vec3d along = places[to] - places[from];
            const Vec3d outwards = along.cross(normal) / along.length();
            for (const Number vertex : {from, to})
                quadrics[vertex].addPlane(outwards, places[from], lineWeight * along.dot(along));
        }
    }
}

// Which edge is next

void EdgeCollapse::enterAll()
{
    for (Number v = 0; v < places.size(); ++v) {
        ++search;
        triangles.forCornersAt(v, [&](Number t, Number) {
            for (const Number other : triangles[t])
                if (other > v && std::exchange(marks[other], search) != search)
                    enter(v, other);
        });
    }
}

void EdgeCollapse::enterAllOf(Number vertex)
{
    ++search;
    triangles.forCornersAt(vertex, [&](Number t, Number) {
        for (const Number other : triangles[t])
            if (other != vertex && std::exchange(marks[other], search) != search)
                enter(vertex, other);
    });
}

/// Where nothing is lost by any of them, the shortest goes first.
void EdgeCollapse::enter(Number a, Number b)
{
    const bool isFirstKept = roles[a] != roles[b] ? roles[a] > roles[b] : a < b;
    const Number kept = isFirstKept ? a : b, gone = isFirstKept ? b : a;
    if (roles[gone] == Role::Corner || (roles[gone] == Role::OnLine && !triangles.isLine(a, b)))
        return;
    const Quadric sum = quadrics[kept] + quadrics[gone];
    const double square = (places[gone] - places[kept]).squaredLength();
    const double cost = std::max(sum.at(placeFor(kept, gone, sum)), 0.0) + 1e-9 * square * square;
    queue.push({kept, gone, stamps[kept] + stamps[gone]}, static_cast<float>(cost));
}

Vec3d EdgeCollapse::placeFor(Number kept, Number gone, const Quadric& sum) const
{
    if (roles[kept] != roles[gone])
        return places[kept];
    const Vec3d half = (places[kept] + places[gone]) / 2.0;
    const Vec3d least = sum.least(half);
    if ((least - half).squaredLength() <= (places[gone] - places[kept]).squaredLength())
        return least;
    Vec3d best = half;
    for (const Vec3d& other : {places[kept], places[gone]})
        if (sum.at(other) < sum.at(best))
            best = other;
    return best;
}

// Whether it may go

bool EdgeCollapse::mayGo(const EdgeQueue::Edge& edge, const Vec3d& place)
{
    const auto& [kept, gone, stamp] = edge;
    return contraction.isTopologyKept(kept, gone) && isShapeKept(gone, kept, place) &&
           (place == places[kept] || isShapeKept(kept, gone, place)) &&
           (!distance || distance->isKept(triangles, places, kept, gone, place));
}

bool EdgeCollapse::isShapeKept(Number vertex, Number other, const Vec3d& place) const
{
    bool isKept = true;
    triangles.forCornersAt(vertex, [&](Number t, Number i) {
        if (!isKept || triangles.has(t, other))
            return;
        const Vec3d &b = places[triangles[t][LinkedTriangles::nextOf(i)]],
                    &c = places[triangles[t][LinkedTriangles::previousOf(i)]];
        const Vec3d before = normalOf(places[vertex], b, c), after = normalOf(place, b, c);
        const double squareBefore = before.squaredLength(), square = after.squaredLength(), turn = before.dot(after);
        isKept = turn > 0 && turn * turn > flattest * flattest * squareBefore * square;
        if (!isKept)
            return;
        const double longest = longestSquare(place, b, c);
        isKept = square >= thinnest * thinnest * longest * longest ||
                 isBetterShaped(shapeOf(place, b, c), shapeOf(places[vertex], b, c));
    });
    return isKept;
}

// What comes of it

TriangleSurface EdgeCollapse::result() const
{
    TriangleSurface made;
    std::vector<Number> numbers(places.size(), LinkedTriangles::none);
    for (Number v = 0; v < places.size(); ++v) {
        if (triangles.sizeAt(v) == 0)
            continue;
        numbers[v] = static_cast<Number>(made.vertices.size());
        // To the last digit where it was, if it was not moved
        const bool isMoved = !(places[v] == Vec3d(surface.vertices[v]) - middle);
        made.vertices.push_back(isMoved ? rob::Posd(places[v] + middle) : surface.vertices[v]);
    }
    made.triangles.reserve(triangles.size());
    for (Number t = 0; t < triangles.slots(); ++t)
        if (!triangles.isGone(t))
            made.triangles.push_back({numbers[triangles[t][0]], numbers[triangles[t][1]], numbers[triangles[t][2]]});
    return made;
}

} // namespace vrk::cam
