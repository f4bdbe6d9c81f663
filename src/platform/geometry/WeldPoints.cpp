#include "platform/geometry/WeldPoints.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>

namespace vrk::geometry {
namespace {

constexpr unsigned none = WeldedPoints::none;

std::uint64_t mixed(std::uint64_t a, std::uint64_t b, std::uint64_t c)
{
    std::uint64_t hash = (a | b << 32) * 0x9E3779B97F4A7C15ull;
    hash = (hash ^ (hash >> 32) ^ c) * 0xD6E8FEB86659FD93ull;
    return hash ^ (hash >> 29);
}

std::uint64_t hashOf(const rob::Posf& p)
{
    const auto bits = [](float c) { return std::uint64_t{std::bit_cast<std::uint32_t>(c == 0 ? 0.0f : c)}; };
    return mixed(bits(p.x), bits(p.y), bits(p.z));
}

/// The numbers of points by what these are equal to: one flat table, of which at least half is empty.
class PlaceTable {
public:
    explicit PlaceTable(std::vector<rob::Posf>& points) : points(points), slots(1024, none) {}

    unsigned numberOf(const rob::Posf& p)
    {
        unsigned* slot = slotOf(p);
        if (*slot != none)
            return *slot;
        if (2 * (points.size() + 1) > slots.size()) {
            grow();
            slot = slotOf(p);
        }
        *slot = static_cast<unsigned>(points.size());
        points.push_back(rob::Posf(p));
        return *slot;
    }

private:
    unsigned* slotOf(const rob::Posf& p)
    {
        const std::size_t last = slots.size() - 1;
        std::size_t at = hashOf(p) & last;
        while (slots[at] != none && !(points[slots[at]] == p))
            at = (at + 1) & last;
        return &slots[at];
    }
    void grow()
    {
        slots.assign(2 * slots.size(), none);
        for (unsigned i = 0; i < points.size(); ++i)
            *slotOf(points[i]) = i;
    }

    std::vector<rob::Posf>& points;
    std::vector<unsigned> slots; // as many as a power of two
};

/// Finds points that lie closely together: by the cell in which each lies, and by those beside it where it lies at their border.
class NearTable {
public:
    NearTable(const std::vector<rob::Posf>& points, float tolerance)
        : points(points), tolerance(tolerance), heads(std::bit_ceil(points.size()), none), next(points.size(), none)
    {
    }

    /// The number of one that was entered and lies within the tolerance; where there is none, enters this one.
    unsigned numberOf(unsigned point)
    {
        const rob::Posf& p = points[point];
        std::array<Range, 3> ranges;
        for (unsigned axis = 0; axis < 3; ++axis)
            ranges[axis] = {cellOf(p[axis] - tolerance), cellOf(p[axis] + tolerance)};
        for (std::int64_t x = ranges[0].first; x <= ranges[0].last; ++x)
            for (std::int64_t y = ranges[1].first; y <= ranges[1].last; ++y)
                for (std::int64_t z = ranges[2].first; z <= ranges[2].last; ++z)
                    if (const unsigned near = findNear(p, headOf(x, y, z)); near != none)
                        return near;
        unsigned& head = headOf(cellOf(p.x), cellOf(p.y), cellOf(p.z));
        next[point] = head;
        head = point;
        return point;
    }

private:
    struct Range {
        std::int64_t first, last;
    };

    static constexpr double cellSize = 64;  // tolerances: few points lie at a border then
    static constexpr double farthest = 1e9; // cells: a point that lies beyond is one of the outermost
    // One stray point far out makes all others lie in a few cells, of which not each can be compared with each.
    static constexpr int mostCompared = 64;

    std::int64_t cellOf(float c) const
    {
        return static_cast<std::int64_t>(
            std::floor(std::clamp(static_cast<double>(c) / (cellSize * tolerance), -farthest, farthest)));
    }
    unsigned& headOf(std::int64_t x, std::int64_t y, std::int64_t z)
    {
        const auto bits = [](std::int64_t c) { return std::uint64_t{static_cast<std::uint32_t>(c)}; };
        return heads[mixed(bits(x), bits(y), bits(z)) & (heads.size() - 1)];
    }
    unsigned findNear(const rob::Posf& p, unsigned from) const
    {
        int compared = 0;
        for (unsigned at = from; at != none && compared < mostCompared; at = next[at], ++compared)
            if ((points[at] - p).squaredLength() <= tolerance * tolerance)
                return at;
        return none;
    }

    const std::vector<rob::Posf>& points;
    float tolerance;
    std::vector<unsigned> heads; // by the hash of a cell, the point that was entered last
    std::vector<unsigned> next;  // of those entered before
};

} // namespace

WeldedPoints weldPoints(std::span<const rob::Posf> given, float tolerance)
{
    WeldedPoints welded;
    welded.numbers.resize(given.size(), none);
    PlaceTable places(welded.points);
    for (std::size_t i = 0; i < given.size(); ++i)
        if (given[i].isFinite())
            welded.numbers[i] = places.numberOf(given[i]);
    if (!(tolerance > 0))
        return welded;

    // These are far fewer than were given.
    NearTable near(welded.points, tolerance);
    std::vector<unsigned> kept(welded.points.size());
    for (unsigned i = 0; i < kept.size(); ++i)
        kept[i] = near.numberOf(i);
    std::vector<unsigned> renumbered(kept.size());
    unsigned count = 0;
    for (unsigned i = 0; i < kept.size(); ++i) {
        renumbered[i] = kept[i] == i ? count : renumbered[kept[i]];
        if (kept[i] == i)
            welded.points[count++] = rob::Posf(welded.points[i]);
    }
    welded.points.resize(count);
    for (unsigned& number : welded.numbers)
        if (number != none)
            number = renumbered[number];
    return welded;
}

} // namespace vrk::geometry
