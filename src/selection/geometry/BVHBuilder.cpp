#include "selection/geometry/BVHBuilder.h"

#include "platform/common/Cores.h"
#include "selection/geometry/PrimitiveContainer.h"

#include <algorithm>
#include <array>
#include <future>
#include <limits>
#include <new>
#include <stdexcept>
#include <utility>

namespace vrk::selection {
namespace {

constexpr unsigned binCount = 8;
constexpr float minBinWidth = 5.0f; // model units; below it a range is halved in the order it has
constexpr std::size_t nodeAlignment = 8;

/// The largest range that one thread builds by itself: some for each core, as they are not equally quick.
unsigned grainOf(unsigned count)
{
    constexpr unsigned smallest = 8192;
    constexpr unsigned rangesPerCore = 4;
    const unsigned cores = coreCount();
    return cores == 1 ? count : std::max(smallest, count / (cores * rangesPerCore));
}

BVHNode* makeInner(BVHNode* left, BVHNode* right, unsigned axis, Arena& arena)
{
    return new (arena.allocate(sizeof(BVHInnerNode), nodeAlignment)) BVHInnerNode(left, right, axis);
}

struct Bin {
    visual::Box box;
    unsigned count = 0;

    void add(const Bin& o)
    {
        count += o.count;
        if (o.count > 0)
            box.cover(o.box);
    }
};

unsigned binOf(float center, float edge, float binWidth)
{
    // Rounding may put a centre just outside the box of the centres; the end bins take it. Compared before it is
    // converted, since it need not fit an integer.
    const float bin = (center - edge) / binWidth;
    if (!(bin > 0))
        return 0;
    return bin < binCount ? static_cast<unsigned>(bin) : binCount - 1;
}

/// The index of the cheapest plane between two bins, the lowest of equally cheap ones.
unsigned cheapestPlane(const std::array<Bin, binCount>& bins)
{
    // right[i] is all that lies in the bins i and above; right[0] stays unused.
    std::array<Bin, binCount> right = bins;
    for (unsigned i = binCount - 1; i-- > 1;)
        right[i].add(right[i + 1]);

    Bin left;
    unsigned best = 0;
    float bestCost = std::numeric_limits<float>::max();
    for (unsigned i = 0; i + 1 < binCount; ++i) {
        left.add(bins[i]);
        // A side without primitives makes a plane that no other loses to.
        if (!left.box.isValid() || !right[i + 1].box.isValid())
            continue;
        const float cost = left.box.getArea() * static_cast<float>(left.count) +
                           right[i + 1].box.getArea() * static_cast<float>(right[i + 1].count);
        if (cost < bestCost) {
            best = i;
            bestCost = cost;
        }
    }
    return best;
}

} // namespace

BVH BVHBuilder::build()
{
    BVH bvh;
    const std::size_t n = container->primitives.size();
    if (n == 0)
        return bvh;
    indices.clear();
    indices.reserve(n);
    centers.clear();
    centers.reserve(n);
    for (std::size_t i = 0; i < n; ++i) {
        BVHPrimitive& primitive = *container->primitives[i];
        // The slab tests take an inverted box for one that is everywhere, so it must not get in.
        if (!primitive.enabled || !primitive.box.isValid())
            continue;
        indices.push_back(static_cast<unsigned>(i));
        // Also settles the centre: the walks read boxes on several threads, so none may be left to settle there.
        centers.push_back(primitive.box.getCenter());
    }
    const auto count = static_cast<unsigned>(indices.size());
    if (count > 0)
        bvh.root = buildOnAllCores(0, count, *bvh.arena, grainOf(count));
    return bvh;
}

/// As buildRange, with ranges above the grain split between this thread and another, which has an arena of its own.
BVHNode* BVHBuilder::buildOnAllCores(unsigned begin, unsigned end, Arena& arena, unsigned grain)
{
    if (end - begin <= grain)
        return buildRange(begin, end, arena);
    const auto [axis, middle] = split(begin, end);
    Arena elsewhere;
    // Without the means for another thread, the other half is built when it is asked for.
    std::future<BVHNode*> other = std::async(std::launch::async | std::launch::deferred, [&, middle = middle] {
        return buildOnAllCores(middle, end, elsewhere, grain);
    });
    BVHNode* left = buildOnAllCores(begin, middle, arena, grain);
    BVHNode* right = other.get();
    arena.absorb(elsewhere);
    return makeInner(left, right, axis, arena);
}

BVHNode* BVHBuilder::buildRange(unsigned begin, unsigned end, Arena& arena)
{
    if (begin == end)
        throw std::runtime_error("prim num = 0");
    if (end - begin <= BVHLeaf::capacity)
        return makeLeaf(begin, end, arena);

    const auto [axis, middle] = split(begin, end);
    // Children before their parent: a subtree then lies together in the arena.
    BVHNode* left = buildRange(begin, middle, arena);
    BVHNode* right = buildRange(middle, end, arena);
    return makeInner(left, right, axis, arena);
}

/// Orders the range, if it is wide enough, and tells where its second half begins. Neither half is empty.
BVHBuilder::Split BVHBuilder::split(unsigned begin, unsigned end)
{
    const visual::Box middles = boxOfCenters(begin, end);
    const unsigned axis = middles.maxDim();
    const float binWidth = middles.getExtent(axis) * (1.0f / binCount);
    if (binWidth < minBinWidth)
        return {axis, begin + (end - begin) / 2};
    const float edge = rob::Vec3Template<float>(middles.min)[axis];
    return {axis, partition(begin, end, axis, findSplit(begin, end, axis, edge, binWidth))};
}

BVHPrimitive& BVHBuilder::primitive(unsigned position) const
{
    return *container->primitives[indices[position]];
}

visual::Box BVHBuilder::boxOfCenters(unsigned begin, unsigned end) const
{
    visual::Box box;
    for (unsigned i = begin; i < end; ++i)
        box.addPoint(centers[i]);
    box.updateCenter();
    return box;
}

BVHNode* BVHBuilder::makeLeaf(unsigned begin, unsigned end, Arena& arena) const
{
    auto* leaf = new (arena.allocate(sizeof(BVHLeaf), nodeAlignment)) BVHLeaf();
    for (unsigned i = begin; i < end; ++i)
        leaf->add(&primitive(i));
    return leaf;
}

/// Where on `axis` to split: at the cheapest of the seven planes between bins of equal width from `edge` on.
float BVHBuilder::findSplit(unsigned begin, unsigned end, unsigned axis, float edge, float binWidth) const
{
    std::array<Bin, binCount> bins;
    for (unsigned i = begin; i < end; ++i) {
        const visual::Box& box = primitive(i).box;
        Bin& bin = bins[binOf(centers[i][axis], edge, binWidth)];
        ++bin.count;
        bin.box.cover(box);
    }
    return static_cast<float>(cheapestPlane(bins) + 1) * binWidth + edge;
}

/// Brings the centres below `splitValue` to the front. Returns where the others begin; neither side is empty, so that
/// each split makes progress even if all centres fall on one side.
unsigned BVHBuilder::partition(unsigned begin, unsigned end, unsigned axis, float splitValue)
{
    const auto isBelow = [this, axis, splitValue](unsigned i) { return centers[i][axis] < splitValue; };
    unsigned i = begin;
    unsigned j = end - 1;
    for (;;) {
        while (i < end - 1 && isBelow(i))
            ++i;
        while (j > begin && !isBelow(j))
            --j;
        if (i >= j)
            break;
        std::swap(indices[i], indices[j]);
        std::swap(centers[i], centers[j]);
        ++i;
        --j;
    }
    return i == begin ? begin + 1 : i == end ? end - 1 : i;
}

} // namespace vrk::selection
