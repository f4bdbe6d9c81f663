#pragma once

#include "selection/geometry/Box.h"

#include <BVH_BinnedBuilder.hxx>
#include <BVH_Tree.hxx>

#include <memory>
#include <span>

namespace vrk::bench {

/// Boxes as Open CASCADE's builder takes them.
class BinnedBoxes final : public BVH_Set<float, 3> {
public:
    explicit BinnedBoxes(std::span<const visual::Box> from)
    {
        for (const visual::Box& box : from)
            boxes.emplace_back(BVH_Vec3f(box.min.x, box.min.y, box.min.z), BVH_Vec3f(box.max.x, box.max.y, box.max.z));
    }

    using BVH_Set<float, 3>::Box;
    int Size() const override { return static_cast<int>(boxes.size()); }
    BVH_Box<float, 3> Box(const int index) const override { return boxes[static_cast<std::size_t>(index)]; }
    float Center(const int index, const int axis) const override
    {
        return boxes[static_cast<std::size_t>(index)].Center(axis);
    }
    void Swap(const int a, const int b) override
    {
        std::swap(boxes[static_cast<std::size_t>(a)], boxes[static_cast<std::size_t>(b)]);
    }

private:
    std::vector<BVH_Box<float, 3>> boxes;
};

/// Builds a tree over the boxes with Open CASCADE's binned builder, which orders them anew. Returns its number of nodes.
inline int buildBinnedTree(BinnedBoxes& boxes)
{
    const BVH_BinnedBuilder<float, 3> builder;
    BVH_Tree<float, 3> tree;
    builder.Build(&boxes, &tree, boxes.BVH_Set<float, 3>::Box());
    return tree.Length();
}

} // namespace vrk::bench
