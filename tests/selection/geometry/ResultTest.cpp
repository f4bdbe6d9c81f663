#include "selection/geometry/Result.h"

#include "Geometry.h"

#include "selection/geometry/BVHBuilder.h"
#include "selection/geometry/Cone.h"
#include "selection/geometry/Plane.h"

#include <BRep_Builder.hxx>
#include <TopoDS_Compound.hxx>
#include <gtest/gtest.h>

#include <type_traits>
#include <utility>

namespace vrk::selection {
namespace {

using rob::Posf;

TopoDS_Shape someShape()
{
    TopoDS_Compound compound;
    BRep_Builder().MakeCompound(compound);
    return compound;
}

/// How many handles share the thing behind a shape.
int holders(const TopoDS_Shape& shape)
{
    return shape.TShape()->GetRefCount();
}

TEST(Result, DefaultIsAValidMissAtTheLargestDistance)
{
    const Result result;

    EXPECT_TRUE(result.valid);
    EXPECT_FALSE(result.hit);
    EXPECT_EQ(result.distance, largest);
    EXPECT_EQ(result.visual, nullptr);
    EXPECT_EQ(result.position, Posf(0, 0, 0));
    EXPECT_EQ(result.localPosition, Posf(0, 0, 0));
    EXPECT_EQ(result.pose, rob::Posef());
    EXPECT_EQ(result.pointIndex, -1);
    for (const TopoDS_Shape* shape : {&result.edge, &result.face, &result.shape}) {
        EXPECT_TRUE(shape->IsNull());
        EXPECT_EQ(shape->Orientation(), TopAbs_EXTERNAL);
    }
}

TEST(Result, CopySharesTheShapesAndDestructionReleasesThem)
{
    const TopoDS_Shape shape = someShape();
    ASSERT_EQ(holders(shape), 1);
    {
        Result result;
        result.edge = result.face = result.shape = shape;
        const Result copy = result;
        EXPECT_EQ(holders(shape), 7);
        EXPECT_TRUE(copy.edge.IsSame(shape));
    }
    EXPECT_EQ(holders(shape), 1);
}

TEST(Result, MoveAssignmentSwapsTheShapesAndCopiesTheRest)
{
    const TopoDS_Shape before = someShape(), after = someShape();
    Result target, source;
    target.face = before;
    source.face = after;
    source.shape = after;
    source.hit = true;
    source.valid = false;
    source.distance = 3;
    source.position = {1, 2, 3};
    source.localPosition = {4, 5, 6};
    source.pose.position = {7, 8, 9};
    source.pointIndex = 12;

    target = std::move(source);

    EXPECT_TRUE(target.face.IsSame(after));
    EXPECT_TRUE(target.shape.IsSame(after));
    EXPECT_TRUE(source.face.IsSame(before));
    EXPECT_TRUE(source.shape.IsNull());
    EXPECT_TRUE(target.hit);
    EXPECT_FALSE(target.valid);
    EXPECT_EQ(target.distance, 3);
    EXPECT_EQ(target.position, Posf(1, 2, 3));
    EXPECT_EQ(target.localPosition, Posf(4, 5, 6));
    EXPECT_EQ(target.pose.position, Posf(7, 8, 9));
    EXPECT_EQ(target.pointIndex, 12);
}

TEST(Result, MoveConstructionLeavesNullShapesBehind)
{
    const TopoDS_Shape shape = someShape();
    Result source;
    source.edge = shape;
    source.hit = true;

    const Result moved = std::move(source);

    EXPECT_TRUE(moved.hit);
    EXPECT_TRUE(moved.edge.IsSame(shape));
    EXPECT_TRUE(source.edge.IsNull());
    EXPECT_EQ(holders(shape), 2);
}

template <typename OfVisual, typename OfSelection>
constexpr bool isOneType = std::is_same_v<OfVisual, OfSelection>;

TEST(Namespaces, BothNameTheSameTypes)
{
    EXPECT_TRUE((isOneType<visual::Result, selection::Result>));
    EXPECT_TRUE((isOneType<visual::Box, selection::Box>));
    EXPECT_TRUE((isOneType<visual::Ray, selection::Ray>));
    EXPECT_TRUE((isOneType<visual::Plane, selection::Plane>));
    EXPECT_TRUE((isOneType<visual::Cone, selection::Cone>));
    EXPECT_TRUE((isOneType<visual::Arena, selection::Arena>));
    EXPECT_TRUE((isOneType<visual::BVH, selection::BVH>));
    EXPECT_TRUE((isOneType<visual::BVHNode, selection::BVHNode>));
    EXPECT_TRUE((isOneType<visual::BVHInnerNode, selection::BVHInnerNode>));
    EXPECT_TRUE((isOneType<visual::BVHLeaf, selection::BVHLeaf>));
    EXPECT_TRUE((isOneType<visual::BVHPrimitive, selection::BVHPrimitive>));
    EXPECT_TRUE((isOneType<visual::BVHBuilder, selection::BVHBuilder>));
    EXPECT_TRUE((isOneType<visual::PrimitiveContainer, selection::PrimitiveContainer>));
}

} // namespace
} // namespace vrk::selection
