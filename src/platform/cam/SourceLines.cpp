#include "platform/cam/SourceLines.h"

#include <algorithm>

namespace vrk::cam {

using rob::Vec3d;

SourceLines::SourceLines(const LinkedTriangles& triangles, const std::vector<Role>& roles,
                         const std::vector<Vec3d>& places)
    : roles(roles), places(places), firsts(places.size() + 1, 0)
{
    for (Number t = 0; t < triangles.slots(); ++t)
        for (Number i = 0; i < 3; ++i) {
            if (!triangles.isOnLine(t, i))
                continue;
            const Number a = triangles[t][i], b = triangles[t][LinkedTriangles::nextOf(i)];
            segments.push_back({std::min(a, b), std::max(a, b)});
        }
    std::ranges::sort(segments);
    const auto doubled = std::ranges::unique(segments);
    segments.erase(doubled.begin(), doubled.end());
    for (const auto& ends : segments)
        for (const Number vertex : ends)
            ++firsts[vertex + 1];
    for (std::size_t v = 0; v + 1 < firsts.size(); ++v)
        firsts[v + 1] += firsts[v];
    at.resize(2 * segments.size());
    std::vector<Number> next(firsts.begin(), firsts.end());
    for (Number s = 0; s < segments.size(); ++s)
        for (const Number vertex : segments[s])
            at[next[vertex]++] = s;
}

SourceLines::Number SourceLines::segmentBetween(Number a, Number b) const
{
    for (Number i = firsts[a]; i < firsts[a + 1]; ++i)
        if (segments[at[i]][0] == b || segments[at[i]][1] == b)
            return at[i];
    return LinkedTriangles::none;
}

SourceLines::Number SourceLines::beyond(Number segment, Number end) const
{
    const Number vertex = segments[segment][end];
    if (roles[vertex] != Role::OnLine)
        return LinkedTriangles::none;
    return at[firsts[vertex]] == segment ? at[firsts[vertex] + 1] : at[firsts[vertex]];
}

SourceLines::Place SourceLines::on(Number segment, const Vec3d& place) const
{
    const Vec3d &a = places[segments[segment][0]], &b = places[segments[segment][1]];
    const Vec3d along = b - a;
    const double t = std::clamp((place - a).dot(along) / along.dot(along), 0.0, 1.0);
    return {segment, t == 1 ? b : a + along * t};
}

SourceLines::Place SourceLines::nearest(const Vec3d& place, Number segment) const
{
    const auto squareTo = [&place](const Vec3d& other) { return (other - place).dot(other - place); };
    Place best = on(segment, place);
    double least = squareTo(best.place);
    for (const Number way : {0u, 1u}) {
        Number from = segment, end = way;
        for (Number next = beyond(from, end); next != LinkedTriangles::none && next != segment;
             next = beyond(from, end)) {
            const Place other = on(next, place);
            const double square = squareTo(other.place);
            if (square > least) // an equal one is the vertex between both
                break;
            end = segments[next][0] == segments[from][end] ? 1 : 0;
            from = next;
            best = other;
            least = square;
        }
    }
    return best;
}

} // namespace vrk::cam
