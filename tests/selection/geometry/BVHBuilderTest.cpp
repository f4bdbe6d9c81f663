#include "selection/geometry/BVHBuilder.h"

#include "Geometry.h"
#include "support/ThrowsExactly.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace vrk::selection {
namespace {

using rob::Posf;
using testing::ElementsAre;
using testing::IsEmpty;

const BVHInnerNode& inner(const BVHNode* node)
{
    EXPECT_EQ(node->kind, BVHNode::Inner);
    return static_cast<const BVHInnerNode&>(*node);
}

void build(PrimitiveContainer& container)
{
    container.bvh = BVHBuilder(&container).build();
}

TEST(BVH, StartsEmptyWithAnArenaOfItsOwn)
{
    const BVH bvh;

    EXPECT_EQ(bvh.root, nullptr);
    EXPECT_NE(bvh.arena, nullptr);
}

TEST(BVH, MovingSwaps)
{
    BVHLeaf leaf;
    BVH source;
    source.root = &leaf;
    const Arena* sourceArena = source.arena.get();

    BVH made(std::move(source));
    EXPECT_EQ(made.root, &leaf);
    EXPECT_EQ(made.arena.get(), sourceArena);
    EXPECT_EQ(source.root, nullptr);
    EXPECT_NE(source.arena, nullptr);

    BVH assigned;
    const Arena* oldArena = assigned.arena.get();
    assigned = std::move(made);
    EXPECT_EQ(assigned.root, &leaf);
    EXPECT_EQ(assigned.arena.get(), sourceArena);
    EXPECT_EQ(made.root, nullptr);
    EXPECT_EQ(made.arena.get(), oldArena);
}

TEST(BVHBuilder, NoPrimitivesGiveNoRoot)
{
    PrimitiveContainer container;
    build(container);

    EXPECT_EQ(container.bvh.root, nullptr);
}

TEST(BVHBuilder, AllDisabledGivesNoRoot)
{
    PrimitiveContainer container;
    for (int i = 0; i < 6; ++i)
        add(container, around(0, 0, 0)).enabled = false;
    build(container);

    EXPECT_EQ(container.bvh.root, nullptr);
}

TEST(BVHBuilder, DisabledOnesAreLeftOut)
{
    PrimitiveContainer container;
    for (int i = 0; i < 6; ++i)
        add(container, around(0, 0, 0)).enabled = i % 2 == 0;
    build(container);

    EXPECT_EQ(container.bvh.root->kind, BVHNode::Leaf);
    EXPECT_THAT(numbersBelow(container.bvh.root), ElementsAre(0, 2, 4));
}

TEST(BVHBuilder, PrimitiveWithoutAValidBoxIsLeftOut)
{
    PrimitiveContainer container;
    add(container, Box());
    add(container, around(0, 0, 0));
    add(container, Box(nan, nan, nan, nan, nan, nan));
    build(container);

    EXPECT_THAT(numbersBelow(container.bvh.root), ElementsAre(1));
}

TEST(BVHBuilder, OnePrimitiveMakesALeafOfOne)
{
    PrimitiveContainer container;
    add(container, around(1, 2, 3));
    build(container);

    ASSERT_EQ(container.bvh.root->kind, BVHNode::Leaf);
    EXPECT_EQ(static_cast<const BVHLeaf*>(container.bvh.root)->count, 1u);
    EXPECT_EQ(container.bvh.root->box.min, Posf(0, 1, 2));
}

TEST(BVHBuilder, FourPrimitivesMakeALeafAndFiveAnInnerNode)
{
    PrimitiveContainer container;
    for (int i = 0; i < 4; ++i)
        add(container, around(0, 0, 0));
    build(container);
    EXPECT_EQ(container.bvh.root->kind, BVHNode::Leaf);

    add(container, around(0, 0, 0));
    build(container);
    EXPECT_EQ(container.bvh.root->kind, BVHNode::Inner);
}

TEST(BVHBuilder, EqualCentresAreHalvedInTheirOrder)
{
    PrimitiveContainer container;
    for (int i = 0; i < 5; ++i)
        add(container, around(7, 7, 7));
    build(container);

    const BVHInnerNode& root = inner(container.bvh.root);
    EXPECT_THAT(numbersBelow(root.left), ElementsAre(0, 1));
    EXPECT_THAT(numbersBelow(root.right), ElementsAre(2, 3, 4));
    EXPECT_EQ(root.splitAxis, 2u);
}

TEST(BVHBuilder, CentresWithinFortyUnitsAreHalvedInTheirOrderAndKeepTheirAxis)
{
    PrimitiveContainer container;
    for (const float y : {39.9f, 0.0f, 30.0f, 1.0f, 20.0f, 2.0f})
        add(container, around(0, y, 0));
    build(container);

    const BVHInnerNode& root = inner(container.bvh.root);
    EXPECT_THAT(numbersBelow(root.left), ElementsAre(0, 1, 2));
    EXPECT_THAT(numbersBelow(root.right), ElementsAre(3, 4, 5));
    EXPECT_EQ(root.splitAxis, 1u);
}

TEST(BVHBuilder, CentresOverExactlyFortyUnitsAreBinned)
{
    // The halves by order would be {0, 1} and {2, 3, 4}.
    PrimitiveContainer container;
    for (const float x : {40.0f, 0.0f, 1.0f, 39.0f, 2.0f})
        add(container, around(x, 0, 0));
    build(container);

    const BVHInnerNode& root = inner(container.bvh.root);
    EXPECT_EQ(root.splitAxis, 0u);
    EXPECT_THAT(numbersBelow(root.left), ElementsAre(4, 1, 2));
    EXPECT_THAT(numbersBelow(root.right), ElementsAre(3, 0));
}

TEST(BVHBuilder, FarOutlierIsAloneOnTheRight)
{
    PrimitiveContainer container;
    for (const float z : {0.0f, 1.0f, 2.0f, 1000.0f, 3.0f, 4.0f})
        add(container, around(0, 0, z));
    build(container);

    const BVHInnerNode& root = inner(container.bvh.root);
    EXPECT_THAT(numbersBelow(root.right), ElementsAre(3));
    EXPECT_THAT(numbersBelow(root.left), ElementsAre(0, 1, 2, 5, 4));
}

TEST(BVHBuilder, CheapestPlaneIsTaken)
{
    // Two groups along x, the gap right of the middle: {0, 10, 20} and {80, 90, 100}, mixed.
    PrimitiveContainer container;
    for (const float x : {100.0f, 20.0f, 0.0f, 90.0f, 10.0f, 80.0f})
        add(container, around(x, 0, 0));
    build(container);

    const BVHInnerNode& root = inner(container.bvh.root);
    EXPECT_THAT(numbersBelow(root.left), ElementsAre(4, 1, 2));
    EXPECT_THAT(numbersBelow(root.right), ElementsAre(3, 0, 5));
}

TEST(BVHBuilder, FirstOfEquallyCheapPlanesIsTaken)
{
    // Mirrored about 20: to part the first costs just what it costs to part the last.
    PrimitiveContainer container;
    for (const float x : {0.0f, 20.0f, 20.0f, 20.0f, 40.0f})
        add(container, around(x, 0, 0));
    build(container);

    EXPECT_THAT(numbersBelow(inner(container.bvh.root).left), ElementsAre(0));
}

TEST(BVHBuilder, CostCountsWholeBoxesNotCentres)
{
    // Were all as small as the others, the one at 100 would be parted. But the two in the middle reach to both sides,
    // so what joins them costs nothing more, and it is cheaper to part two than one.
    PrimitiveContainer container;
    add(container, Box(-60, -400, -400, 140, 400, 400)); // centre 40
    add(container, Box(-59, -400, -400, 141, 400, 400)); // centre 41
    for (const float x : {0.0f, 2.0f, 100.0f})
        add(container, around(x, 0, 0));
    build(container);
    const BVHInnerNode& wide = inner(container.bvh.root);
    EXPECT_THAT(numbersBelow(wide.left), ElementsAre(3, 2));
    EXPECT_THAT(numbersBelow(wide.right), ElementsAre(1, 0, 4));

    container.primitives[0]->box = around(40, 0, 0);
    container.primitives[1]->box = around(41, 0, 0);
    build(container);
    EXPECT_THAT(numbersBelow(inner(container.bvh.root).right), ElementsAre(4));
}

TEST(BVHBuilder, BoxesTooLargeToMeasureStillSplit)
{
    // Every area overflows, no plane is cheaper than any other: the first is taken.
    PrimitiveContainer container;
    const float far = 1e38f;
    for (const float x : {0.0f, 100.0f, 200.0f, 300.0f, 400.0f, 800.0f})
        add(container, Box(x, -far, -far, x, far, far));
    build(container);

    const BVHInnerNode& root = inner(container.bvh.root);
    EXPECT_THAT(numbersBelow(root.left), ElementsAre(0));
    EXPECT_EQ(numbersBelow(root.right).size(), 5u);
}

TEST(BVHBuilder, EmptyBinsOnOneSideMakeNoPlaneCheaper)
{
    // Corners whose sum is not finite: all centres fall into the first bin, and nothing lies on the right of any plane.
    // None costs less than the first, below which no centre is, so that one primitive is peeled off.
    PrimitiveContainer container;
    for (const float x : {-3e38f, 0.0f, 1e38f, 2e38f, 3e38f})
        add(container, Box(x, 0, 0, x, 0, 0));
    build(container);

    const BVHInnerNode& root = inner(container.bvh.root);
    EXPECT_THAT(numbersBelow(root.left), ElementsAre(0));
    EXPECT_THAT(numbersBelow(root.right), ElementsAre(1, 2, 3, 4));
}

TEST(BVHBuilder, CentreThatIsNoNumberStillSplits)
{
    // The corners are finite, their sum is not.
    PrimitiveContainer container;
    for (int i = 0; i < 6; ++i)
        add(container, Box(largest, largest, largest, largest, largest, largest));
    add(container, around(0, 0, 0));
    build(container);

    EXPECT_EQ(numbersBelow(container.bvh.root).size(), 7u);
}

TEST(BVHBuilder, EmptyRangeIsRefused)
{
    PrimitiveContainer container;
    Arena arena;
    BVHBuilder builder(&container);

    EXPECT_THAT([&] { builder.buildRange(0, 0, arena); }, test::throwsExactly<std::runtime_error>("prim num = 0"));
}

TEST(BVHBuilder, DirtyCentresAreSettled)
{
    PrimitiveContainer container;
    for (int i = 0; i < 3; ++i) {
        add(container, Box());
        container.primitives.back()->box.addPoint({1, 2, 3});
    }
    build(container);

    for (const BVHPrimitive* primitive : container.primitives) {
        EXPECT_FALSE(primitive->box.centerDirty);
        EXPECT_EQ(primitive->box.center, Posf(1, 2, 3));
    }
}

TEST(BVHBuilder, BuildingAgainFollowsTheVector)
{
    PrimitiveContainer container;
    add(container, around(0, 0, 0));
    build(container);
    add(container, around(1, 0, 0)).enabled = false;
    add(container, around(2, 0, 0));
    EXPECT_THAT(numbersBelow(container.bvh.root), ElementsAre(0));

    build(container);
    EXPECT_THAT(numbersBelow(container.bvh.root), ElementsAre(0, 2));
}

/// Checks a subtree and returns the number of its primitives.
std::size_t checkNode(const BVHNode* node)
{
    EXPECT_FALSE(node->box.centerDirty);
    Box expected;
    std::size_t count = 0;
    if (node->kind == BVHNode::Leaf) {
        const auto* leaf = static_cast<const BVHLeaf*>(node);
        EXPECT_GE(leaf->count, 1u);
        EXPECT_LE(leaf->count, 4u);
        for (unsigned i = 0; i < leaf->count; ++i)
            expected.addBox(leaf->primitives[i]->box);
        count = leaf->count;
    } else {
        const BVHInnerNode& in = inner(node);
        count = checkNode(in.left) + checkNode(in.right);
        EXPECT_GT(count, 4u);
        expected.addBox(in.left->box);
        expected.addBox(in.right->box);
    }
    EXPECT_EQ(node->box.min, expected.min);
    EXPECT_EQ(node->box.max, expected.max);
    return count;
}

TEST(BVHBuilder, EveryEnabledPrimitiveIsInOneLeafUnderBoxesThatHoldIt)
{
    for (unsigned seed = 0; seed < 60; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Dice dice(seed, seed % 3 == 0 ? 15.0f : 2000.0f);
        PrimitiveContainer container;
        std::vector<unsigned> enabled;
        const unsigned n = 1 + dice.below(700);
        for (unsigned i = 0; i < n; ++i) {
            FakePrimitive& primitive = add(container, dice.box(seed % 2 ? 1.0f : 300.0f));
            primitive.enabled = dice.below(5) != 0;
            if (primitive.enabled)
                enabled.push_back(i);
        }
        build(container);
        if (enabled.empty())
            continue;

        EXPECT_EQ(checkNode(container.bvh.root), enabled.size());
        std::vector<unsigned> found = numbersBelow(container.bvh.root);
        std::sort(found.begin(), found.end());
        EXPECT_EQ(found, enabled);
    }
}

/// The build as it is told, step by step and on one thread.
class PlainBuild {
public:
    explicit PlainBuild(const PrimitiveContainer& container)
    {
        for (BVHPrimitive* primitive : container.primitives)
            if (primitive->enabled && primitive->box.isValid())
                order.push_back(primitive);
    }
    /// Compares a node, and all below it, with what it must be over these places. Returns the number of differences.
    unsigned differences(const BVHNode* node) { return differences(node, 0, order.size()); }

private:
    static float centerOf(BVHPrimitive* primitive, unsigned axis)
    {
        return rob::Vec3f(primitive->box.getCenter())[axis];
    }

    unsigned differences(const BVHNode* node, std::size_t begin, std::size_t end)
    {
        if (end - begin <= 4) {
            if (node->kind != BVHNode::Leaf)
                return 1;
            const auto* leaf = static_cast<const BVHLeaf*>(node);
            return leaf->count == end - begin &&
                           std::equal(order.begin() + static_cast<std::ptrdiff_t>(begin),
                                      order.begin() + static_cast<std::ptrdiff_t>(end), leaf->primitives)
                       ? 0
                       : 1;
        }
        if (node->kind != BVHNode::Inner)
            return 1;
        const auto* in = static_cast<const BVHInnerNode*>(node);
        Box centers;
        for (std::size_t i = begin; i < end; ++i)
            centers.addPoint(order[i]->box.getCenter());
        const unsigned axis = centers.maxDim();
        const float width = centers.getExtent(axis) * 0.125f;
        const std::size_t middle =
            width < 5.0f ? (begin + end) / 2 : binned(begin, end, axis, rob::Vec3f(centers.min)[axis], width);
        if (in->splitAxis != axis)
            return 1;
        return differences(in->left, begin, middle) + differences(in->right, middle, end);
    }

    std::size_t binned(std::size_t begin, std::size_t end, unsigned axis, float edge, float width)
    {
        Box boxes[8];
        unsigned counts[8] = {};
        for (std::size_t i = begin; i < end; ++i) {
            const int bin = std::clamp(static_cast<int>((centerOf(order[i], axis) - edge) / width), 0, 7);
            ++counts[bin];
            boxes[bin].addBox(order[i]->box);
        }
        int best = 0;
        float bestCost = largest;
        for (int plane = 0; plane < 7; ++plane) {
            Box left, right;
            unsigned leftCount = 0, rightCount = 0;
            for (int bin = 0; bin < 8; ++bin) {
                if (counts[bin] == 0)
                    continue;
                (bin <= plane ? left : right).addBox(boxes[bin]);
                (bin <= plane ? leftCount : rightCount) += counts[bin];
            }
            if (!left.isValid() || !right.isValid())
                continue;
            const float cost =
                left.getArea() * static_cast<float>(leftCount) + right.getArea() * static_cast<float>(rightCount);
            if (cost < bestCost) {
                best = plane;
                bestCost = cost;
            }
        }
        return partitioned(begin, end, axis, static_cast<float>(best + 1) * width + edge);
    }

    std::size_t partitioned(std::size_t begin, std::size_t end, unsigned axis, float value)
    {
        std::size_t i = begin, j = end - 1;
        for (;;) {
            while (i != end - 1 && centerOf(order[i], axis) < value)
                ++i;
            while (j != begin && !(centerOf(order[j], axis) < value))
                --j;
            if (i >= j)
                break;
            std::swap(order[i++], order[j--]);
        }
        return i == begin ? begin + 1 : i == end ? end - 1 : i;
    }

    std::vector<BVHPrimitive*> order;
};

TEST(BVHBuilder, HierarchyOnAllCoresIsThatOfThePlainBuildNodeByNode)
{
    struct Case {
        const char* name;
        unsigned count;
        float reach, largestHalf;
    };
    // Above 8192 primitives the halves of a range are built side by side; narrow scenes are halved in their order.
    for (const Case& c : {Case{"few", 3000, 1000, 5}, Case{"many", 50000, 5000, 3}, Case{"narrow", 30000, 15, 1},
                          Case{"large ones", 20000, 1000, 500}}) {
        SCOPED_TRACE(c.name);
        Dice dice(7, c.reach);
        PrimitiveContainer container;
        for (unsigned i = 0; i < c.count; ++i)
            add(container, dice.box(c.largestHalf)).enabled = dice.below(10) != 0;
        build(container);

        EXPECT_EQ(PlainBuild(container).differences(container.bvh.root), 0u);
        checkNode(container.bvh.root);
    }
}

TEST(BVHBuilder, TwoBuildsOnAllCoresAreEqual)
{
    Dice dice(8, 5000);
    PrimitiveContainer container;
    for (unsigned i = 0; i < 40000; ++i)
        add(container, dice.box(3));
    build(container);
    const std::vector<unsigned> first = numbersBelow(container.bvh.root);

    build(container);

    EXPECT_EQ(numbersBelow(container.bvh.root), first);
}

TEST(BVHBuilder, CentresInGeometricSeriesPeelOffWithoutEnd)
{
    PrimitiveContainer container;
    for (int i = 0; i < 120; ++i) {
        const float x = std::ldexp(1.0f, i);
        add(container, Box(x, 0, 0, x, 0, 0));
    }
    build(container);

    EXPECT_EQ(checkNode(container.bvh.root), 120u);
}

} // namespace
} // namespace vrk::selection
