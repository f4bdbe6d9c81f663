#pragma once

#include "selection/geometry/BVHNode.h"
#include "selection/geometry/BoxTests.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <type_traits>
#include <vector>

namespace vrk::selection {

/// What a walk put aside, last in, first out. As much as an ordinary hierarchy needs lies in place.
template <typename T>
class PendingStack {
public:
    bool empty() const { return count == 0; }
    void push(const T& item)
    {
        if (count < inPlace)
            first[count++] = item;
        else
            rest.push_back(item);
    }
    /// Not of an empty one.
    T pop()
    {
        if (!rest.empty()) {
            const T item = rest.back();
            rest.pop_back();
            return item;
        }
        return first[--count];
    }

private:
    static constexpr unsigned inPlace = 64;

    T first[inPlace];
    unsigned count = 0;
    std::vector<T> rest;
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
    PendingStack<const BVHNode*> pending;
    const auto nextPending = [&pending]() -> const BVHNode* { return pending.empty() ? nullptr : pending.pop(); };
    for (const BVHNode* node = root; node != nullptr;) {
        if (node->kind == BVHNode::Leaf) {
            const auto* leaf = static_cast<const BVHLeaf*>(node);
            for (unsigned i = 0; i < leaf->count; ++i) {
                if (meets(leaf->primitives[i]->box) && !goesOn(leaf->primitives[i]))
                    return;
            }
            node = nextPending();
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
            node = left ? inner->left : right ? inner->right : nextPending();
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

/// How far a walk for the nearest hit must look: beyond this, no box can hold a hit nearer than `limit`.
///
/// A hit lies within its primitive's box, which a triangle's leaves a whole unit inside; what is added here is more than
/// the rounding of the two distances.
class Reach {
public:
    explicit Reach(const visual::Ray& ray)
        : slack(relative * std::max({std::abs(ray.origin.x), std::abs(ray.origin.y), std::abs(ray.origin.z)}))
    {
    }
    /// Never infinite, as what a ray misses is.
    float operator()(float limit) const { return std::min(limit + limit * relative + slack, largest); }

private:
    static constexpr float relative = 1e-5f;
    static constexpr float largest = std::numeric_limits<float>::max();

    float slack;
};

/// Visits what a ray, or something wider along it, enters within `limit`, as `test` tells it. The visitor lowers `limit` as it
/// finds hits.
///
/// @param test  float entry(const Box&), infinite for a miss, and bool pointsUp(unsigned axis).
template <typename Test, typename Visit>
void walkWithin(const BVHNode* root, const Test& test, const Reach& reach, const float& limit, Visit&& visit)
{
    struct Pending {
        const BVHNode* node;
        float entry;
    };
    PendingStack<Pending> pending;
    Pending next{root, test.entry(root->box)};
    for (;;) {
        // Asked once more of what was put aside: the limit may have come nearer meanwhile.
        if (next.entry <= reach(limit)) {
            if (next.node->kind == BVHNode::Leaf) {
                const auto* leaf = static_cast<const BVHLeaf*>(next.node);
                for (unsigned i = 0; i < leaf->count; ++i)
                    if (test.entry(leaf->primitives[i]->box) <= reach(limit))
                        visit(leaf->primitives[i]);
            } else {
                const auto* inner = static_cast<const BVHInnerNode*>(next.node);
                const Pending left{inner->left, test.entry(inner->left->box)};
                const Pending right{inner->right, test.entry(inner->right->box)};
                const bool goLeft = test.pointsUp(inner->splitAxis);
                pending.push(goLeft ? right : left);
                next = goLeft ? left : right;
                continue;
            }
        }
        if (pending.empty())
            return;
        next = pending.pop();
    }
}

/// As walkRay, in the same order, but for what the ray enters beyond `limit`. The visitor lowers `limit` as it finds hits.
///
/// Only for primitives whose hits lie within their boxes: lines are hit from some pixels away, so they are not such.
template <typename Visit>
void walkRayWithin(const BVHNode* root, const visual::Ray& ray, const float& limit, Visit&& visit)
{
    if (root != nullptr)
        walkWithin(root, RayBoxTest(ray), Reach(ray), limit, visit);
}

template <typename Visit>
void walkTriangle(const BVHNode* root, const rob::TriangleTemplate<float>& triangle, Visit&& visit)
{
    const rob::Vec3Template<float> normal = (triangle.b - triangle.a).cross(triangle.c - triangle.a);
    walk(
        root, [&triangle](const visual::Box& box) { return box.intersect(triangle); },
        [&normal](unsigned axis) { return normal[axis] > 0; }, visit);
}

/// Visits all primitives of each leaf whose own box, and whose nodes' boxes, `meets` accepts; their boxes are not asked. Of
/// two children the right one comes first.
template <typename Meets, typename Visit>
void walkVolume(const BVHNode* root, const Meets& meets, const Visit& visit)
{
    PendingStack<const BVHNode*> pending;
    if (root != nullptr)
        pending.push(root);
    while (!pending.empty()) {
        const BVHNode* node = pending.pop();
        if (!meets(node->box))
            continue;
        if (node->kind == BVHNode::Leaf) {
            const auto* leaf = static_cast<const BVHLeaf*>(node);
            for (unsigned i = 0; i < leaf->count; ++i)
                visit(leaf->primitives[i]);
        } else {
            const auto* inner = static_cast<const BVHInnerNode*>(node);
            pending.push(inner->left);
            pending.push(inner->right);
        }
    }
}

template <typename Visit>
void walkBox(const BVHNode* root, const visual::Box& question, Visit&& visit)
{
    walk(
        root, [&question](const visual::Box& box) { return box.intersect(question); }, [](unsigned) { return true; },
        visit);
}

} // namespace vrk::selection
