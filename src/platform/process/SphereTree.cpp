#include "platform/process/SphereTree.h"

#include <algorithm>
#include <numeric>

namespace vrk::process {

SphereTree::SphereTree(const std::vector<Sphere>& things) : order(things.size())
{
    if (things.empty())
        return;
    std::iota(order.begin(), order.end(), 0u);
    leaves = std::bit_ceil((things.size() + leafSize - 1) / leafSize);
    spheres.resize(2 * leaves);
    leafBegin.resize(leaves + 1, things.size());
    arrange(things, 1, 0, things.size());
}

/// Sorts a range of the order into the leaves below a node.
void SphereTree::arrange(const std::vector<Sphere>& things, std::size_t node, std::size_t begin, std::size_t end)
{
    rob::Vec3f low = things[order[begin]].middle, high = low;
    for (std::size_t i = begin; i < end; ++i) {
        const rob::Vec3f& p = things[order[i]].middle;
        low = {std::min(low.x, p.x), std::min(low.y, p.y), std::min(low.z, p.z)};
        high = {std::max(high.x, p.x), std::max(high.y, p.y), std::max(high.z, p.z)};
    }
    Sphere& around = spheres[node];
    around = {(low + high) / 2.0f, 0};
    for (std::size_t i = begin; i < end; ++i) {
        const Sphere& thing = things[order[i]];
        around.radius = std::max(around.radius, (thing.middle - around.middle).length() + thing.radius);
    }
    if (node >= leaves) {
        leafBegin[node - leaves] = begin;
        return;
    }
    const rob::Vec3f extent = high - low;
    const unsigned axis = extent.x >= extent.y && extent.x >= extent.z ? 0 : extent.y >= extent.z ? 1 : 2;
    const std::size_t middle = begin + (end - begin) / 2;
    const auto at = [this](std::size_t i) { return order.begin() + static_cast<std::ptrdiff_t>(i); };
    std::nth_element(at(begin), at(middle), at(end), [&things, axis](unsigned a, unsigned b) {
        const float ofA = things[a].middle[axis], ofB = things[b].middle[axis];
        return ofA < ofB || (ofA == ofB && a < b); // the same on every machine
    });
    arrange(things, 2 * node, begin, middle);
    arrange(things, 2 * node + 1, middle, end);
}

} // namespace vrk::process
