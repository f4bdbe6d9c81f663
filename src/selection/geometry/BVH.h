#pragma once

#include "platform/common/Export.h"
#include "selection/geometry/Arena.h"
#include "selection/geometry/BVHNode.h"

#include <memory>

namespace vrk::selection {

/// A hierarchy: its top node and the memory of all its nodes.
///
/// It is never changed: a new one is built and swapped in, and the old memory goes in one step. The primitives belong
/// to a PrimitiveContainer.
class VRK_EXPORT BVH {
public:
    /// Empty, with an arena of its own.
    BVH();
    ~BVH();
    /// Moving exchanges the two, so the source stays usable.
    BVH(BVH&& o);
    BVH& operator=(BVH&& o) noexcept;
    void swap(BVH& o) noexcept;

    BVHNode* root = nullptr; ///< null when empty
    std::unique_ptr<Arena> arena;
};

} // namespace vrk::selection

namespace vrk::visual {
using selection::BVH;
}
