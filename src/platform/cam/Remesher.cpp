#include "platform/cam/Remesher.h"

#include "platform/common/ParallelFor.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <stdexcept>

namespace vrk::cam {

using rob::Vec3d;

namespace {

constexpr double turnCosine = 0.3;    // by which a triangle may turn in one step
constexpr double flipCosine = 0.9;    // by which triangles may turn where their edge does
constexpr double uprightCosine = 0.5; // between a triangle and the surface at its vertices
constexpr double thinnest = 0.02;    // twice the area over the square of the longest edge, unless it was thinner before
constexpr unsigned stopEvery = 4096; // steps

} // namespace

Remesher::Remesher(const TriangleSurface& surface, const RemeshOptions& options)
    : surface(surface), options(options), longest(std::pow(4.0 / 3.0 * options.edgeLength, 2)),
      shortest(std::pow(4.0 / 5.0 * options.edgeLength, 2)), places(placesOf(surface)),
      triangles(surface.triangles, surface.vertices.size()), roles(findLines(triangles, places, options.sharp)),
      contraction(triangles, roles), lines(triangles, roles, places),
      patches(triangles, places, SourcePatches::Lines::Stop), hints(places.size(), none)
{
    wanted.reserve(places.size());
    for (Number v = 0; v < places.size(); ++v) {
        // On a border half as many meet as elsewhere.
        bool isOnBorder = false;
        triangles.forCornersAt(v, [&](Number t, Number i) {
            if (roles[v] != Role::OnLine || !triangles.isOnLine(t, i))
                return;
            Number sheets = 0;
            triangles.forTrianglesOn(v, triangles[t][LinkedTriangles::nextOf(i)], [&sheets](Number) { ++sheets; });
            isOnBorder = isOnBorder || sheets == 1;
        });
        wanted.push_back(isOnBorder ? 3 : 6);
    }
    ups.reserve(surface.triangles.size());
    for (Number t = 0; t < surface.triangles.size(); ++t) {
        const Vec3d normal = normalNow(t);
        ups.push_back(normal / normal.length());
        for (const Number v : surface.triangles[t])
            if (roles[v] == Role::Free)
                hints[v] = t;
    }
    for (Number v = 0; v < places.size(); ++v)
        if (roles[v] == Role::OnLine)
            hints[v] = lines.segmentAt(v);
}

std::optional<TriangleSurface> Remesher::run()
{
    // Each step tells whether it came to its end.
    constexpr unsigned stepsEach = 5;
    const double steps = stepsEach * options.iterations + 1;
    tell(0);
    for (unsigned i = 0; i < options.iterations; ++i) {
        unsigned done = stepsEach * i;
        const auto next = [&](bool isWhole) {
            if (isWhole)
                tell(++done / steps);
            return isWhole;
        };
        if (!next(splitLong()) || !next(collapseShort()))
            return {};
        triangles.compact();
        if (!next(flipEdges(FlipFor::Valence)) || !next(relax()) || !next(flipEdges(FlipFor::Angles)))
            return {};
    }
    tell(1);
    return result();
}

bool Remesher::isStopped()
{
    return sinceStop++ % stopEvery == 0 && options.stop.stop_requested();
}

void Remesher::tell(double fraction) const
{
    if (options.progress)
        options.progress(fraction);
}

/// Whether a triangle faces the way that the surface does at its vertices. On lines and corners that is not told.
bool Remesher::isUpright(const Triangle& triangle, const Vec3d& normal) const
{
    const double least = uprightCosine * uprightCosine * normal.squaredLength();
    return std::ranges::all_of(triangle, [&](Number v) {
        if (roles[v] != Role::Free)
            return true;
        const double along = normal.dot(ups[hints[v]]);
        return along > 0 && along * along >= least;
    });
}

// Long edges are halved

bool Remesher::splitLong()
{
    for (Number t = 0; t < triangles.slots(); ++t) {
        for (LongestEdge edge = longestOf(t); edge.square > longest; edge = longestOf(t)) {
            if (isStopped())
                return false;
            if (triangles.size() >= mostRemeshed)
                throw std::length_error(tooManyTriangles);
            const LongestEdge longestNearBy = longestFrom(edge);
            split(longestNearBy.triangle, longestNearBy.edge);
        }
    }
    return true;
}

Remesher::LongestEdge Remesher::longestOf(Number t) const
{
    LongestEdge found{t, 0, 0};
    for (Number i = 0; i < 3; ++i)
        if (const double square = squareBetween(triangles[t][i], triangles[t][LinkedTriangles::nextOf(i)]);
            square > found.square) {
            found.square = square;
            found.edge = i;
        }
    return found;
}

/// From triangle to triangle across their longest edges, as long as these grow (Rivara, "New longest-edge algorithms for the
/// refinement and/or improvement of unstructured triangulations", 1997). Where an edge is halved that is the longest one of
/// all its triangles, none gets ever thinner; two that halve each other's shorter edges in turn would never end.
Remesher::LongestEdge Remesher::longestFrom(LongestEdge edge) const
{
    for (bool isLongest = false; !isLongest;) {
        const Number a = triangles[edge.triangle][edge.edge],
                     b = triangles[edge.triangle][LinkedTriangles::nextOf(edge.edge)];
        isLongest = true;
        triangles.forTrianglesOn(a, b, [&](Number s) {
            if (const LongestEdge other = longestOf(s); other.square > edge.square) {
                edge = other;
                isLongest = false;
            }
        });
    }
    return edge;
}

void Remesher::split(Number t, Number edge)
{
    const Number a = triangles[t][edge], b = triangles[t][LinkedTriangles::nextOf(edge)];
    const bool isLine = triangles.isOnLine(t, edge);
    shared.clear();
    triangles.forTrianglesOn(a, b, [this](Number s) { shared.push_back(s); });
    const Number middle = triangles.addVertex();
    places.push_back((places[a] + places[b]) / 2.0);
    roles.push_back(isLine ? Role::OnLine : Role::Free);
    wanted.push_back(shared.size() == 1 ? 3 : 6);
    if (!isLine)
        hints.push_back(roles[a] == Role::Free ? hints[a] : roles[b] == Role::Free ? hints[b] : triangles.originOf(t));
    else if (roles[a] == Role::OnLine || roles[b] == Role::OnLine)
        hints.push_back(hints[roles[a] == Role::OnLine ? a : b]);
    else // two corners, which are where they were, and so is their number
        hints.push_back(lines.segmentBetween(a, b));
    for (const Number s : shared) {
        const Number i = triangles.edgeOf(s, a, b), next = LinkedTriangles::nextOf(i);
        const Number to = triangles[s][next], across = triangles[s][LinkedTriangles::nextOf(next)];
        const bool isNextOnLine = triangles.isOnLine(s, next);
        triangles.setCorner(s, next, middle);
        triangles.setOnLine(s, next, false);
        const Number added = triangles.add({middle, to, across}, s);
        triangles.setOnLine(added, 0, isLine);
        triangles.setOnLine(added, 1, isNextOnLine);
    }
}

// Short edges are drawn together

bool Remesher::collapseShort()
{
    for (Number t = 0; t < triangles.slots(); ++t)
        for (Number i = 0; i < 3 && !triangles.isGone(t); ++i) {
            const Number a = triangles[t][i], b = triangles[t][LinkedTriangles::nextOf(i)];
            // Of two triangles one tries.
            if ((a > b && !triangles.isOnLine(t, i)) || !(squareBetween(a, b) < shortest))
                continue;
            if (isStopped())
                return false;
            collapseEdge(a, b);
        }
    return true;
}

bool Remesher::collapseEdge(Number a, Number b)
{
    const bool isFirstKept = roles[a] != roles[b] ? roles[a] > roles[b] : a < b;
    const Number kept = isFirstKept ? a : b, gone = isFirstKept ? b : a;
    if (roles[gone] == Role::Corner || (roles[gone] == Role::OnLine && !isLineKept(kept, gone)) ||
        !contraction.isTopologyKept(kept, gone))
        return false;
    const auto tryAt = [&](const Vec3d& place) {
        if (!isShapeKept(gone, kept, place) || (place != places[kept] && !isShapeKept(kept, gone, place)))
            return false;
        collapse(kept, gone, place);
        return true;
    };
    if (roles[kept] != Role::Free)
        return tryAt(places[kept]);
    return tryAt((places[kept] + places[gone]) / 2.0) || tryAt(places[kept]) || tryAt(places[gone]);
}

/// visit(vertex at the other end): for each line, as often as it has triangles.
template <typename Visit>
void Remesher::forLinesAt(Number vertex, const Visit& visit) const
{
    triangles.forCornersAt(vertex, [&](Number t, Number i) {
        const Number previous = LinkedTriangles::previousOf(i);
        if (triangles.isOnLine(t, i))
            visit(triangles[t][LinkedTriangles::nextOf(i)]);
        if (triangles.isOnLine(t, previous))
            visit(triangles[t][previous]);
    });
}

/// Whether a line that loses a vertex bends no more than it may, and whether corners stay apart on it.
bool Remesher::isLineKept(Number kept, Number gone) const
{
    Number beyond = none;
    bool isLine = false;
    forLinesAt(gone, [&](Number end) {
        if (end == kept)
            isLine = true;
        else
            beyond = end;
    });
    if (!isLine || beyond == none || (roles[kept] == Role::Corner && roles[beyond] == Role::Corner))
        return false;
    const double sharpCosine = std::cos(options.sharp);
    const Vec3d along = places[beyond] - places[kept];
    const auto bends = [&](Number vertex) {
        bool isBent = false;
        if (roles[vertex] == Role::OnLine)
            forLinesAt(vertex, [&](Number end) {
                const Vec3d other = vertex == kept ? places[kept] - places[end] : places[end] - places[beyond];
                isBent = isBent || (end != gone && along.dot(other) < sharpCosine * along.length() * other.length());
            });
        return isBent;
    };
    return !bends(kept) && !bends(beyond);
}

bool Remesher::isShapeKept(Number vertex, Number other, const Vec3d& place) const
{
    bool isKept = true;
    triangles.forCornersAt(vertex, [&](Number t, Number i) {
        if (!isKept || triangles.has(t, other))
            return;
        const Vec3d &a = places[vertex], &b = places[triangles[t][LinkedTriangles::nextOf(i)]],
                    &c = places[triangles[t][LinkedTriangles::previousOf(i)]];
        const double squareB = (place - b).squaredLength(), squareC = (place - c).squaredLength();
        if (squareB > longest || squareC > longest) {
            isKept = false;
            return;
        }
        const Vec3d normal = normalOf(a, b, c), turned = normalOf(place, b, c);
        const double square = normal.squaredLength(), squareThen = turned.squaredLength();
        const double turn = normal.dot(turned);
        const double most = std::max({squareB, squareC, (c - b).squaredLength()});
        isKept =
            turn > 0 && turn * turn > turnCosine * turnCosine * square * squareThen &&
            isUpright(triangles[t], turned) &&
            (squareThen >= thinnest * thinnest * most * most || isBetterShaped(shapeOf(place, b, c), shapeOf(a, b, c)));
    });
    return isKept;
}

void Remesher::collapse(Number kept, Number gone, const Vec3d& place)
{
    if (place == places[gone] && roles[kept] == Role::Free)
        hints[kept] = hints[gone];
    places[kept] = place;
    contraction.contract(kept, gone);
}

// Edges are turned

bool Remesher::flipEdges(FlipFor purpose)
{
    for (Number t = 0; t < triangles.slots(); ++t)
        for (Number i = 0; i < 3 && !triangles.isGone(t); ++i) {
            if (isStopped())
                return false;
            if (triangles[t][i] < triangles[t][LinkedTriangles::nextOf(i)] && !triangles.isOnLine(t, i))
                flipEdge(t, i, purpose);
        }
    return true;
}

/// How many triangles there should be more at a vertex. A corner's number is its own.
int Remesher::missing(Number vertex) const
{
    return roles[vertex] == Role::Corner ? 0 : int{wanted[vertex]} - static_cast<int>(triangles.sizeAt(vertex));
}

bool Remesher::flipEdge(Number t, Number edge, FlipFor purpose)
{
    const Number next = LinkedTriangles::nextOf(edge);
    const Number a = triangles[t][edge], b = triangles[t][next], c = triangles[t][LinkedTriangles::nextOf(next)];
    Number s = none;
    triangles.forTrianglesOn(a, b, [&](Number each) { s = each == t ? s : each; });
    const Number atB = triangles.indexOf(s, b), atA = triangles.indexOf(s, a), atD = 3 - atA - atB,
                 d = triangles[s][atD];
    if (c == d || triangles.sizeAt(a) <= 3 || triangles.sizeAt(b) <= 3)
        return false;
    const auto square = [](int value) { return value * value; };
    if (purpose == FlipFor::Valence) {
        const int ma = missing(a), mb = missing(b), mc = missing(c), md = missing(d);
        const int now = square(ma) + square(mb) + square(mc) + square(md);
        if (square(ma + 1) + square(mb + 1) + square(mc - 1) + square(md - 1) >= now)
            return false;
    }
    const Vec3d &pa = places[a], &pb = places[b], &pc = places[c], &pd = places[d];
    if (purpose == FlipFor::Angles) {
        // Delaunay: the angles across an edge are not more than a half turn together.
        const Vec3d ca = pa - pc, cb = pb - pc, da = pa - pd, db = pb - pd;
        const double cosC = ca.dot(cb) / std::sqrt(ca.squaredLength() * cb.squaredLength());
        const double cosD = da.dot(db) / std::sqrt(da.squaredLength() * db.squaredLength());
        if (!(cosC + cosD < -1e-9))
            return false;
    }
    const Vec3d abc = normalOf(pa, pb, pc), bad = normalOf(pb, pa, pd), adc = normalOf(pa, pd, pc),
                bcd = normalOf(pb, pc, pd);
    const double lengthAbc = abc.length(), lengthBad = bad.length(), lengthAdc = adc.length(), lengthBcd = bcd.length();
    for (const auto& [turned, length] : {std::pair(&adc, lengthAdc), {&bcd, lengthBcd}})
        if (!(turned->dot(abc) > flipCosine * length * lengthAbc) ||
            !(turned->dot(bad) > flipCosine * length * lengthBad))
            return false;
    const double shape = std::min(shapeOf(pa, pd, pc), shapeOf(pb, pc, pd));
    if (shape < thinnest && !(shape > std::min(shapeOf(pa, pb, pc), shapeOf(pb, pa, pd))))
        return false;
    if (!isUpright({a, d, c}, adc) || !isUpright({b, c, d}, bcd) || triangles.isEdge(c, d))
        return false;
    const bool isBcOnLine = triangles.isOnLine(t, next), isAdOnLine = triangles.isOnLine(s, triangles.edgeOf(s, a, d));
    triangles.setCorner(t, next, d); // a d c
    triangles.setCorner(s, atA, c);  // b c d
    triangles.setOnLine(t, edge, isAdOnLine);
    triangles.setOnLine(t, next, false);
    triangles.setOnLine(s, triangles.edgeOf(s, b, c), isBcOnLine);
    triangles.setOnLine(s, triangles.edgeOf(s, c, d), false);
    return true;
}

// Vertices move along the surface

bool Remesher::relax()
{
    before = places;
    hintsBefore = hints;
    std::atomic<bool> isWhole = true;
    parallelFor(places.size(), [&](std::size_t begin, std::size_t end) {
        for (std::size_t from = begin; from < end && isWhole; from += stopEvery) {
            if (options.stop.stop_requested())
                isWhole = false;
            for (std::size_t v = from; v < std::min<std::size_t>(end, from + stopEvery); ++v) {
                const auto vertex = static_cast<Number>(v);
                if (triangles.sizeAt(vertex) == 0 || roles[v] == Role::Corner)
                    continue;
                if (roles[v] == Role::OnLine)
                    moveAlongLine(vertex);
                else
                    moveToMiddle(vertex);
            }
        }
    });
    if (!isWhole)
        return false;
    layBack();
    return true;
}

/// To the middle of the neighbours, as far as that is along the surface. It reads where others were before, so that it does
/// not matter who moves first.
void Remesher::moveToMiddle(Number vertex)
{
    Vec3d sum, up;
    triangles.forCornersAt(vertex, [&](Number t, Number i) {
        const Vec3d &next = before[triangles[t][LinkedTriangles::nextOf(i)]],
                    &previous = before[triangles[t][LinkedTriangles::previousOf(i)]];
        sum += next + previous;
        up += normalOf(before[vertex], next, previous);
    });
    const double length = up.squaredLength();
    const Vec3d off = sum / (2.0 * triangles.sizeAt(vertex)) - before[vertex];
    const Vec3d along = length > 0 ? off - up * (off.dot(up) / length) : off;
    const SourcePatches::Place laid = patches.nearest(before[vertex] + along, hintsBefore[vertex]);
    places[vertex] = laid.place;
    hints[vertex] = laid.triangle;
}

void Remesher::moveAlongLine(Number vertex)
{
    Vec3d sum;
    double count = 0; // as often as there are sheets, which is as often on either side
    forLinesAt(vertex, [&](Number other) {
        sum += before[other];
        ++count;
    });
    const SourceLines::Place laid = lines.nearest(sum / count, hintsBefore[vertex]);
    places[vertex] = laid.place;
    hints[vertex] = laid.segment;
}

/// Where a triangle would turn over, its vertices are laid on the surface where they were; where it still would, they stay
/// what they were, which may take others along.
void Remesher::layBack()
{
    givenUp.assign(places.size(), 0);
    for (bool isQuiet = false; !isQuiet;) {
        isQuiet = true;
        for (Number t = 0; t < triangles.slots(); ++t) {
            if (!wouldTurn(t))
                continue;
            for (const Number v : triangles[t]) {
                if (givenUp[v] == 2)
                    continue;
                isQuiet = false;
                hints[v] = hintsBefore[v];
                places[v] = before[v];
                if (++givenUp[v] == 1 && roles[v] == Role::Free)
                    places[v] = patches.nearest(before[v], hints[v]).place;
                else
                    givenUp[v] = 2;
            }
        }
    }
}

bool Remesher::wouldTurn(Number t) const
{
    const auto& [a, b, c] = triangles[t];
    if (givenUp[a] == 2 && givenUp[b] == 2 && givenUp[c] == 2)
        return false;
    const Vec3d was = normalOf(before[a], before[b], before[c]), is = normalNow(t);
    const double area = was.length(), areaNow = is.length();
    if (!(was.dot(is) > turnCosine * area * areaNow))
        return true;
    const double shape = shapeOf(places[a], places[b], places[c]);
    return shape < thinnest && !isBetterShaped(shape, shapeOf(before[a], before[b], before[c]));
}

TriangleSurface Remesher::result() const
{
    TriangleSurface made;
    made.triangles.reserve(triangles.size());
    std::vector<Number> numbers(places.size(), none);
    for (Number t = 0; t < triangles.slots(); ++t) {
        if (triangles.isGone(t))
            continue;
        Triangle triangle{};
        for (unsigned i = 0; i < 3; ++i) {
            Number& number = numbers[triangles[t][i]];
            if (number == none) {
                number = static_cast<Number>(made.vertices.size());
                made.vertices.emplace_back(places[triangles[t][i]]);
            }
            triangle[i] = number;
        }
        made.triangles.push_back(triangle);
    }
    return made;
}

} // namespace vrk::cam
