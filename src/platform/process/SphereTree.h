#pragma once

#include "scene/math/Vec.h"

#include <bit>
#include <cstddef>
#include <vector>

/// Not installed.
namespace vrk::process {

struct Sphere {
    rob::Vec3f middle;
    float radius = 0;
};

/// Spheres in spheres around things. It says in which order they lie, and their owner lays them so.
class SphereTree {
public:
    SphereTree() = default;
    /// @param things  finite.
    explicit SphereTree(const std::vector<Sphere>& things);

    /// The numbers of the things, in the order of the ranges below.
    const std::vector<unsigned>& getOrder() const { return order; }

    /// Hands over ranges (begin, end) of the order, ascending, that hold whatever lies in a sphere that is met. It allocates
    /// nothing.
    /// @param meets  asked with a sphere; what it answers may change on the way.
    template <typename Meets, typename Visit>
    void walk(const Meets& meets, const Visit& visit) const
    {
        if (order.empty())
            return;
        // Depth first, without a list of what is left.
        for (std::size_t node = 1;;) {
            const bool isMet = meets(spheres[node]);
            if (isMet && node < leaves) {
                node *= 2;
                continue;
            }
            if (isMet)
                visit(leafBegin[node - leaves], leafBegin[node - leaves + 1]);
            if (std::has_single_bit(node + 1)) // the last of its level: nothing is left
                return;
            // Up as long as it was the second child, and over to the sibling.
            node = (node >> std::countr_one(node)) + 1;
        }
    }

private:
    void arrange(const std::vector<Sphere>& things, std::size_t node, std::size_t begin, std::size_t end);

    static constexpr std::size_t leafSize = 16;

    std::vector<unsigned> order;
    std::vector<Sphere> spheres;        // a heap from 1: around all things below each node
    std::vector<std::size_t> leafBegin; // of each leaf in the order, and the end
    std::size_t leaves = 0;             // a power of two
};

} // namespace vrk::process
