#pragma once

#include "platform/geometry/MeshEdges.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <random>
#include <set>
#include <vector>

namespace vrk::geometry::test {

/// Triangles that share their vertices.
struct Surface {
    std::vector<rob::Posf> points;
    std::vector<unsigned> indices;

    void addQuad(unsigned a, unsigned b, unsigned c, unsigned d) // round the outside, counter-clockwise
    {
        indices.insert(indices.end(), {a, b, c, a, c, d});
    }
};

inline MeshEdges edgesOf(const Surface& surface)
{
    return edgesOfMesh(surface.points, surface.indices);
}

/// The same with three vertices for each triangle, as STL files have them.
inline Surface soupOf(const Surface& surface)
{
    Surface soup;
    for (const unsigned index : surface.indices) {
        soup.indices.push_back(static_cast<unsigned>(soup.points.size()));
        soup.points.push_back(rob::Posf(surface.points[index]));
    }
    return soup;
}

inline Surface cube(float side = 1)
{
    Surface made;
    for (const float z : {0.0f, side})
        for (const auto& [x, y] : {std::pair{0.0f, 0.0f}, {side, 0.0f}, {side, side}, {0.0f, side}})
            made.points.emplace_back(x, y, z);
    made.addQuad(3, 2, 1, 0);
    made.addQuad(4, 5, 6, 7);
    for (unsigned i = 0; i < 4; ++i)
        made.addQuad(i, (i + 1) % 4, 4 + (i + 1) % 4, 4 + i);
    return made;
}

/// Of radius 10 and height 20, closed by fans.
inline Surface cylinder(unsigned slices)
{
    Surface made;
    for (const float z : {0.0f, 20.0f})
        for (unsigned i = 0; i < slices; ++i) {
            const double angle = 2 * M_PI * i / slices;
            made.points.emplace_back(static_cast<float>(10 * std::cos(angle)), static_cast<float>(10 * std::sin(angle)),
                                     z);
        }
    made.points.emplace_back(0.0f, 0.0f, 0.0f);
    made.points.emplace_back(0.0f, 0.0f, 20.0f);
    for (unsigned i = 0; i < slices; ++i) {
        const unsigned next = (i + 1) % slices;
        made.addQuad(i, next, slices + next, slices + i);
        made.indices.insert(made.indices.end(), {next, i, 2 * slices, slices + i, slices + next, 2 * slices + 1});
    }
    return made;
}

/// A square of `cells` by `cells` squares of side 1, two triangles each, whose points lie `heightOf(i, j)` above it.
template <typename HeightOf>
Surface field(unsigned cells, const HeightOf& heightOf)
{
    Surface made;
    for (unsigned j = 0; j <= cells; ++j)
        for (unsigned i = 0; i <= cells; ++i)
            made.points.emplace_back(static_cast<float>(i), static_cast<float>(j), static_cast<float>(heightOf(i, j)));
    for (unsigned j = 0; j < cells; ++j)
        for (unsigned i = 0; i < cells; ++i) {
            const unsigned a = j * (cells + 1) + i;
            made.addQuad(a, a + 1, a + cells + 2, a + cells + 1);
        }
    return made;
}

inline Surface roughField(unsigned cells, double deviation, unsigned seed)
{
    std::mt19937 random(seed);
    std::normal_distribution<double> height(0, deviation);
    return field(cells, [&](unsigned, unsigned) { return height(random); });
}

using Place = std::array<float, 3>;
using Segment = std::array<Place, 2>;

/// Each with its lesser end first; one that is there twice shows.
inline std::multiset<Segment> segmentsOf(const MeshEdges& edges)
{
    std::multiset<Segment> segments;
    for (std::size_t i = 0; i + 1 < edges.points.size(); i += 2) {
        const rob::Posf &a = edges.points[i], &b = edges.points[i + 1];
        Segment segment{Place{a.x, a.y, a.z}, Place{b.x, b.y, b.z}};
        std::ranges::sort(segment);
        segments.insert(segment);
    }
    return segments;
}

inline double lengthOf(const MeshEdges& edges)
{
    double length = 0;
    for (std::size_t i = 0; i + 1 < edges.points.size(); i += 2)
        length += (edges.points[i + 1] - edges.points[i]).length();
    return length;
}

} // namespace vrk::geometry::test
