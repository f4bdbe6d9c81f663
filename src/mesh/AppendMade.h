#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <vector>

namespace vrk::visual {

/// Appends make(0), make(1), ... make(count - 1) to a vector of plain values that has reserved room for them. It is quicker
/// than `resize`, which first writes zeros, and than `push_back`, which tests for room each time.
template <typename T, typename Make>
void appendMade(std::vector<T>& values, std::size_t count, Make make)
{
    std::array<T, 512> block; // stays in the cache
    for (std::size_t begin = 0; begin < count; begin += block.size()) {
        const std::size_t size = std::min(block.size(), count - begin);
        for (std::size_t i = 0; i < size; ++i)
            block[i] = make(begin + i);
        values.insert(values.end(), block.begin(), block.begin() + static_cast<std::ptrdiff_t>(size));
    }
}

} // namespace vrk::visual
