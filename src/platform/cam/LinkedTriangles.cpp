#include "platform/cam/LinkedTriangles.h"

#include <algorithm>
#include <numeric>

namespace vrk::cam {

LinkedTriangles::LinkedTriangles(std::vector<Triangle> all, std::size_t vertexCount)
    : triangles(std::move(all)), lines(triangles.size(), 0), origins(triangles.size()),
      nexts(3 * triangles.size(), none), firsts(vertexCount, none), counts(vertexCount, 0), count(triangles.size())
{
    std::iota(origins.begin(), origins.end(), 0u);
    // From the last to the first, so that each list rises.
    for (Number t = slots(); t-- > 0;)
        for (Number i = 3; i-- > 0;)
            link(3 * t + i, triangles[t][i]);
}

bool LinkedTriangles::isEdge(Number a, Number b) const
{
    bool found = false;
    forTrianglesOn(a, b, [&found](Number) { found = true; });
    return found;
}

bool LinkedTriangles::isLine(Number a, Number b) const
{
    bool found = false;
    forTrianglesOn(a, b, [&](Number t) { found = found || isOnLine(t, edgeOf(t, a, b)); });
    return found;
}

LinkedTriangles::Number LinkedTriangles::addVertex()
{
    firsts.push_back(none);
    counts.push_back(0);
    return static_cast<Number>(firsts.size() - 1);
}

LinkedTriangles::Number LinkedTriangles::add(const Triangle& triangle, Number like)
{
    const Number t = slots();
    triangles.push_back(triangle);
    lines.push_back(0);
    origins.push_back(origins[like]);
    nexts.resize(nexts.size() + 3, none);
    for (Number i = 0; i < 3; ++i)
        link(3 * t + i, triangle[i]);
    ++count;
    return t;
}

void LinkedTriangles::remove(Number t)
{
    for (Number i = 0; i < 3; ++i)
        unlink(3 * t + i, triangles[t][i]);
    triangles[t].fill(none);
    --count;
}

void LinkedTriangles::setCorner(Number t, Number i, Number vertex)
{
    unlink(3 * t + i, triangles[t][i]);
    triangles[t][i] = vertex;
    link(3 * t + i, vertex);
}

void LinkedTriangles::compact()
{
    Number to = 0;
    for (Number t = 0; t < slots(); ++t) {
        if (isGone(t))
            continue;
        triangles[to] = triangles[t];
        lines[to] = lines[t];
        origins[to++] = origins[t];
    }
    triangles.resize(to);
    lines.resize(to);
    origins.resize(to);
    nexts.resize(3 * std::size_t{to});
    std::ranges::fill(firsts, none);
    std::ranges::fill(counts, 0u);
    for (Number t = to; t-- > 0;)
        for (Number i = 3; i-- > 0;)
            link(3 * t + i, triangles[t][i]);
}

void LinkedTriangles::link(Number corner, Number vertex)
{
    nexts[corner] = firsts[vertex];
    firsts[vertex] = corner;
    ++counts[vertex];
}

void LinkedTriangles::unlink(Number corner, Number vertex)
{
    Number* at = &firsts[vertex];
    while (*at != corner)
        at = &nexts[*at];
    *at = nexts[corner];
    nexts[corner] = none;
    --counts[vertex];
}

} // namespace vrk::cam
