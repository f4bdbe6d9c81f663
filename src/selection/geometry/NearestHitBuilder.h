#pragma once

#include "selection/geometry/NearestHitTree.h"

#include <array>
#include <cstddef>
#include <functional>
#include <limits>
#include <vector>

namespace vrk::selection {

/// Builds a NearestHitTree from the top down: it is made for one build and thrown away.
///
/// A range of triangles is split where the surface areas of both sides, times the leaves that they need, are smallest, over
/// the planes between up to 16 bins along each axis. A node is split until it has four children, the largest first.
/// Ranges above a size are built on several cores. What is made does not depend on their number.
class NearestHitBuilder {
public:
    using Reference = NearestHitTree::Reference;

    explicit NearestHitBuilder(NearestHitTree& tree) : tree(tree) {}

    /// As NearestHitTree::build, of a tree that is empty.
    void build(std::size_t count, const std::function<void(std::size_t begin, std::size_t end, Reference* out)>& fill);

private:
    using Node = NearestHitTree::Node;
    using Child = NearestHitTree::Child;
    using Nodes = std::vector<Node, LargePages<Node>>;

    struct Bounds {
        static Bounds Empty()
        {
            constexpr float most = std::numeric_limits<float>::max();
            return {Float4{} + most, Float4{} - most};
        }
        void add(const Float4& low, const Float4& high)
        {
            lower = smallerOf(low, lower);
            upper = largerOf(high, upper);
        }
        void add(const Bounds& o) { add(o.lower, o.upper); }
        float halfArea() const
        {
            const Float4 size = upper - lower;
            return size[0] * (size[1] + size[2]) + size[1] * size[2];
        }

        Float4 lower, upper;
    };
    /// References side by side, their box, and that of their centres in double size.
    struct Range {
        unsigned begin = 0, end = 0;
        Bounds box = Bounds::Empty();
        Bounds centers = Bounds::Empty();

        unsigned count() const { return end - begin; }
        void add(const Reference& reference)
        {
            box.add(reference.lower, reference.upper);
            const Float4 center = reference.lower + reference.upper;
            centers.add(center, center);
        }
    };
    /// A subtree that is left for another thread, and where it is to hang.
    struct Later {
        Range range;
        unsigned depth;
        Child parent;
        unsigned place;
        Nodes nodes;
        Child top;
    };
    struct Bins;
    struct Sums;
    struct Plane;

    /// Everything that is to be in the tree, which then comes first among the references.
    Range takeIn(const std::function<void(std::size_t begin, std::size_t end, Reference* out)>& fill);
    /// The subtree over `range`. Its nodes are appended to `into`. Ranges up to `grain` go to `later`, if there is one.
    Child add(const Range& range, unsigned depth, Nodes& into, unsigned grain, std::vector<Later>* later);
    void buildRest(std::vector<Later>& later);
    /// Leaves the lower part in `range` and returns the upper one. Neither is empty.
    Range split(Range& range, unsigned depth);
    Plane cheapestPlane(const Range& range) const;
    Range partition(Range& range, const Plane& plane);
    Range halve(Range& range);
    static Node nodeOver(const std::array<Range, NearestHitTree::width>& parts, unsigned count);

    NearestHitTree& tree;
    Reference* references = nullptr;
    unsigned total = 0;
};

} // namespace vrk::selection
