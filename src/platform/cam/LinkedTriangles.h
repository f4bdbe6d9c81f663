#pragma once

#include "platform/cam/TriangleSurface.h"

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace vrk::cam {

/// Triangles that know of each vertex which of them meet there, and of each edge whether it is on a line that stays. Any
/// number of triangles may share an edge. Not installed.
///
/// A corner is 3 t + i for vertex i of triangle t. The corners of a vertex are a list through an array, so that a change
/// takes no memory; edge i of a triangle goes from its corner i to the next.
class LinkedTriangles {
public:
    using Number = std::uint32_t;
    using Triangle = TriangleSurface::Triangle;
    static constexpr Number none = 0xFFFFFFFF;

    LinkedTriangles(std::vector<Triangle> all, std::size_t vertexCount);

    const Triangle& operator[](Number t) const { return triangles[t]; }
    bool isGone(Number t) const { return triangles[t][0] == none; }
    /// Those that are gone too.
    Number slots() const { return static_cast<Number>(triangles.size()); }
    /// Those that there are.
    std::size_t size() const { return count; }
    /// How many meet at a vertex.
    Number sizeAt(Number vertex) const { return counts[vertex]; }

    bool has(Number t, Number vertex) const
    {
        return triangles[t][0] == vertex || triangles[t][1] == vertex || triangles[t][2] == vertex;
    }
    Number indexOf(Number t, Number vertex) const
    {
        return triangles[t][0] == vertex ? 0 : triangles[t][1] == vertex ? 1 : triangles[t][2] == vertex ? 2 : none;
    }
    /// The number of the edge between two vertices, which the triangle has.
    Number edgeOf(Number t, Number a, Number b) const
    {
        const Number i = indexOf(t, a);
        return triangles[t][nextOf(i)] == b ? i : previousOf(i);
    }
    static constexpr Number nextOf(Number i) { return i == 2 ? 0 : i + 1; }
    static constexpr Number previousOf(Number i) { return i == 0 ? 2 : i - 1; }

    bool isOnLine(Number t, Number edge) const { return (lines[t] >> edge & 1) != 0; }
    void setOnLine(Number t, Number edge, bool isOn)
    {
        lines[t] = static_cast<std::uint8_t>((lines[t] & ~(1u << edge)) | static_cast<unsigned>(isOn) << edge);
    }

    /// The triangle that it is a part of, among those there were at first.
    Number originOf(Number t) const { return origins[t]; }

    /// visit(triangle, index of the vertex in it); it may change the triangle that it is given and no other.
    template <typename Visit>
    void forCornersAt(Number vertex, const Visit& visit) const
    {
        for (Number corner = firsts[vertex]; corner != none;) {
            const Number following = nexts[corner];
            visit(corner / 3, corner % 3);
            corner = following;
        }
    }
    /// visit(triangle): those with an edge between two vertices.
    template <typename Visit>
    void forTrianglesOn(Number a, Number b, const Visit& visit) const
    {
        if (counts[b] < counts[a])
            std::swap(a, b);
        forCornersAt(a, [&](Number t, Number) {
            if (has(t, b))
                visit(t);
        });
    }
    bool isEdge(Number a, Number b) const;
    bool isLine(Number a, Number b) const;

    /// Of no triangle yet.
    Number addVertex();
    /// A part of what another one is a part of.
    Number add(const Triangle& triangle, Number like);
    void remove(Number t);
    void setCorner(Number t, Number i, Number vertex);
    /// Forgets those that are gone; the others move up and keep their order.
    void compact();

private:
    void link(Number corner, Number vertex);
    void unlink(Number corner, Number vertex);

    std::vector<Triangle> triangles;
    std::vector<std::uint8_t> lines; // a bit for each edge
    std::vector<Number> origins;
    std::vector<Number> nexts;  // of each corner
    std::vector<Number> firsts; // corners, of each vertex
    std::vector<Number> counts; // of each vertex
    std::size_t count;
};

} // namespace vrk::cam
