#include "selection/geometry/PrimitiveContainer.h"

#include "Geometry.h"

#include "selection/geometry/BVHBuilder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

namespace vrk::selection {
namespace {

using rob::Linef;
using rob::Posf;
using rob::Trianglef;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StrEq;
using testing::ThrowsMessage;

void build(PrimitiveContainer& container)
{
    container.bvh = BVHBuilder(&container).build();
}

/// Ten boxes along x, far enough apart to be split by place.
void addRow(PrimitiveContainer& container)
{
    for (int i = 0; i < 10; ++i)
        add(container, around(100.0f * i, 0, 0));
    build(container);
}

/// A soup of boxes, some of them disabled.
void addSoup(PrimitiveContainer& container, Dice& dice, float reach)
{
    const unsigned n = 1 + dice.below(400);
    for (unsigned i = 0; i < n; ++i)
        add(container, dice.box(reach / 5)).enabled = dice.below(10) != 0;
    build(container);
}

/// The walk as it is told: a node is tested when its turn comes.
template <typename Question, typename LeftFirst>
std::vector<unsigned> plainWalk(const BVHNode* root, const Question& question, const LeftFirst& leftFirst)
{
    std::vector<BVHPrimitive*> found;
    std::vector<const BVHNode*> stack;
    if (root != nullptr)
        stack.push_back(root);
    while (!stack.empty()) {
        const BVHNode* node = stack.back();
        stack.pop_back();
        if (!node->box.intersect(question))
            continue;
        if (node->kind == BVHNode::Leaf) {
            const auto* leaf = static_cast<const BVHLeaf*>(node);
            for (unsigned i = 0; i < leaf->count; ++i) {
                if (leaf->primitives[i]->box.intersect(question))
                    found.push_back(leaf->primitives[i]);
            }
            continue;
        }
        const auto* inner = static_cast<const BVHInnerNode*>(node);
        const bool left = leftFirst(inner->splitAxis);
        stack.push_back(left ? inner->right : inner->left);
        stack.push_back(left ? inner->left : inner->right);
    }
    return numbersOf(found);
}

template <typename Question>
std::vector<unsigned> loopOverAll(const PrimitiveContainer& container, const Question& question)
{
    std::vector<BVHPrimitive*> found;
    for (BVHPrimitive* primitive : container.primitives) {
        if (primitive->enabled && primitive->box.intersect(question))
            found.push_back(primitive);
    }
    return numbersOf(found);
}

std::vector<unsigned> sorted(std::vector<unsigned> numbers)
{
    std::sort(numbers.begin(), numbers.end());
    return numbers;
}

TEST(PrimitiveContainer, DeletesItsPrimitives)
{
    int deaths = 0;
    {
        PrimitiveContainer container;
        for (int i = 0; i < 7; ++i)
            add(container, around(0, 0, 0)).deaths = &deaths;
        build(container);
    }
    EXPECT_EQ(deaths, 7);
}

TEST(PrimitiveContainer, StartsWithAnEmptyHierarchyThatHasAnArena)
{
    const PrimitiveContainer container;

    EXPECT_THAT(container.primitives, IsEmpty());
    EXPECT_EQ(container.bvh.root, nullptr);
    EXPECT_NE(container.bvh.arena, nullptr);
}

TEST(PrimitiveContainer, EmptyHierarchyAnswersNothing)
{
    PrimitiveContainer container;
    for (int i = 0; i < 6; ++i)
        add(container, around(0, 0, 0)).enabled = false;
    build(container);
    std::vector<BVHPrimitive*> found;
    Result line, ray, triangle;
    line.hit = ray.hit = triangle.hit = true;
    int calls = 0;

    container.queryLine({{0, 0, 0}, {1, 0, 0}}, found);
    container.queryRay({{0, 0, 0}, {1, 0, 0}}, found);
    container.queryTriangle({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, found);
    container.queryBox(around(0, 0, 0), found);
    container.closestHitLine(line, {{0, 0, 0}, {1, 0, 0}});
    container.closestHitRay(ray, {{0, 0, 0}, {1, 0, 0}});
    container.firstHitTriangle(triangle, {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}});
    container.forEachInBox(around(0, 0, 0), [&calls](unsigned) { ++calls; });

    EXPECT_THAT(found, IsEmpty());
    EXPECT_FALSE(line.hit || ray.hit || triangle.hit);
    EXPECT_EQ(calls, 0);
}

TEST(PrimitiveContainer, EmptyHierarchyReleasesTheCallback)
{
    const PrimitiveContainer container;
    auto token = std::make_shared<int>();

    container.forEachInBox(around(0, 0, 0), [token](unsigned) {});

    EXPECT_EQ(token.use_count(), 1);
}

TEST(PrimitiveContainer, LineOfNoLengthIsRefusedUnlessThereIsNothingToMeet)
{
    PrimitiveContainer container;
    std::vector<BVHPrimitive*> found;
    const Linef point({1, 1, 1}, {1, 1, 1});
    EXPECT_NO_THROW(container.queryLine(point, found));

    addRow(container);
    EXPECT_THAT([&] { container.queryLine(point, found); },
                ThrowsMessage<std::overflow_error>(StrEq("0-length vector cannot be normalized.")));
}

TEST(PrimitiveContainer, QueriesAppend)
{
    PrimitiveContainer container;
    addRow(container);
    std::vector<BVHPrimitive*> found = {container.primitives[9]};

    container.queryBox(around(100, 0, 0), found);

    EXPECT_THAT(numbersOf(found), ElementsAre(9, 1));
}

TEST(PrimitiveContainer, CandidatesOfALineOrRayComeNearOnesFirst)
{
    PrimitiveContainer container;
    addRow(container);
    std::vector<BVHPrimitive*> up, down, rayUp, rayDown;

    container.queryLine({{250, 0, 0}, {2000, 0, 0}}, up);
    container.queryLine({{750, 0, 0}, {-2000, 0, 0}}, down);
    container.queryRay({{250, 0, 0}, {1, 0, 0}}, rayUp);
    container.queryRay({{750, 0, 0}, {-1, 0, 0}}, rayDown);

    // Within a leaf the order is its own.
    EXPECT_EQ(numbersOf(up),
              plainWalk(container.bvh.root, Linef({250, 0, 0}, {2000, 0, 0}), [](unsigned) { return true; }));
    EXPECT_EQ(numbersOf(rayUp), numbersOf(up));
    EXPECT_EQ(numbersOf(down), numbersOf(rayDown));
    EXPECT_EQ(sorted(numbersOf(up)), (std::vector<unsigned>{3, 4, 5, 6, 7, 8, 9}));
    EXPECT_EQ(sorted(numbersOf(down)), (std::vector<unsigned>{0, 1, 2, 3, 4, 5, 6, 7}));
    EXPECT_LT(numbersOf(up).front(), numbersOf(up).back());
    EXPECT_GT(numbersOf(down).front(), numbersOf(down).back());
}

TEST(PrimitiveContainer, ZeroComponentAlongTheSplitVisitsTheRightChildFirst)
{
    PrimitiveContainer container;
    addRow(container);
    std::vector<BVHPrimitive*> byLine, byTriangle, byBox;
    for (BVHPrimitive* primitive : container.primitives) // wide enough for one line to meet all
        primitive->box.set(-2000, -1, -1, 2000, 1, 1);
    const BVHNode* root = container.bvh.root;
    const auto stretch = [](const BVHNode* node, const auto& self) -> void {
        const_cast<BVHNode*>(node)->box.set(-2000, -1, -1, 2000, 1, 1);
        if (node->kind == BVHNode::Inner) {
            self(static_cast<const BVHInnerNode*>(node)->left, self);
            self(static_cast<const BVHInnerNode*>(node)->right, self);
        }
    };
    stretch(root, stretch);

    container.queryRay({{0, 0, -5}, {0, 0, 1}}, byLine);
    container.queryTriangle({{0, -3, 0}, {3, 3, 0}, {-3, 3, 0}}, byTriangle); // its normal is along z
    container.queryBox(around(0, 0, 0), byBox);

    EXPECT_EQ(numbersOf(byBox), numbersBelow(root));
    EXPECT_EQ(numbersOf(byTriangle), numbersOf(byLine));
    EXPECT_EQ(numbersOf(byLine), plainWalk(root, Ray({0, 0, -5}, {0, 0, 1}), [](unsigned) { return false; }));
    EXPECT_NE(numbersOf(byLine), numbersOf(byBox));
}

TEST(PrimitiveContainer, CandidatesAreThoseOfALoopInTheOrderOfThePlainWalk)
{
    std::size_t lineHits = 0, rayHits = 0, triangleHits = 0, boxHits = 0;
    for (unsigned seed = 0; seed < 200; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        const float reach = seed % 4 == 0 ? 15.0f : 1000.0f;
        Dice dice(seed, reach);
        PrimitiveContainer container;
        addSoup(container, dice, reach);
        const BVHNode* root = container.bvh.root;
        for (int i = 0; i < 10; ++i) {
            const Linef line = dice.line();
            const Ray ray = dice.ray();
            const Trianglef triangle = dice.triangle();
            const Box box = dice.box(reach / 3);
            const rob::Vec3f normal = (triangle.b - triangle.a).cross(triangle.c - triangle.a);
            std::vector<BVHPrimitive*> byLine, byRay, byTriangle, byBox;

            container.queryLine(line, byLine);
            container.queryRay(ray, byRay);
            container.queryTriangle(triangle, byTriangle);
            container.queryBox(box, byBox);

            EXPECT_EQ(numbersOf(byLine), plainWalk(root, line, [&](unsigned a) { return line.getDirection()[a] > 0; }));
            EXPECT_EQ(numbersOf(byRay), plainWalk(root, ray, [&](unsigned a) { return ray.direction[a] > 0; }));
            EXPECT_EQ(numbersOf(byTriangle), plainWalk(root, triangle, [&](unsigned a) { return normal[a] > 0; }));
            EXPECT_EQ(numbersOf(byBox), plainWalk(root, box, [](unsigned) { return true; }));
            EXPECT_EQ(sorted(numbersOf(byLine)), loopOverAll(container, line));
            EXPECT_EQ(sorted(numbersOf(byRay)), loopOverAll(container, ray));
            EXPECT_EQ(sorted(numbersOf(byTriangle)), loopOverAll(container, triangle));
            EXPECT_EQ(sorted(numbersOf(byBox)), loopOverAll(container, box));
            lineHits += byLine.size();
            rayHits += byRay.size();
            triangleHits += byTriangle.size();
            boxHits += byBox.size();
        }
    }
    for (const std::size_t hits : {lineHits, rayHits, triangleHits, boxHits})
        EXPECT_GT(hits, 1000u);
}

TEST(PrimitiveContainer, HierarchyDeeperThanTheStackInPlaceLosesNothing)
{
    // Each node's left child is a leaf that is put aside, so a ray downwards puts aside as many as there are.
    PrimitiveContainer container;
    const unsigned n = 300;
    Arena& arena = *container.bvh.arena;
    BVHNode* top = nullptr;
    for (unsigned i = 0; i < n; ++i) {
        auto* leaf = new (arena.allocate(sizeof(BVHLeaf), 8)) BVHLeaf();
        leaf->add(&add(container, around(0, 0, 0)));
        top = top == nullptr ? static_cast<BVHNode*>(leaf)
                             : new (arena.allocate(sizeof(BVHInnerNode), 8)) BVHInnerNode(leaf, top, 0);
    }
    container.bvh.root = top;
    std::vector<BVHPrimitive*> found;
    const Ray down({5, 0, 0}, {-1, 0, 0});

    container.queryRay(down, found);

    EXPECT_EQ(found.size(), n);
    EXPECT_EQ(numbersOf(found), plainWalk(top, down, [](unsigned) { return false; }));
}

TEST(PrimitiveContainer, ClosestHitIsThatOfALoop)
{
    for (unsigned seed = 0; seed < 200; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Dice dice(seed, 500);
        PrimitiveContainer container;
        addSoup(container, dice, 500);
        for (BVHPrimitive* primitive : container.primitives) {
            auto* fake = static_cast<FakePrimitive*>(primitive);
            fake->distance = dice.number(0, 100);
            fake->hits = dice.below(3) != 0;
        }
        const auto best = [&](const auto& question) {
            int number = -1;
            float distance = largest;
            for (const unsigned i : loopOverAll(container, question)) {
                const auto* fake = static_cast<const FakePrimitive*>(container.primitives[i]);
                if (fake->hits && fake->distance < distance) {
                    distance = fake->distance;
                    number = static_cast<int>(i);
                }
            }
            return number;
        };
        const Linef line = dice.line();
        const Ray ray = dice.ray();

        Result byLine, byRay;
        container.closestHitLine(byLine, line);
        container.closestHitRay(byRay, ray);

        EXPECT_EQ(byLine.pointIndex, best(line));
        EXPECT_EQ(byRay.pointIndex, best(ray));
        EXPECT_EQ(byLine.hit, byLine.pointIndex >= 0);
        EXPECT_EQ(byRay.hit, byRay.pointIndex >= 0);
    }
}

TEST(PrimitiveContainer, FirstCandidateWinsAtEqualDistance)
{
    PrimitiveContainer container;
    addRow(container);
    Result up, down;
    std::vector<BVHPrimitive*> upOrder, downOrder;
    const Ray rayUp({-5, 0, 0}, {1, 0, 0}), rayDown({2000, 0, 0}, {-1, 0, 0});
    container.queryRay(rayUp, upOrder);
    container.queryRay(rayDown, downOrder);

    container.closestHitRay(up, rayUp);
    container.closestHitRay(down, rayDown);

    EXPECT_EQ(static_cast<unsigned>(up.pointIndex), numbersOf(upOrder).front());
    EXPECT_EQ(static_cast<unsigned>(down.pointIndex), numbersOf(downOrder).front());
    EXPECT_NE(up.pointIndex, down.pointIndex);
}

TEST(PrimitiveContainer, FirstCandidateWinsAtEqualFractionOfALine)
{
    PrimitiveContainer container;
    addRow(container);
    Result up, down;
    std::vector<BVHPrimitive*> upOrder, downOrder;
    const Linef lineUp({-5, 0, 0}, {2000, 0, 0}), lineDown({2000, 0, 0}, {-5, 0, 0});
    container.queryLine(lineUp, upOrder);
    container.queryLine(lineDown, downOrder);

    container.closestHitLine(up, lineUp);
    container.closestHitLine(down, lineDown);

    EXPECT_EQ(static_cast<unsigned>(up.pointIndex), numbersOf(upOrder).front());
    EXPECT_EQ(static_cast<unsigned>(down.pointIndex), numbersOf(downOrder).front());
    EXPECT_NE(up.pointIndex, down.pointIndex);
}

TEST(PrimitiveContainer, HitAtTheLargestDistanceIsNotKept)
{
    PrimitiveContainer container;
    add(container, around(0, 0, 0)).distance = largest;
    build(container);
    Result result;

    container.closestHitRay(result, {{0, 0, 5}, {0, 0, -1}});

    EXPECT_FALSE(result.hit);
    EXPECT_EQ(result.pointIndex, -1);
}

TEST(PrimitiveContainer, ClosestHitAsksEveryCandidate)
{
    PrimitiveContainer container;
    addRow(container);
    Result result;

    container.closestHitRay(result, {{-5, 0, 0}, {1, 0, 0}});

    for (const BVHPrimitive* primitive : container.primitives)
        EXPECT_EQ(static_cast<const FakePrimitive*>(primitive)->asked, 1);
}

TEST(PrimitiveContainer, FirstHitOfATriangleEndsTheSearchWhateverTheDistances)
{
    PrimitiveContainer container;
    const Trianglef all({-1000, 0, -1000}, {5000, 0, -1000}, {0, 0, 5000});
    addRow(container);
    std::vector<BVHPrimitive*> order;
    container.queryTriangle(all, order);
    ASSERT_EQ(order.size(), 10u);
    const auto fake = [&order](int i) -> FakePrimitive& { return static_cast<FakePrimitive&>(*order[i]); };
    fake(0).hits = fake(1).hits = false;
    fake(2).distance = 50;
    Result result;

    container.firstHitTriangle(result, all);

    EXPECT_TRUE(result.hit);
    EXPECT_EQ(static_cast<unsigned>(result.pointIndex), fake(2).number);
    EXPECT_EQ(fake(1).asked, 1);
    EXPECT_EQ(fake(3).asked, 0);
}

TEST(PrimitiveContainer, TriangleWithoutAHitGivesADefaultResult)
{
    PrimitiveContainer container;
    add(container, around(0, 0, 0)).hits = false;
    build(container);
    Result result;
    result.hit = true;

    container.firstHitTriangle(result, {{-5, -5, 0}, {5, -5, 0}, {0, 5, 0}});

    EXPECT_FALSE(result.hit);
    EXPECT_EQ(result.distance, largest);
    EXPECT_EQ(result.pointIndex, -1);
}

TEST(PrimitiveContainer, ForEachInBoxReachesTheCandidatesInTheOrderOfTheBoxQuery)
{
    for (unsigned seed = 0; seed < 50; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Dice dice(seed, 1000);
        PrimitiveContainer container;
        addSoup(container, dice, 1000);
        const Box box = dice.box(800);
        std::vector<BVHPrimitive*> candidates;
        container.queryBox(box, candidates);
        std::vector<unsigned> called;

        container.forEachInBox(box, [&called](unsigned number) { called.push_back(number); });

        EXPECT_EQ(called, numbersOf(candidates));
    }
}

TEST(PrimitiveContainer, EachCandidateHasOneCopyOfTheCallback)
{
    PrimitiveContainer container;
    addRow(container);
    const CopiedCallback counted;
    const std::function<void(unsigned)> callback = counted;
    const int before = counted.copies();

    container.forEachInBox(Box(-1, -1, -1, 501, 1, 1), callback);

    EXPECT_EQ(counted.calls(), 6);
    EXPECT_EQ(counted.copies(), before + 1 + 6) << "that of the argument, and one each";
}

} // namespace
} // namespace vrk::selection
