#include "selection/geometry/BVHNode.h"

namespace vrk::selection {

BVHInnerNode::BVHInnerNode(BVHNode* left, BVHNode* right, unsigned splitAxis)
    : BVHNode(Inner), splitAxis(splitAxis), left(left), right(right)
{
    box.addBox(left->box);
    box.addBox(right->box);
}

void BVHInnerNode::collectPrimitives(std::vector<BVHPrimitive*>& out) const
{
    left->collectPrimitives(out);
    right->collectPrimitives(out);
}

void BVHLeaf::collectPrimitives(std::vector<BVHPrimitive*>& out) const
{
    out.insert(out.end(), primitives, primitives + count);
}

} // namespace vrk::selection
