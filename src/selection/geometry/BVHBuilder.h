#pragma once

#include "platform/common/Export.h"
#include "selection/geometry/BVH.h"

#include <vector>

namespace vrk::selection {

class PrimitiveContainer;

/// Builds a hierarchy over the primitives of a container: it is made for one build and thrown away.
///
/// Units: model units; the width below which a range is not binned is told in them.
///
/// A range of more than four primitives is split along the longest axis of its centres: by the surface areas of eight
/// bins, or in the order it has if its centres lie within 40 units of each other. Equal input gives equal hierarchies.
/// Large ones are built on all cores.
class VRK_EXPORT BVHBuilder {
public:
    /// The container must outlive the builder.
    explicit BVHBuilder(PrimitiveContainer* container) : container(container) {}

    /// A hierarchy over the enabled primitives, for the caller to swap into the container. Settles the centres of their
    /// boxes. A primitive without a valid box is left out as a disabled one is.
    BVH build();
    /// The node over indices `begin` to `end`, for build().
    /// @throws std::runtime_error "prim num = 0" if there are none.
    BVHNode* buildRange(unsigned begin, unsigned end, Arena& arena);

private:
    struct Split {
        unsigned axis;
        unsigned middle;
    };

    BVHNode* buildOnAllCores(unsigned begin, unsigned end, Arena& arena, unsigned grain);
    Split split(unsigned begin, unsigned end);
    BVHPrimitive& primitive(unsigned position) const;
    visual::Box boxOfCenters(unsigned begin, unsigned end) const;
    BVHNode* makeLeaf(unsigned begin, unsigned end, Arena& arena) const;
    float findSplit(unsigned begin, unsigned end, unsigned axis, float edge, float binWidth) const;
    unsigned partition(unsigned begin, unsigned end, unsigned axis, float splitValue);

    PrimitiveContainer* container;
    std::vector<unsigned> indices;                // positions in the container's vector; each node has a range of them
    std::vector<rob::PosTemplate<float>> centers; // of these, side by side: each split reads all of its range twice
};

} // namespace vrk::selection

namespace vrk::visual {
using selection::BVHBuilder;
}
