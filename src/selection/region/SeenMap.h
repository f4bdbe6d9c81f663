#pragma once

#include "selection/region/ObjectInView.h"

#include <cstdint>
#include <unordered_map>
#include <vector>

namespace vrk::selection {

class RegionWork;
class SelectableObject;
class SensitiveTriangleSet;

/// What the rays through pixels of a region meet first, by the triangles of all bodies: they are drawn into a grid of
/// samples on the CPU, which is the same question asked the other way round and costs much less than a ray for each.
///
/// Rays go through the middles of pixels, every fourth one in both directions or, on request and in a small region, every
/// one. Drawing begins at the near plane, and both sides of a triangle count.
///
/// Thread: any; it is filled on all cores. The objects must stay.
class SeenMap {
public:
    /// @param bodies  what is drawn; the others hide nothing.
    SeenMap(const RegionQuery& query, const RegionView& view, const ScreenRegion& region,
            const std::vector<const SelectableObject*>& bodies, RegionWork& work);

    /// Whether a ray through the region meets this first, within the window of depth.
    bool isSeen(const SelectableObject& body) const;
    /// @param face  its place among the parts of the body.
    bool isSeen(const SelectableObject& body, std::size_t face) const;
    /// Whether bodies lie before a place, as the samples around it tell. A place on a body is not hidden by it: it must lie
    /// farther behind than two samples are apart.
    /// @param pixel  in the view. @param w  of `ObjectInView`.
    bool isHidden(const ScreenRegion::Place& pixel, double w, double depth) const;
    /// The same by the nearest sample alone, for what lies where a body ends.
    bool isHiddenAtNearest(const ScreenRegion::Place& pixel, double w, double depth) const;
    /// The distance of two samples in pixels.
    double getStep() const { return step; }

private:
    static constexpr std::uint32_t nothing = ~0u;

    /// A stretch of the triangles of one part.
    struct Item {
        const SelectableObject* body;
        const SensitiveTriangleSet* triangles;
        std::uint32_t part;
        std::size_t begin, end;
    };
    struct Sample {
        double depth;
        std::uint32_t part;
    };
    using Grid = std::vector<Sample>;
    class Painter;

    std::vector<Item> itemsOf(const std::vector<const SelectableObject*>& bodies);
    void paint(const RegionView& view, const std::vector<Item>& items, RegionWork& work);
    const Sample& sampleAt(double x, double y) const;
    void markSeen(const RegionQuery& query, const ScreenRegion& region);

    double left = 0, top = 0, step = 1; // pixels: of the first sample, and between two
    double slackPerStep = 0;            // in the world, for w = 1
    std::size_t columns = 0, rows = 0;
    Grid grid;
    std::unordered_map<const SelectableObject*, std::uint32_t> firstPart;
    std::vector<std::uint8_t> seenParts;
};

} // namespace vrk::selection
