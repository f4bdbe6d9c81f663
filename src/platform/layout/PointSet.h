#pragma once

#include "platform/common/Export.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace vrk::layout {

/// Some points of a cloud, by their numbers: a bit for each number up to the largest one in the set.
///
/// A value; any thread may read it.
class VRK_EXPORT PointSet {
public:
    PointSet() = default;
    /// In any order, and more than once.
    explicit PointSet(std::span<const std::uint32_t> numbers);
    /// Of the first `count` points all but these.
    static PointSet AllBut(std::span<const std::uint32_t> numbers, std::size_t count);

    /// @param last  is in the set as well; not less than `first`.
    void addRange(std::uint32_t first, std::uint32_t last);

    bool contains(std::size_t number) const { return (word(number / 64) >> (number % 64) & 1) != 0; }
    bool empty() const { return words.empty(); }
    /// How many there are; they are counted.
    std::size_t size() const;
    /// Ascending.
    std::vector<std::uint32_t> numbers() const;
    /// For passing over many at once: the numbers from 64 * `index` on, the lowest bit for the first.
    std::uint64_t word(std::size_t index) const { return index < words.size() ? words[index] : 0; }
    std::size_t wordCount() const { return words.size(); }

    PointSet& operator|=(const PointSet& more);
    bool operator==(const PointSet&) const = default;

private:
    std::vector<std::uint64_t> words; // the last one is not 0
};

} // namespace vrk::layout
