#pragma once

#include "platform/common/Export.h"
#include "selection/geometry/BVHWalk.h"
#include "selection/geometry/LargePages.h"

#include <array>
#include <cstdint>
#include <vector>

namespace vrk::selection {

/// A hierarchy of triangles arranged for rays that look for the nearest hit: four boxes side by side in each node, and the
/// triangles as numbers in a row. It takes a fraction of the memory accesses of a walk from node to node.
///
/// The boxes leave a unit of room around the triangles, so that flat ones have an inside. A hit lies in the triangle but
/// for the rounding of numbers as large as the coordinates, and where these are not too large the walks pass over what
/// the ray enters in that room alone.
///
/// It is made from a finished hierarchy and stands beside it; it knows neither its nodes nor its primitives afterwards.
/// Thread: as the hierarchy.
class VRK_EXPORT WideTree {
public:
    /// @param numberOf  unsigned(const BVHPrimitive*): what the walks are to call a triangle.
    template <typename NumberOf>
    void build(const BVHNode* root, const NumberOf& numberOf)
    {
        clear();
        if (root != nullptr)
            takeTop(*root, add(root, numberOf));
        nodes.shrink_to_fit();
        numbers.shrink_to_fit();
    }
    bool empty() const { return top == nothing; }

    /// Hands over the triangles of each leaf that the ray enters within `limit`, near leaves first as far as the boxes
    /// tell. It is shown every triangle that `walkRayWithin` shows and that the ray meets, and some others: the triangles'
    /// own boxes are not tested.
    ///
    /// @param visit  void(const unsigned* numbers, unsigned count), with a count of 1 to 4. Lowers `limit` as it finds hits.
    template <typename Visit>
    void walk(const visual::Ray& ray, const float& limit, Visit&& visit) const;

private:
    using Float4 = float __attribute__((vector_size(16)));
    using Int4 = std::int32_t __attribute__((vector_size(16)));
    using Child = std::uint32_t; // the index of a node, or with the highest bit a leaf: two bits count - 1, then where

    static constexpr Child leafBit = 0x80000000u;
    static constexpr Child nothing = ~0u;
    static constexpr unsigned countShift = 29;
    static constexpr unsigned width = 4;

    /// The corners by axis: three rows of lower ones, three of upper ones.
    struct Node {
        Float4 corners[6];
        std::array<Child, width> children;
    };

    /// What a ray brings to the test of four boxes. It multiplies by reciprocals and makes up for their rounding, so that
    /// without an inset it enters each box that `RayBoxTest` enters.
    class FourBoxTest {
    public:
        /// @param inset  how far inside of the boxes the ray must come.
        FourBoxTest(const visual::Ray& ray, float inset);
        /// Where the ray enters each of the boxes; not less than infinite where it misses.
        Float4 entries(const Node& node) const;

    private:
        Float4 origin[3];
        Float4 nearOrigin[3]; // moved against the near planes, which is as if these were moved inwards
        Float4 farOrigin[3];
        Float4 reciprocal[3];
        unsigned nearRow[3];
        unsigned farRow[3];
        Float4 length;
        bool isParallel[3];
        bool anyParallel = false;
    };

    struct Pending {
        Child child;
        float entry;
    };

    void clear();
    void takeTop(const BVHNode& root, Child child);
    float insetFor(const visual::Ray& ray) const;
    /// The children of `node`, or theirs: up to four, the largest opened first.
    static unsigned openChildren(const BVHInnerNode& node, std::array<const BVHNode*, width>& opened);
    /// Two lines of memory: a node, or the numbers of a leaf and more.
    void prefetch(Child child) const
    {
        if ((child & leafBit) == 0) {
            __builtin_prefetch(&nodes[child]);
            __builtin_prefetch(&nodes[child].children);
        } else {
            __builtin_prefetch(&numbers[child & ((1u << countShift) - 1)]);
        }
    }
    Child addNode(const std::array<const BVHNode*, width>& boxes, unsigned count);
    Child addLeaf(unsigned count) const;

    template <typename NumberOf>
    Child add(const BVHNode* node, const NumberOf& numberOf)
    {
        if (node->kind == BVHNode::Leaf) {
            const auto* leaf = static_cast<const BVHLeaf*>(node);
            const Child child = addLeaf(leaf->count);
            for (unsigned i = 0; i < leaf->count; ++i)
                numbers.push_back(numberOf(leaf->primitives[i]));
            return child;
        }
        std::array<const BVHNode*, width> opened{};
        const unsigned count = openChildren(*static_cast<const BVHInnerNode*>(node), opened);
        const Child index = addNode(opened, count);
        for (unsigned i = 0; i < count; ++i) {
            const Child child = add(opened[i], numberOf);
            nodes[index].children[i] = child;
        }
        return index;
    }

    std::vector<Node, LargePages<Node>> nodes;
    std::vector<unsigned, LargePages<unsigned>> numbers;
    float farthestCoordinate = 0;
    Child top = nothing;
};

template <typename Visit>
void WideTree::walk(const visual::Ray& ray, const float& limit, Visit&& visit) const
{
    if (empty())
        return;
    const FourBoxTest test(ray, insetFor(ray));
    const Reach reach(ray);
    PendingStack<Pending> pending;
    Pending next{top, 0};
    for (;;) {
        // Asked once more of what was put aside: the limit may have come nearer meanwhile.
        if (next.entry <= reach(limit)) {
            if ((next.child & leafBit) != 0) {
                const Child leaf = next.child & ~leafBit;
                visit(&numbers[leaf & ((1u << countShift) - 1)], (leaf >> countShift) + 1);
            } else {
                const Node& node = nodes[next.child];
                const Float4 entries = test.entries(node);
                const float farthest = reach(limit);
                // The nearest is gone on with; the others are put aside, the farthest first.
                std::array<Pending, width> entered;
                unsigned count = 0;
                for (unsigned i = 0; i < width; ++i) {
                    // A ray that is no number enters even what is not there.
                    if (!(entries[i] <= farthest) || node.children[i] == nothing)
                        continue;
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

inline WideTree::FourBoxTest::FourBoxTest(const visual::Ray& ray, float inset)
{
    const rob::Vec3Template<float> from(ray.origin), d(ray.direction);
    length = Float4{} + ray.length;
    for (unsigned axis = 0; axis < 3; ++axis) {
        isParallel[axis] = std::abs(d[axis]) < Math::epsilon;
        anyParallel = anyParallel || isParallel[axis];
        origin[axis] = Float4{} + from[axis];
        nearOrigin[axis] = Float4{} + (d[axis] > 0 ? from[axis] - inset : from[axis] + inset);
        farOrigin[axis] = Float4{} + (d[axis] > 0 ? from[axis] + inset : from[axis] - inset);
        reciprocal[axis] = Float4{} + (isParallel[axis] ? 0.0f : 1.0f / d[axis]);
        nearRow[axis] = d[axis] > 0 ? axis : axis + 3;
        farRow[axis] = d[axis] > 0 ? axis + 3 : axis;
    }
}

inline WideTree::Float4 WideTree::FourBoxTest::entries(const Node& node) const
{
    constexpr float missed = std::numeric_limits<float>::infinity();
    constexpr float madeUp = 1.000001f; // several times what the reciprocal and the product may lose
    Float4 from{};
    Float4 to = length;
    for (unsigned axis = 0; axis < 3; ++axis) {
        if (anyParallel && isParallel[axis]) {
            const Int4 isInside = (origin[axis] >= node.corners[axis]) & (origin[axis] <= node.corners[axis + 3]);
            to = isInside ? to : Float4{} - 1.0f;
            continue;
        }
        const Float4 near = (node.corners[nearRow[axis]] - nearOrigin[axis]) * reciprocal[axis];
        const Float4 far = (node.corners[farRow[axis]] - farOrigin[axis]) * reciprocal[axis];
        from = near > from ? near : from;
        to = far < to ? far : to;
    }
    return from <= to * madeUp ? from : Float4{} + missed;
}

} // namespace vrk::selection
