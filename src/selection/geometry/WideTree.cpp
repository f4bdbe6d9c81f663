#include "selection/geometry/WideTree.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace vrk::selection {

void WideTree::clear()
{
    nodes.clear();
    numbers.clear();
    top = nothing;
    farthestCoordinate = 0;
}

void WideTree::takeTop(const BVHNode& root, Child child)
{
    top = child;
    for (const rob::PosTemplate<float>& corner : {root.box.min, root.box.max})
        farthestCoordinate = std::max({farthestCoordinate, std::abs(corner.x), std::abs(corner.y), std::abs(corner.z)});
}

/// A hit misses its triangle by less than 1e-6 of the largest number that takes part: a corner as the origin of the ray sees
/// it. What is left of the unit is several times that.
float WideTree::insetFor(const visual::Ray& ray) const
{
    constexpr float inset = 0.75f;
    constexpr float largeCoordinate = 50000.0f;
    const float largest = std::max({std::abs(ray.origin.x), std::abs(ray.origin.y), std::abs(ray.origin.z)});
    return farthestCoordinate + largest < largeCoordinate ? inset : 0.0f;
}

unsigned WideTree::openChildren(const BVHInnerNode& node, std::array<const BVHNode*, width>& opened)
{
    opened = {node.left, node.right};
    unsigned count = 2;
    while (count < width) {
        unsigned largest = count;
        for (unsigned i = 0; i < count; ++i)
            if (opened[i]->kind == BVHNode::Inner &&
                (largest == count || opened[i]->box.getArea() > opened[largest]->box.getArea()))
                largest = i;
        if (largest == count)
            break;
        const auto* inner = static_cast<const BVHInnerNode*>(opened[largest]);
        opened[largest] = inner->left;
        opened[count++] = inner->right;
    }
    return count;
}

WideTree::Child WideTree::addNode(const std::array<const BVHNode*, width>& boxes, unsigned count)
{
    Node& node = nodes.emplace_back();
    for (unsigned i = 0; i < width; ++i) {
        const visual::Box box = i < count ? boxes[i]->box : visual::Box(); // the empty one is missed
        for (unsigned axis = 0; axis < 3; ++axis) {
            node.corners[axis][i] = rob::Vec3Template<float>(box.min)[axis];
            node.corners[axis + 3][i] = rob::Vec3Template<float>(box.max)[axis];
        }
    }
    node.children.fill(nothing);
    return static_cast<Child>(nodes.size() - 1);
}

WideTree::Child WideTree::addLeaf(unsigned count) const
{
    const std::size_t first = numbers.size();
    if (first + width >= (std::size_t{1} << countShift))
        throw std::length_error("too many triangles in one set");
    return leafBit | (count - 1) << countShift | static_cast<Child>(first);
}

} // namespace vrk::selection
