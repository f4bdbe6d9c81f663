#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

namespace vrk::cam {

/// Edges in the order of what they cost, to a 512th of it; of equal ones the last that came goes first. Not installed.
///
/// A bucket for each cost: it takes and gives in a time that does not grow with what it holds.
class EdgeQueue {
public:
    struct Edge {
        std::uint32_t kept, gone; // vertices
        std::uint32_t stamp;      // of both together, when it was entered
    };

    EdgeQueue();

    void push(const Edge& edge, float cost);
    std::optional<Edge> pop();
    std::size_t size() const { return count; }

private:
    static constexpr std::uint32_t none = 0xFFFFFFFF;
    // Floats that are not negative have the order of their bits.
    static constexpr unsigned dropped = 14;
    static constexpr std::uint32_t buckets = (0x7F800000u >> dropped) + 1;

    struct Entry {
        Edge edge;
        std::uint32_t next;
    };

    std::vector<Entry> entries;
    std::uint32_t firstFree = none;
    std::size_t count = 0;
    std::vector<std::uint32_t> firsts; // of each bucket
    std::array<std::vector<std::uint64_t>, 3>
        used; // a bit for each bucket that holds one, for each word of these, and so on
};

} // namespace vrk::cam
