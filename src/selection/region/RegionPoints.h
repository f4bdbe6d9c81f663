#pragma once

#include "platform/layout/PointSet.h"
#include "selection/region/ObjectInView.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace vrk::selection {

class CloudPoints;
class RegionWork;
class SeenMap;

/// The points of a cloud that a region holds: their numbers, ascending, and whether they are all that are drawn. Groups that
/// lie wholly inside or outside are not looked into. The work is shared out to all cores.
class RegionPoints {
public:
    /// @param hidden  points that are not drawn; null for none.
    /// @param seen    what stands before points; null where those behind it count too.
    RegionPoints(const CloudPoints& cloud, const layout::PointSet* hidden, const RegionTest& test, const SeenMap* seen,
                 RegionWork& work);

    bool isWhole() const { return whole; }
    std::vector<std::uint32_t> takeNumbers() { return std::move(numbers); }

    /// The steps of work that the points of a cloud are.
    static std::uint64_t StepsOf(const CloudPoints& cloud);

private:
    struct Stretch {
        std::uint32_t begin, end; // of the points
        bool isWhole;
    };
    using Bits = std::vector<std::uint64_t>; // one for each number of the cloud

    std::vector<Stretch> stretchesInside() const;
    void mark(const Stretch& stretch, Bits& bits) const;
    bool isHidden(std::uint32_t at) const;
    void listMarked(const Bits& bits);

    bool areAllThatAreDrawn() const;

    const CloudPoints& cloud;
    const layout::PointSet* hidden;
    const RegionTest& test;
    const SeenMap* seen;
    bool whole = false;
    std::vector<std::uint32_t> numbers;
};

} // namespace vrk::selection
