#pragma once

#include "platform/common/Export.h"
#include "scene/math/Shapes.h"
#include "selection/geometry/BVHWalk.h"
#include "selection/geometry/Float4.h"
#include "selection/geometry/LargePages.h"
#include "selection/geometry/Ray.h"

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <vector>

namespace vrk::selection {

/// A hierarchy of triangles for rays that look for the nearest hit and for nothing else. It stands beside the hierarchy
/// that answers all other questions and is built from the triangles themselves.
///
/// Each node has four children, whose boxes are tested side by side (Wald, Benthin, Boulos, "Getting Rid of Packets",
/// 2008), and fills one line of the cache: the boxes are told in 255 steps from a corner of the node
/// (Ylitie, Karras, Laine, "Efficient Incoherent Ray Traversal on GPUs Through Compressed Wide BVHs", 2017). It is split by
/// the surface area heuristic over bins (Wald, "On fast Construction of SAH-based Bounding Volume Hierarchies", 2007).
///
/// Boxes are drawn tightly around the triangles and are then widened by more than the rounding of a hit, so that every
/// triangle that is hit is shown, whatever its size and its distance. Equal triangles give equal trees, on any number of
/// cores.
/// Thread: built by one, on all cores where there are many triangles; the walks only read.
class VRK_EXPORT NearestHitTree {
public:
    /// The box of a triangle, as the build takes it in.
    class VRK_EXPORT Reference {
    public:
        /// One that the build leaves out: also that of a triangle with a coordinate that is no number or infinite, since no
        /// ray meets such a triangle.
        Reference() : lower{1, 0, 0, 0}, upper{} {}
        /// @param number  what the walks are to call the triangle; below 536,870,912.
        Reference(const rob::TriangleTemplate<float>& triangle, unsigned number);

        bool isLeftOut() const { return lower[0] > upper[0]; }
        unsigned getNumber() const;

        Float4 lower; // the fourth number has the bits of the triangle's
        Float4 upper;
    };

    /// @param fill  writes the references `begin` to `end` to `out`; called for each of them once, from several threads at
    ///              once where there are many.
    /// @throws std::length_error "too many triangles in one set" from 536,870,912 on.
    void build(std::size_t count, const std::function<void(std::size_t begin, std::size_t end, Reference* out)>& fill);
    bool empty() const { return top == nothing; }

    /// Whether the walk shows all that this ray meets. It does for every ray that is about as long as a unit and starts at a
    /// place that can be reckoned with, if the triangles are at such places too.
    bool serves(const visual::Ray& ray) const;

    /// Hands over the triangles of each leaf that the ray enters within `limit`, near leaves first as far as the boxes
    /// tell: every triangle that the ray hits within it, and some others. The length of the ray is not looked at.
    ///
    /// @param visit  void(const unsigned* numbers, unsigned count), with a count of 1 to 4. Lowers `limit` as it finds hits.
    template <typename Visit>
    void walk(const visual::Ray& ray, const float& limit, Visit&& visit) const;

    static constexpr unsigned leafCapacity = 4;

private:
    friend class NearestHitBuilder;

    using Child = std::uint32_t; // the index of a node, or with the highest bit a leaf: two bits count - 1, then where

    static constexpr unsigned width = 4;
    static constexpr Child leafBit = 0x80000000u;
    static constexpr Child nothing = ~0u;
    static constexpr unsigned countShift = 29;
    /// From there on the walk would reckon with numbers that leave no room for their products.
    static constexpr float largeCoordinate = 1e15f;
    static constexpr Child firstMask = (Child{1} << countShift) - 1;

    /// A corner, steps from it, and the boxes of the children in these steps: by axis the lower planes of all four, then
    /// the upper ones. A child that is not there comes after all that are.
    struct alignas(64) Node {
        float corner[3];
        float step[3];
        std::uint8_t planes[6][width];
        Child children[width];
    };
    static_assert(sizeof(Node) == 64);

    /// What a ray brings to the test of four boxes.
    class FourBoxTest {
    public:
        explicit FourBoxTest(const visual::Ray& ray);
        /// Where the ray enters each of the boxes; infinite where it misses.
        Float4 entries(const Node& node) const;

    private:
        float nearOrigin[3]; // moved against the near planes, which is as if these were moved outwards
        float farOrigin[3];
        float reciprocal[3];
        unsigned nearRow[3];
        unsigned farRow[3];
    };

    struct Pending {
        Child child;
        float entry;
    };

    void prefetch(Child child) const
    {
        if ((child & leafBit) == 0)
            __builtin_prefetch(&nodes[child]);
        else
            __builtin_prefetch(&numbers[child & firstMask]);
    }

    std::vector<Node, LargePages<Node>> nodes;
    std::vector<unsigned, LargePages<unsigned>> numbers;
    float farthestCoordinate = 0;
    Child top = nothing;
};

template <typename Visit>
void NearestHitTree::walk(const visual::Ray& ray, const float& limit, Visit&& visit) const
{
    if (empty())
        return;
    const FourBoxTest test(ray);
    const Reach reach(ray);
    PendingStack<Pending> pending;
    Pending next{top, 0};
    for (;;) {
        // Asked once more of what was put aside: the limit may have come nearer meanwhile.
        if (next.entry <= reach(limit)) {
            if ((next.child & leafBit) != 0) {
                const Child leaf = next.child & ~leafBit;
                visit(&numbers[leaf & firstMask], (leaf >> countShift) + 1);
            } else {
                const Node& node = nodes[next.child];
                const Float4 entries = test.entries(node);
                // The nearest is gone on with; the others are put aside, the farthest first.
                std::array<Pending, width> entered;
                unsigned count = 0;
                for (unsigned bits = bitsOf(entries <= reach(limit)); bits != 0; bits &= bits - 1) {
                    const auto i = static_cast<unsigned>(std::countr_zero(bits));
                    if (node.children[i] == nothing) // the room around its flat box may have been entered
                        break;
                    unsigned at = count++;
                    for (; at > 0 && entered[at - 1].entry < entries[i]; --at)
                        entered[at] = entered[at - 1];
                    entered[at] = {node.children[i], entries[i]};
                    prefetch(node.children[i]);
                }
                if (count > 0) {
                    for (unsigned i = 0; i + 1 < count; ++i)
                        pending.push(entered[i]);
                    next = entered[count - 1];
                    continue;
                }
            }
        }
        if (pending.empty())
            return;
        next = pending.pop();
    }
}

inline Float4 NearestHitTree::FourBoxTest::entries(const Node& node) const
{
    constexpr float missed = std::numeric_limits<float>::infinity();
    Float4 from{};
    Float4 to = Float4{} + missed;
#pragma GCC unroll 3
    for (unsigned axis = 0; axis < 3; ++axis) {
        const float step = node.step[axis] * reciprocal[axis];
        const float nearCorner = (node.corner[axis] - nearOrigin[axis]) * reciprocal[axis];
        const float farCorner = (node.corner[axis] - farOrigin[axis]) * reciprocal[axis];
        const Float4 near = numbersOf(node.planes[nearRow[axis]]) * step + nearCorner;
        const Float4 far = numbersOf(node.planes[farRow[axis]]) * step + farCorner;
        from = largerOf(near, from);
        to = smallerOf(far, to);
    }
    return from <= to ? from : Float4{} + missed;
}

} // namespace vrk::selection
