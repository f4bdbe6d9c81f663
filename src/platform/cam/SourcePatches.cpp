#include "platform/cam/SourcePatches.h"

#include "platform/cam/NearestOn.h"

#include <algorithm>
#include <limits>

namespace vrk::cam {

using rob::Vec3d;

SourcePatches::SourcePatches(const LinkedTriangles& triangles, const std::vector<Vec3d>& places, Lines lines)
    : patches(triangles.slots())
{
    for (Number t = 0; t < triangles.slots(); ++t) {
        for (Number i = 0; i < 3 && !triangles.isGone(t); ++i) {
            const Number from = triangles[t][i], to = triangles[t][LinkedTriangles::nextOf(i)];
            patches[t].corners[i] = places[from];
            Number others = 0, other = LinkedTriangles::none;
            if (lines == Lines::Cross || !triangles.isOnLine(t, i))
                triangles.forTrianglesOn(from, to, [&](Number s) {
                    others += s == t ? 0 : 1;
                    other = s == t ? other : s;
                });
            // Going about a corner goes on in the same sense only between triangles that run against each other.
            const bool isAgainst = others == 1 && triangles[other][triangles.edgeOf(other, from, to)] == to;
            patches[t].across[i] = isAgainst ? other : LinkedTriangles::none;
        }
    }
}

/// visit(triangle): the others that are met by going about a corner, one way and then, up to a line, the other.
template <typename Visit>
void SourcePatches::forPatchesAt(Number triangle, Number corner, const Visit& visit) const
{
    const Vec3d at = patches[triangle].corners[corner];
    for (const bool isForth : {true, false}) {
        Number t = triangle, i = corner;
        while (true) {
            t = patches[t].across[isForth ? LinkedTriangles::previousOf(i) : i];
            if (t == triangle)
                return;
            if (t == LinkedTriangles::none)
                break;
            i = patches[t].corners[0] == at ? 0 : patches[t].corners[1] == at ? 1 : 2;
            visit(t);
        }
    }
}

SourcePatches::Place SourcePatches::nearest(const Vec3d& place, Number from) const
{
    const auto on = [&](Number t) {
        const auto& [a, b, c] = patches[t].corners;
        return nearestOn(a, b, c, place);
    };
    Number at = from;
    NearestOnTriangle best = on(at);
    double least = (best.place - place).squaredLength();
    for (Number before = LinkedTriangles::none; at != before;) {
        before = at;
        const NearestOnTriangle here = best;
        const auto look = [&](Number t) {
            const NearestOnTriangle other = on(t);
            const double square = (other.place - place).squaredLength();
            if (!(square < least))
                return;
            best = other;
            least = square;
            at = t;
        };
        if (here.corner != NearestOnTriangle::none)
            forPatchesAt(before, here.corner, look);
        else if (here.edge != NearestOnTriangle::none && patches[before].across[here.edge] != LinkedTriangles::none)
            look(patches[before].across[here.edge]);
    }
    return {at, best.place};
}

double SourcePatches::distance(Number triangle, const Vec3d& place) const
{
    const auto& [a, b, c] = patches[triangle].corners;
    return (nearestOn(a, b, c, place).place - place).length();
}

double SourcePatches::leaves(Number triangle, const Vec3d& place, const Vec3d& along) const
{
    const auto& corners = patches[triangle].corners;
    const Vec3d normal = (corners[1] - corners[0]).cross(corners[2] - corners[0]);
    double least = std::numeric_limits<double>::infinity();
    for (Number i = 0; i < 3; ++i) {
        const Vec3d outwards = (corners[LinkedTriangles::nextOf(i)] - corners[i]).cross(normal);
        const double speed = outwards.dot(along);
        if (speed > 0)
            least = std::min(least, std::max(outwards.dot(corners[i] - place), 0.0) / speed);
    }
    return least;
}

} // namespace vrk::cam
