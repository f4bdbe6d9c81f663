#pragma once

#include "platform/common/Export.h"
#include "selection/geometry/BVHPrimitive.h"

#include <vector>

namespace vrk::selection {

/// A node of a hierarchy.
///
/// Owner: the arena it lies in, with which it vanishes; no node is ever destroyed by itself.
class VRK_EXPORT BVHNode {
public:
    enum Kind : unsigned { Inner = 0, Leaf = 1 };

    /// Appends all primitives below, from left to right.
    virtual void collectPrimitives(std::vector<BVHPrimitive*>& out) const = 0;

    const unsigned kind;
    [[no_unique_address]] visual::Box box; // its padding is used, also by the next field: there are millions

protected:
    explicit BVHNode(Kind kind) : kind(kind) {}
    ~BVHNode() = default;
};

/// A node with two children, whose box is the union of theirs.
class VRK_EXPORT BVHInnerNode final : public BVHNode {
public:
    BVHInnerNode(BVHNode* left, BVHNode* right, unsigned splitAxis);
    void collectPrimitives(std::vector<BVHPrimitive*>& out) const override;

    unsigned splitAxis; ///< 0 x, 1 y, 2 z: the children's order along it is likely, not certain
    BVHNode* left;
    BVHNode* right;
};

/// A node with up to four primitives.
class VRK_EXPORT BVHLeaf final : public BVHNode {
public:
    static constexpr unsigned capacity = 4;

    BVHLeaf() : BVHNode(Leaf) {}
    void collectPrimitives(std::vector<BVHPrimitive*>& out) const override;
    /// The leaf must not be full.
    void add(BVHPrimitive* primitive)
    {
        primitives[count++] = primitive;
        box.addBox(primitive->box);
    }

    unsigned count = 0;
    BVHPrimitive* primitives[capacity] = {};
};

static_assert(sizeof(BVHInnerNode) <= 72 && sizeof(BVHLeaf) <= 88);

} // namespace vrk::selection

namespace vrk::visual {
using selection::BVHInnerNode;
using selection::BVHLeaf;
using selection::BVHNode;
} // namespace vrk::visual
