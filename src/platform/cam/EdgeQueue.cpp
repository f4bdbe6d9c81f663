#include "platform/cam/EdgeQueue.h"

#include <algorithm>
#include <bit>

namespace vrk::cam {

EdgeQueue::EdgeQueue() : firsts(buckets, none)
{
    std::size_t bits = buckets;
    for (std::vector<std::uint64_t>& words : used) {
        bits = (bits + 63) / 64;
        words.assign(bits, 0);
    }
}

void EdgeQueue::push(const Edge& edge, float cost)
{
    // What is not a number is dearest.
    const std::uint32_t bucket =
        cost >= 0 ? std::min(std::bit_cast<std::uint32_t>(cost + 0.0f) >> dropped, buckets - 1) : buckets - 1;
    std::uint32_t at = firstFree;
    if (at == none) {
        at = static_cast<std::uint32_t>(entries.size());
        entries.push_back({edge, firsts[bucket]});
    } else {
        firstFree = entries[at].next;
        entries[at] = {edge, firsts[bucket]};
    }
    firsts[bucket] = at;
    ++count;
    std::size_t bit = bucket;
    for (std::vector<std::uint64_t>& words : used) {
        words[bit / 64] |= std::uint64_t{1} << bit % 64;
        bit /= 64;
    }
}

std::optional<EdgeQueue::Edge> EdgeQueue::pop()
{
    std::size_t bucket = 0;
    const auto& top = used.back();
    while (bucket < top.size() && top[bucket] == 0)
        ++bucket;
    if (bucket == top.size())
        return {};
    for (auto words = used.rbegin(); words != used.rend(); ++words)
        bucket = 64 * bucket + static_cast<std::size_t>(std::countr_zero((*words)[bucket]));
    const std::uint32_t at = firsts[bucket];
    firsts[bucket] = entries[at].next;
    entries[at].next = firstFree;
    firstFree = at;
    --count;
    bool isEmpty = firsts[bucket] == none;
    std::size_t bit = bucket;
    for (std::vector<std::uint64_t>& words : used) {
        if (!isEmpty)
            break;
        words[bit / 64] &= ~(std::uint64_t{1} << bit % 64);
        isEmpty = words[bit / 64] == 0;
        bit /= 64;
    }
    return entries[at].edge;
}

} // namespace vrk::cam
