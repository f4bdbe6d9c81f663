#pragma once

#include "selection/geometry/BVHNode.h"
#include "selection/geometry/BoxTests.h"

#include <type_traits>
#include <vector>

namespace vrk::selection {

/// Nodes put aside, last in, first out. As many as an ordinary hierarchy needs lie in place.
class PendingNodes {
public:
    void push(const BVHNode* node)
    {
        if (count < inPlace)
            first[count++] = node;
        else
            rest.push_back(node);
    }
    /// Null when empty.
    const BVHNode* pop()
    {
        if (!rest.empty()) {
            const BVHNode* node = rest.back();
            rest.pop_back();
            return node;
        }
        return count > 0 ? first[--count] : nullptr;
    }

private:
    static constexpr unsigned inPlace = 64;

    const BVHNode* first[inPlace];
    unsigned count = 0;
    std::vector<const BVHNode*> rest;
};

/// Visits every primitive whose box, and whose nodes' boxes, `meets` accepts.
///
/// @param meets      bool(const Box&); asked once for each box.
/// @param leftFirst  bool(unsigned splitAxis): which child of an inner node comes first.
/// @param visit      void(BVHPrimitive*), or bool(BVHPrimitive*) that ends the walk with false.
template <typename Meets, typename LeftFirst, typename Visit>
void walk(const BVHNode* root, const Meets& meets, const LeftFirst& leftFirst, Visit&& visit)
{
    if (root == nullptr || !meets(root->box))
        return;
    const auto goesOn = [&visit](BVHPrimitive* primitive) {
        if constexpr (std::is_void_v<decltype(visit(primitive))>) {
            visit(primitive);
            return true;
        } else {
            return visit(primitive);
        }
    };
    // Both children are tested at their parent: one that is missed is never put aside, and the order stays that of
    // testing each when its turn comes.
    PendingNodes pending;
    for (const BVHNode* node = root; node != nullptr;) {
        if (node->kind == BVHNode::Leaf) {
            const auto* leaf = static_cast<const BVHLeaf*>(node);
            for (unsigned i = 0; i < leaf->count; ++i) {
                if (meets(leaf->primitives[i]->box) && !goesOn(leaf->primitives[i]))
                    return;
            }
            node = pending.pop();
            continue;
        }
        const auto* inner = static_cast<const BVHInnerNode*>(node);
        const bool left = meets(inner->left->box);
        const bool right = meets(inner->right->box);
        if (left && right) {
            const bool goLeft = leftFirst(inner->splitAxis);
            pending.push(goLeft ? inner->right : inner->left);
            node = goLeft ? inner->left : inner->right;
        } else {
            node = left ? inner->left : right ? inner->right : pending.pop();
        }
    }
}

/// Visits what a line meets. An empty hierarchy asks nothing of the line, not even a length.
template <typename Visit>
void walkLine(const BVHNode* root, const rob::LineTemplate<float>& line, Visit&& visit)
{
    if (root == nullptr)
        return;
    const LineBoxTest test(line);
    walk(
        root, test, [&test](unsigned axis) { return test.pointsUp(axis); }, visit);
}

template <typename Visit>
void walkRay(const BVHNode* root, const visual::Ray& ray, Visit&& visit)
{
    if (root == nullptr)
        return;
    const RayBoxTest test(ray);
    walk(
        root, test, [&test](unsigned axis) { return test.pointsUp(axis); }, visit);
}

template <typename Visit>
void walkTriangle(const BVHNode* root, const rob::TriangleTemplate<float>& triangle, Visit&& visit)
{
    const rob::Vec3Template<float> normal = (triangle.b - triangle.a).cross(triangle.c - triangle.a);
    walk(
        root, [&triangle](const visual::Box& box) { return box.intersect(triangle); },
        [&normal](unsigned axis) { return normal[axis] > 0; }, visit);
}

template <typename Visit>
void walkBox(const BVHNode* root, const visual::Box& question, Visit&& visit)
{
    walk(
        root, [&question](const visual::Box& box) { return box.intersect(question); }, [](unsigned) { return true; },
        visit);
}

} // namespace vrk::selection
