#pragma once

#include "platform/common/Export.h"
#include "scene/math/Vec.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace vrk::selection {

/// The part of a view's pixels that lies within a polygon, which may be concave and cross itself: inside is where a line to
/// the right crosses its edges an odd number of times (M. Shimrat, "Algorithm 112: Position of point relative to polygon",
/// CACM 5, 1962). Of an upright rectangle the border is inside. What lies outside of the view is outside.
///
/// The polygon's edges lie in slabs by their height, so that a place is tested against those of its slab only, and a mask
/// of cells tells where no edge is near at all. Both only save work: each answer is that of the whole polygon.
///
/// Thread: any, as a value. Units: pixels.
class VRK_EXPORT ScreenRegion {
public:
    using Place = rob::Vec2Template<double>;

    struct Rectangle {
        double minX, minY, maxX, maxY;

        bool isEmpty() const { return !(minX <= maxX && minY <= maxY); }
        bool holds(const Place& p) const { return p.x >= minX && p.x <= maxX && p.y >= minY && p.y <= maxY; }
    };
    enum class Coverage { Outside, Inside, Partial };

    /// @throws std::invalid_argument "a region needs at least three corners", "a corner of the region is not finite".
    ScreenRegion(std::span<const Place> corners, double width, double height);

    /// What the region and the view have in common lies within; empty if that is nothing.
    const Rectangle& getBounds() const { return bounds; }
    /// Whether all places within the bounds are inside.
    bool isRectangle() const { return rectangular; }

    bool holds(const Place& p) const;
    /// Partial where it is not sure.
    Coverage classify(const Rectangle& rectangle) const;
    /// Of a convex polygon, which may be flat: a segment or a place.
    bool touches(std::span<const Place> convex) const;
    /// Whether nothing of it is outside.
    bool holdsAll(std::span<const Place> convex) const;

private:
    struct Edge {
        Place from, to;
    };
    enum class Cell : std::uint8_t { Outside, Inside, Mixed };

    std::size_t slabOf(double y) const;
    std::size_t columnOf(double x) const;
    std::size_t rowOf(double y) const;
    void makeSlabs(const std::vector<Edge>& edges);
    void makeMask(const std::vector<Edge>& edges);
    void markEdge(const Edge& edge, double doubt);
    bool crossesOddly(const Place& p) const;
    bool isMetByEdge(std::span<const Place> convex, const Rectangle& box) const;

    Rectangle bounds{};
    bool rectangular = false;

    std::vector<std::size_t> firstOfSlab; // in slabEdges; one more than there are slabs
    std::vector<Edge> slabEdges;
    double slabsPerPixel = 0;

    std::size_t columns = 0, rows = 0;
    double columnsPerPixel = 0, rowsPerPixel = 0;
    std::vector<Cell> cells;
    // How many cells above and to the left are not inside and not outside: with one more column and row.
    std::vector<std::uint32_t> notInside, notOutside;
};

} // namespace vrk::selection
