#pragma once

#include "platform/common/Export.h"
#include "scene/math/Pose.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <stop_token>
#include <vector>

/// Not installed.
namespace vrk::measure {

/// Three corners. Two that are equal make a line of it, three a point.
using Triangle = std::array<rob::Posd, 3>;

/// The nearest places of two things.
struct NearestPlaces {
    double distance = 0;
    rob::Posd first, second;
};

/// Of two triangles; 0 where they have a point in common.
VRK_EXPORT NearestPlaces nearestOf(const Triangle& first, const Triangle& second);

/// Triangles in boxes in boxes, for what lies nearest to each other.
class VRK_EXPORT TriangleTree {
public:
    /// It is not whole where `stop` was asked meanwhile, and answers nothing then.
    explicit TriangleTree(std::vector<Triangle> triangles, const std::stop_token& stop = {});

    const std::vector<Triangle>& getTriangles() const { return triangles; }
    /// Whether a place lies in the box of all triangles.
    bool holds(const rob::Posd& place) const;
    /// Empty where one of the two is empty, or it was stopped.
    static std::optional<NearestPlaces> Nearest(const TriangleTree& first, const TriangleTree& second,
                                                const std::stop_token& stop = {});

private:
    struct Box {
        rob::Posd low, high;

        double squaredDistanceTo(const Box& other) const;
        double size() const { return (high - low).squaredLength(); }
    };
    struct Node {
        Box box;
        std::uint32_t begin = 0, end = 0; // of the triangles
        std::uint32_t left = 0;           // the other child is the next one; 0 for a leaf
    };

    Box boxOf(std::uint32_t begin, std::uint32_t end) const;
    bool split(std::size_t node);

    std::vector<Triangle> triangles;
    std::vector<Node> nodes;
};

/// Whether a place lies inside of what closed, outward-facing triangles enclose: by how often they wind about it.
VRK_EXPORT bool isInside(const std::vector<Triangle>& closed, const rob::Posd& place);

/// Of each set of triangles that hang together one corner; and whether all of them are closed: along each edge as many of
/// them run one way as the other. Equal corners are one.
struct Connected {
    std::vector<rob::Posd> places;
    bool areClosed = false;
};
VRK_EXPORT Connected connectedOf(const std::vector<Triangle>& triangles);

} // namespace vrk::measure
