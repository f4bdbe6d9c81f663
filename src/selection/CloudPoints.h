#pragma once

#include "platform/common/Export.h"
#include "scene/math/Vec.h"
#include "selection/geometry/Box.h"
#include "selection/geometry/LargePages.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace vrk::selection {

/// The points of a cloud, copied and set side by side by where they lie: groups of up to a thousand, and a tree over them,
/// each of whose nodes is a stretch of the points.
///
/// A box is halved across its longest side until it holds a group; of two halves the lower one comes first, and within a
/// group the points keep their order. Points that are not finite are left out: they are not drawn.
///
/// Takes 16 bytes for each point, and some tens for each group. Made once and never changed, so whoever holds it may read
/// it on any thread, whatever becomes of the cloud.
/// Units: the cloud's own coordinates.
class VRK_EXPORT CloudPoints {
public:
    /// A box with the points in it. The nodes come before their children, the lower child first.
    struct Node {
        rob::PosTemplate<float> min, max; // drawn tightly around the points
        std::uint32_t begin, end;         // of the points
        std::uint32_t next;               // the node after all that lies below; the next one, where this is a group

        bool isGroup(std::size_t own) const { return next == own + 1; }
    };

    /// On all cores. @param bounds  what is halved first: the points lie in it, but need not.
    CloudPoints(std::span<const rob::PosTemplate<float>> cloud, const Box& bounds);

    /// Empty without points.
    std::span<const Node> getNodes() const { return nodes; }
    std::span<const rob::PosTemplate<float>> getPlaces() const { return places; }
    /// Of each place the number of the point in the cloud.
    std::span<const unsigned> getNumbers() const { return numbers; }
    /// How many points the cloud has, with those that are left out.
    std::size_t getCloudSize() const { return cloudSize; }

private:
    struct Corners {
        rob::PosTemplate<float> min, max;
    };
    struct Scratch;

    void takeIn(std::span<const rob::PosTemplate<float>> cloud);
    /// Appends the nodes of a stretch and of all below.
    void split(std::size_t begin, std::size_t end, const Corners& box, Scratch& scratch, std::vector<Node>& into,
               unsigned threads);
    std::size_t partition(std::size_t begin, std::size_t end, unsigned axis, float border, Scratch& scratch);
    Node group(std::size_t begin, std::size_t end, std::size_t own) const;

    template <typename T>
    using Large = std::vector<T, LargePages<T>>;

    Large<rob::PosTemplate<float>> places;
    Large<unsigned> numbers;
    std::vector<Node> nodes;
    std::size_t cloudSize;
};

} // namespace vrk::selection
