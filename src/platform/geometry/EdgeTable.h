#pragma once

#include "platform/geometry/WeldPoints.h"

#include <array>
#include <cstdint>
#include <span>
#include <vector>

/// Not installed.
namespace vrk::geometry {

/// Triangles of welded points.
struct WeldedTriangles {
    std::vector<std::array<unsigned, 3>> corners; ///< three different ones, of points that are there
    std::vector<rob::Vec3f> normals;              ///< (0, 0, 0) where the triangle has none that can be relied on
    double area = 0;                              ///< of all
};

/// @param leastHeight  of a triangle that has a normal, over its longest side.
WeldedTriangles weldedTriangles(const WeldedPoints& points, std::span<const unsigned> indices, double leastHeight);

/// The edges of triangles, with the triangles at each: found by their ends, and walked through in the order of these.
class EdgeTable {
public:
    /// An edge as one triangle has it.
    struct Side {
        unsigned end; ///< of both ends the greater number
        std::uint32_t tagged;

        unsigned triangle() const { return tagged >> 1; }
        bool isForward() const
        {
            return (tagged & 1) != 0;
        } ///< whether the triangle runs from the lesser end to the greater
    };

    EdgeTable(const WeldedTriangles& triangles, std::size_t points);

    /// Calls `call(lesser end, sides)` for each edge.
    template <typename Call>
    void forEach(const Call& call) const
    {
        for (unsigned start = 0; start + 1 < starts.size(); ++start)
            for (std::size_t i = starts[start]; i < starts[start + 1];) {
                const std::span<const Side> found = sidesFrom(start, i);
                call(start, found);
                i += found.size();
            }
    }
    /// In any order of the ends; none where there is no such edge.
    std::span<const Side> find(unsigned one, unsigned other) const;

private:
    std::span<const Side> sidesFrom(unsigned start, std::size_t first) const
    {
        std::size_t end = first;
        while (end < starts[start + 1] && sides[end].end == sides[first].end)
            ++end;
        return {sides.data() + first, end - first};
    }

    std::vector<std::uint32_t> starts; // of the sides from each point; one more at the end
    std::vector<Side> sides;           // from one point sorted by their other end
};

/// Gives triangles without a normal that of the neighbour on their longest side, turned as they are, where that one has one.
void takeNormalsOfNeighbours(WeldedTriangles& triangles, const EdgeTable& edges, const std::vector<rob::Posf>& points);

} // namespace vrk::geometry
