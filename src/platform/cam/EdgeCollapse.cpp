#include "platform/cam/EdgeCollapse.h"

#include "platform/cam/TriangleShape.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace vrk::cam {

using rob::Vec3d;

namespace {

constexpr double lineWeight = 10;    // of the planes that hold lines, beside those of triangles
constexpr double memory = 0.5;       // what the planes of before weigh, beside those that there are
constexpr double flattest = 0.2;     // cosine by which the normal of a triangle may turn
constexpr double thinnest = 0.01;    // twice the area over the square of the longest edge, unless it was thinner before
constexpr double spare = 0.96;       // of the tolerance, at each step
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
                           const std::vector<Number>& held, const EdgeCollapse* before)
    : surface(surface), options(options), before(before), places(centred(surface, middle)),
      triangles(surface.triangles, surface.vertices.size()), roles(findLines(triangles, places, options.sharp)),
      contraction(triangles, roles), quadrics(surface.vertices.size()), stamps(surface.vertices.size(), 0),
      marks(surface.vertices.size(), 0), changes(surface.vertices.size(), 0), refusals(3 * surface.triangles.size(), 0)
{
    for (const Number vertex : held)
        roles[vertex] = Role::Corner;
    if (!std::isfinite(options.tolerance))
        return;
    source = before ? before->source
                    : std::make_shared<KeptDistance::Source>(triangles, surfaceOf(places, surface.triangles));
    distance = std::make_unique<KeptDistance>(source, options.tolerance, spare * options.tolerance);
}

bool EdgeCollapse::run()
{
    gatherQuadrics();
    if (before && !repeat())
        return false;
    // What may not go may do so when its surroundings have changed.
    for (std::size_t last = 2 * triangles.size();
         triangles.size() > options.triangles &&
         static_cast<double>(triangles.size()) <= worthwhile * static_cast<double>(last);) {
        last = triangles.size();
        enterAll();
        if (!drawTogether())
            return false;
    }
    return true;
}

bool EdgeCollapse::repeat()
{
    // Vertices about which something is not as it was at this step; the others need not be looked at again.
    std::vector<bool> isOther(places.size(), false);
    const auto spread = [&](Number vertex) {
        isOther[vertex] = true;
        triangles.forCornersAt(vertex, [&](Number t, Number) {
            for (const Number corner : triangles[t])
                isOther[corner] = true;
        });
    };
    for (std::size_t i = 0; i < before->steps.size(); ++i) {
        if (i % stopEvery == 0 && options.stop.stop_requested())
            return false;
        const auto& [kept, gone, place] = before->steps[i];
        const bool isNew = isOther[kept] || isOther[gone];
        const bool isAllowed =
            roles[kept] == before->roles[kept] && roles[gone] == before->roles[gone] && triangles.isEdge(kept, gone) &&
            (roles[gone] == Role::Free || triangles.isLine(kept, gone)) &&
            (isNew ? mayGo(kept, gone, place)
                   : contraction.isTopologyKept(kept, gone) && distance->look(triangles, places, kept, gone, place));
        if (isAllowed) {
            drawTogether(kept, gone, place);
            isOther[kept] = isNew;
        } else {
            spread(kept);
            spread(gone);
        }
    }
    // Nothing could go at the end where all is as it was then.
    std::ranges::fill(refusals, ++time);
    for (Number v = 0; v < places.size(); ++v)
        changes[v] = isAsBefore(v) ? 0 : time;
    return true;
}

bool EdgeCollapse::isAsBefore(Number vertex) const
{
    bool isSame = triangles.sizeAt(vertex) == before->triangles.sizeAt(vertex);
    triangles.forCornersAt(vertex, [&](Number t, Number) {
        isSame = isSame && triangles[t] == before->triangles[t] &&
                 std::ranges::all_of(triangles[t], [this](Number v) { return places[v] == before->places[v]; });
    });
    return isSame;
}

bool EdgeCollapse::drawTogether()
{
    std::size_t looked = 0;
    while (triangles.size() > options.triangles) {
        if (looked++ % stopEvery == 0 && !tell(looked))
            return false;
        const std::optional<EdgeQueue::Edge> edge = queue.pop();
        if (!edge)
            break;
        const auto& [kept, gone, stamp] = *edge;
        if (stamps[kept] + stamps[gone] != stamp)
            continue;
        const Vec3d place = placeFor(kept, gone, quadrics[kept] + quadrics[gone]);
        if (mayGo(kept, gone, place)) {
            drawTogether(kept, gone, place);
            enterAllOf(kept);
        } else {
            refuse(kept, gone);
        }
    }
    return true;
}

void EdgeCollapse::drawTogether(Number kept, Number gone, const Vec3d& place)
{
    contraction.contract(kept, gone);
    places[kept] = place;
    quadrics[kept] = (quadrics[kept] + quadrics[gone]) * memory + quadricAt(kept) * (1 - memory);
    ++stamps[kept];
    ++stamps[gone];
    ++time;
    triangles.forCornersAt(kept, [this](Number t, Number) {
        for (const Number vertex : triangles[t])
            changes[vertex] = time;
    });
    if (!distance)
        return;
    distance->move();
    steps.push_back({kept, gone, place});
}

void EdgeCollapse::refuse(Number kept, Number gone)
{
    triangles.forTrianglesOn(kept, gone,
                             [&](Number t) { refusals[3 * t + triangles.edgeOf(t, kept, gone)] = time + 1; });
}

/// @param looked  edges, at which this round has looked.
/// @return false if it was stopped.
bool EdgeCollapse::tell(std::size_t looked)
{
    if (options.stop.stop_requested())
        return false;
    const auto share = [](std::size_t done, std::size_t left) {
        return static_cast<double>(done) / static_cast<double>(std::max<std::size_t>(done + left, 1));
    };
    // Within a tolerance nobody knows how many triangles will go.
    if (options.progress)
        options.progress(
            distance ? share(looked, queue.size())
                     : share(surface.triangles.size() - triangles.size(), triangles.size() - options.triangles));
    return true;
}

std::vector<EdgeCollapse::Number> EdgeCollapse::verticesBeyond() const
{
    return distance ? distance->verticesBeyond(triangles, places, options.stop) : std::vector<Number>();
}

void EdgeCollapse::gatherQuadrics()
{
    for (Number v = 0; v < places.size(); ++v)
        quadrics[v] = quadricAt(v);
}

/// Of the triangles and lines that are at a vertex now.
Quadric EdgeCollapse::quadricAt(Number vertex) const
{
    Quadric sum;
    triangles.forCornersAt(vertex, [&](Number t, Number i) {
        const Triangle& triangle = triangles[t];
        const Vec3d across = normalOf(places[triangle[0]], places[triangle[1]], places[triangle[2]]);
        const double doubleArea = across.length();
        const Vec3d normal = across / doubleArea;
        sum.addPlane(normal, places[vertex], doubleArea / 2);
        for (const Number edge : {i, LinkedTriangles::previousOf(i)}) {
            if (!triangles.isOnLine(t, edge))
                continue;
            const Vec3d along = places[triangle[LinkedTriangles::nextOf(edge)]] - places[triangle[edge]];
            sum.addPlane(along.cross(normal) / along.length(), places[vertex], lineWeight * along.dot(along));
        }
    });
    return sum;
}

// Which edge is next

void EdgeCollapse::enterAll()
{
    for (Number v = 0; v < places.size(); ++v) {
        ++search;
        triangles.forCornersAt(v, [&](Number t, Number i) {
            for (const Number edge : {i, LinkedTriangles::previousOf(i)}) {
                const Number other = triangles[t][edge == i ? LinkedTriangles::nextOf(i) : edge];
                if (other > v && std::exchange(marks[other], search) != search &&
                    std::max(changes[v], changes[other]) >= refusals[3 * t + edge])
                    enter(v, other);
            }
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

bool EdgeCollapse::mayGo(Number kept, Number gone, const Vec3d& place)
{
    // Within a tolerance it is mostly the distance that is not held.
    return (!distance || distance->isKept(triangles, places, kept, gone, place)) &&
           contraction.isTopologyKept(kept, gone) && isShapeKept(gone, kept, place) &&
           (place == places[kept] || isShapeKept(kept, gone, place));
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
