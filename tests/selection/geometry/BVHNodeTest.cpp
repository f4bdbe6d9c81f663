#include "selection/geometry/BVHNode.h"

#include "Geometry.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vrk::selection {
namespace {

using testing::ElementsAre;

TEST(BVHLeaf, BoxGrowsWithItsPrimitives)
{
    FakePrimitive a(around(0, 0, 0)), b(around(5, 0, 0));
    BVHLeaf leaf;

    leaf.add(&a);
    leaf.add(&b);

    EXPECT_EQ(leaf.kind, 1u);
    EXPECT_EQ(leaf.count, 2u);
    EXPECT_EQ(leaf.box.min, rob::Posf(-1, -1, -1));
    EXPECT_EQ(leaf.box.max, rob::Posf(6, 1, 1));
}

TEST(BVHInnerNode, BoxIsTheUnionAndLeftIsCollectedFirst)
{
    FakePrimitive a(around(0, 0, 0)), b(around(5, 0, 0)), c(around(0, 9, 0));
    BVHLeaf left, right;
    left.add(&b);
    left.add(&a);
    right.add(&c);

    const BVHInnerNode inner(&left, &right, 1);

    EXPECT_EQ(inner.kind, 0u);
    EXPECT_EQ(inner.splitAxis, 1u);
    EXPECT_EQ(inner.box.min, rob::Posf(-1, -1, -1));
    EXPECT_EQ(inner.box.max, rob::Posf(6, 10, 1));
    EXPECT_FALSE(inner.box.centerDirty);
    std::vector<BVHPrimitive*> collected = {&c};
    inner.collectPrimitives(collected);
    EXPECT_THAT(collected, ElementsAre(&c, &b, &a, &c));
}

TEST(BVHPrimitive, AnswersNothingByDefault)
{
    const BVHPrimitive primitive;
    EXPECT_TRUE(primitive.enabled);
    EXPECT_FALSE(primitive.box.isValid());

    Result line, triangle, ray;
    line.hit = triangle.hit = ray.hit = true;
    primitive.intersectLine(line, {{0, 0, 0}, {1, 0, 0}});
    primitive.intersectTriangle(triangle, {});
    primitive.intersectRay(ray, {});
    int calls = 0;
    primitive.forEachInBox(around(0, 0, 0), [&calls](unsigned) { ++calls; });

    for (const Result* result : {&line, &triangle, &ray}) {
        EXPECT_FALSE(result->hit);
        EXPECT_EQ(result->distance, largest);
    }
    EXPECT_EQ(calls, 0);
}

} // namespace
} // namespace vrk::selection
