#include "platform/cam/SurfaceLines.h"

#include "platform/cam/TriangleShape.h"

#include <algorithm>
#include <cmath>

namespace vrk::cam {

using rob::Vec3d;

namespace {

using Number = LinkedTriangles::Number;

class LineFinder {
public:
    LineFinder(LinkedTriangles& triangles, const std::vector<Vec3d>& places, double sharp)
        : triangles(triangles), places(places), sharpCosine(std::cos(sharp))
    {
    }

    std::vector<Role> run()
    {
        for (Number t = 0; t < triangles.slots(); ++t)
            for (Number i = 0; i < 3; ++i)
                if (!isSmooth(t, i))
                    triangles.setOnLine(t, i, true);
        std::vector<Role> roles(places.size(), Role::Free);
        for (Number v = 0; v < places.size(); ++v)
            roles[v] = roleOf(v);
        return roles;
    }

private:
    bool differs(const Vec3d& a, const Vec3d& b) const
    {
        return a.dot(b) < sharpCosine * std::sqrt(a.dot(a) * b.dot(b));
    }

    Vec3d normal(Number t) const
    {
        return normalOf(places[triangles[t][0]], places[triangles[t][1]], places[triangles[t][2]]);
    }

    bool isSmooth(Number t, Number i) const
    {
        const Number from = triangles[t][i], to = triangles[t][LinkedTriangles::nextOf(i)];
        Number others = 0, other = t;
        triangles.forTrianglesOn(from, to, [&](Number s) {
            if (s == t)
                return;
            ++others;
            other = s;
        });
        return others == 1 && triangles[other][triangles.edgeOf(other, from, to)] == to &&
               !differs(normal(t), normal(other));
    }

    Role roleOf(Number v) const
    {
        std::array<Number, 2> ends{};
        Number count = 0;
        const auto take = [&](Number end) {
            for (Number k = 0; k < std::min<Number>(count, 2); ++k)
                if (ends[k] == end)
                    return;
            if (count < 2)
                ends[count] = end;
            ++count;
        };
        triangles.forCornersAt(v, [&](Number t, Number i) {
            const Number previous = LinkedTriangles::previousOf(i);
            if (triangles.isOnLine(t, i))
                take(triangles[t][LinkedTriangles::nextOf(i)]);
            if (triangles.isOnLine(t, previous))
                take(triangles[t][previous]);
        });
        if (count == 1 || count > 2)
            return Role::Corner;
        if (count == 2 && differs(places[v] - places[ends[0]], places[ends[1]] - places[v]))
            return Role::Corner;
        // Where sheets meet along a line they may be any number; where they meet in a point alone it must stay.
        if (count == 0 || (sheetsOn(v, ends[0]) <= 2 && sheetsOn(v, ends[1]) <= 2))
            if (!isOneFan(v))
                return Role::Corner;
        return count == 0 ? Role::Free : Role::OnLine;
    }

    Number sheetsOn(Number a, Number b) const
    {
        Number sheets = 0;
        triangles.forTrianglesOn(a, b, [&sheets](Number) { ++sheets; });
        return sheets;
    }

    /// Whether all triangles at a vertex are met by going about it from one to the next.
    bool isOneFan(Number v) const
    {
        Number start = LinkedTriangles::none, index = 0;
        triangles.forCornersAt(v, [&](Number t, Number i) {
            start = t;
            index = i;
        });
        if (start == LinkedTriangles::none)
            return true;
        Number met = 1;
        for (const Number first : {LinkedTriangles::nextOf(index), LinkedTriangles::previousOf(index)}) {
            Number t = start, across = triangles[t][first];
            while (true) {
                Number other = LinkedTriangles::none;
                triangles.forTrianglesOn(v, across, [&](Number s) { other = s == t ? other : s; });
                if (other == LinkedTriangles::none)
                    break;
                if (other == start || met > triangles.sizeAt(v))
                    return met == triangles.sizeAt(v);
                ++met;
                const Number i = triangles.indexOf(other, v);
                const Number next = triangles[other][LinkedTriangles::nextOf(i)];
                across = next == across ? triangles[other][LinkedTriangles::previousOf(i)] : next;
                t = other;
            }
        }
        return met == triangles.sizeAt(v);
    }

    LinkedTriangles& triangles;
    const std::vector<Vec3d>& places;
    double sharpCosine;
};

} // namespace

std::vector<Role> findLines(LinkedTriangles& triangles, const std::vector<Vec3d>& places, double sharp)
{
    return LineFinder(triangles, places, sharp).run();
}

} // namespace vrk::cam
