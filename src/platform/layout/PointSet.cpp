#include "platform/layout/PointSet.h"

#include <algorithm>
#include <bit>

namespace vrk::layout {
namespace {

constexpr std::uint64_t all = ~std::uint64_t{0};

std::uint64_t bitOf(std::uint32_t number)
{
    return std::uint64_t{1} << (number % 64);
}

} // namespace

PointSet::PointSet(std::span<const std::uint32_t> numbers)
{
    if (numbers.empty())
        return;
    words.resize(std::ranges::max(numbers) / 64 + 1);
    for (const std::uint32_t number : numbers)
        words[number / 64] |= bitOf(number);
}

PointSet PointSet::AllBut(std::span<const std::uint32_t> numbers, std::size_t count)
{
    PointSet set;
    if (count == 0)
        return set;
    set.addRange(0, static_cast<std::uint32_t>(count - 1));
    for (const std::uint32_t number : numbers)
        if (number < count)
            set.words[number / 64] &= ~bitOf(number);
    while (!set.words.empty() && set.words.back() == 0)
        set.words.pop_back();
    return set;
}

void PointSet::addRange(std::uint32_t first, std::uint32_t last)
{
    const std::size_t from = first / 64, to = last / 64;
    words.resize(std::max(words.size(), to + 1));
    const std::uint64_t head = all << (first % 64), tail = all >> (63 - last % 64);
    if (from == to) {
        words[from] |= head & tail;
        return;
    }
    words[from] |= head;
    std::fill(words.begin() + static_cast<std::ptrdiff_t>(from + 1), words.begin() + static_cast<std::ptrdiff_t>(to),
              all);
    words[to] |= tail;
}

std::size_t PointSet::size() const
{
    std::size_t count = 0;
    for (const std::uint64_t each : words)
        count += static_cast<std::size_t>(std::popcount(each));
    return count;
}

std::vector<std::uint32_t> PointSet::numbers() const
{
    std::vector<std::uint32_t> list;
    list.reserve(size());
    for (std::size_t i = 0; i < words.size(); ++i)
        for (std::uint64_t left = words[i]; left != 0; left &= left - 1)
            list.push_back(static_cast<std::uint32_t>(64 * i + static_cast<unsigned>(std::countr_zero(left))));
    return list;
}

PointSet& PointSet::operator|=(const PointSet& more)
{
    words.resize(std::max(words.size(), more.words.size()));
    for (std::size_t i = 0; i < more.words.size(); ++i)
        words[i] |= more.words[i];
    return *this;
}

} // namespace vrk::layout
