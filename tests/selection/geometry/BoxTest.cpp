#include "selection/geometry/Box.h"

#include "Geometry.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <sstream>
#include <string>

namespace vrk::selection {
namespace {

using rob::Posf;
using testing::TestWithParam;
using testing::Values;

TEST(Box, DefaultIsEmptyWithASettledCentreAtTheOrigin)
{
    const Box box;

    EXPECT_EQ(box.min, Posf(largest, largest, largest));
    EXPECT_EQ(box.max, Posf(-largest, -largest, -largest));
    EXPECT_EQ(box.center, Posf(0, 0, 0));
    EXPECT_FALSE(box.centerDirty);
    EXPECT_FALSE(box.isValid());
}

TEST(Box, CornersGiveASettledCentre)
{
    const Box made(-1, -2, -3, 3, 4, 5);
    Box set;
    set.addPoint({9, 9, 9});
    set.set(-1, -2, -3, 3, 4, 5);

    for (const Box& box : {made, set}) {
        EXPECT_EQ(box.min, Posf(-1, -2, -3));
        EXPECT_EQ(box.max, Posf(3, 4, 5));
        EXPECT_EQ(box.center, Posf(1, 1, 1));
        EXPECT_FALSE(box.centerDirty);
    }
}

TEST(Box, AssignmentSettlesTheCentre)
{
    Box source;
    source.addPoint({1, 1, 1});
    source.addPoint({3, 3, 3});
    ASSERT_TRUE(source.centerDirty);

    Box box;
    box = source;

    EXPECT_FALSE(box.centerDirty);
    EXPECT_EQ(box.center, Posf(2, 2, 2));
    EXPECT_TRUE(source.centerDirty);
}

TEST(Box, AddingABoxToTheEmptyOneGivesThatBox)
{
    Box box;
    box.addBox(Box(1, 2, 3, 4, 5, 6));

    EXPECT_EQ(box.min, Posf(1, 2, 3));
    EXPECT_EQ(box.max, Posf(4, 5, 6));
    EXPECT_EQ(box.center, Posf(2.5f, 3.5f, 4.5f));
}

TEST(Box, AddBoxIsTheUnionAndSettlesTheCentre)
{
    Box box(0, 0, 0, 1, 1, 1);
    box.addPoint({0, 0, 0});
    box.addBox(Box(-3, 0.25f, 0.25f, -2, 0.5f, 5));

    EXPECT_EQ(box.min, Posf(-3, 0, 0));
    EXPECT_EQ(box.max, Posf(1, 1, 5));
    EXPECT_EQ(box.center, Posf(-1, 0.5f, 2.5f));
    EXPECT_FALSE(box.centerDirty);
}

TEST(Box, AddPointLeavesTheOldCentreUntilItIsAskedFor)
{
    Box box(0, 0, 0, 2, 2, 2);
    box.addPoint({4, 1, 1});

    EXPECT_TRUE(box.centerDirty);
    EXPECT_EQ(box.center, Posf(1, 1, 1));
    EXPECT_EQ(box.getCenter(), Posf(2, 1, 1));
    EXPECT_FALSE(box.centerDirty);
}

TEST(Box, SinglePointIsAValidBoxOfNoSize)
{
    Box box;
    box.addPoint({1, 2, 3});

    EXPECT_TRUE(box.isValid());
    EXPECT_EQ(box.getArea(), 0);
    EXPECT_TRUE(box.isPointInside(1, 2, 3));
    EXPECT_EQ(box.getCenter(), Posf(1, 2, 3));
}

TEST(Box, AddPointsIsAddPointOfEach)
{
    std::vector<Posf> points = {{1, 5, 2}, {3, 4, 9}, {-1, 7, 4}};
    Box box;
    box.addPoints(std::span<Posf>(points));

    EXPECT_EQ(box.min, Posf(-1, 4, 2));
    EXPECT_EQ(box.max, Posf(3, 7, 9));
    EXPECT_TRUE(box.centerDirty);
}

TEST(Box, NoPointsChangeNothing)
{
    Box box(0, 0, 0, 2, 2, 2);
    box.addPoints({});

    EXPECT_EQ(box.min, Posf(0, 0, 0));
    EXPECT_EQ(box.max, Posf(2, 2, 2));
    EXPECT_FALSE(box.centerDirty);
}

TEST(Box, NanMovesNoCorner)
{
    Box box(0, 0, 0, 1, 1, 1);
    box.addPoint({nan, 2, nan});
    Box onlyNan;
    onlyNan.addPoint({nan, nan, nan});

    EXPECT_EQ(box.min, Posf(0, 0, 0));
    EXPECT_EQ(box.max, Posf(1, 2, 1));
    EXPECT_FALSE(onlyNan.isValid());
}

TEST(Box, ExpandMovesTheCornersByOneAndLeavesTheCentreAlone)
{
    Box settled(0, 0, 0, 2, 4, 6);
    settled.expand();
    Box dirty;
    dirty.addPoint({1, 1, 1});
    dirty.expand();

    EXPECT_EQ(settled.min, Posf(-1, -1, -1));
    EXPECT_EQ(settled.max, Posf(3, 5, 7));
    EXPECT_EQ(settled.center, Posf(1, 2, 3));
    EXPECT_FALSE(settled.centerDirty);
    EXPECT_TRUE(dirty.centerDirty);
    EXPECT_EQ(dirty.center, Posf(0, 0, 0));
}

TEST(Box, UpdateCenterSettlesIt)
{
    Box box;
    box.addPoint({2, 4, 6});
    box.updateCenter();

    EXPECT_EQ(box.center, Posf(2, 4, 6));
    EXPECT_FALSE(box.centerDirty);
}

struct CornerCase {
    unsigned index;
    Posf corner;
};
class BoxCorner : public TestWithParam<CornerCase> {};
TEST_P(BoxCorner, IsAsListed)
{
    EXPECT_EQ(Box(-1, -2, -3, 1, 2, 3).getCorner(GetParam().index), GetParam().corner);
}
INSTANTIATE_TEST_SUITE_P(Table, BoxCorner,
                         Values(CornerCase{0, {-1, -2, -3}}, CornerCase{1, {1, -2, -3}}, CornerCase{2, {1, 2, -3}},
                                CornerCase{3, {-1, 2, -3}}, CornerCase{4, {-1, -2, 3}}, CornerCase{5, {1, -2, 3}},
                                CornerCase{6, {1, 2, 3}}, CornerCase{7, {-1, 2, 3}}, CornerCase{8, {0, 0, 0}},
                                CornerCase{4000000000u, {0, 0, 0}}),
                         [](const auto& info) { return "Index" + std::to_string(info.param.index); });

TEST(Box, ExtentOfAnyOtherAxisIsThatOfZ)
{
    const Box box(0, 0, 0, 1, 2, 3);

    EXPECT_EQ(box.getExtent(0), 1);
    EXPECT_EQ(box.getExtent(1), 2);
    EXPECT_EQ(box.getExtent(2), 3);
    EXPECT_EQ(box.getExtent(7), 3);
}

TEST(Box, BothAreasOfAUnitCubeAreSix)
{
    const Box cube(0, 0, 0, 1, 1, 1);

    EXPECT_EQ(cube.getArea(), 6);
    EXPECT_EQ(cube.getSurfaceArea(), 6);
}

TEST(Box, BothAreasCountEveryPairOfFaces)
{
    const Box box(1, 1, 1, 3, 4, 6);

    EXPECT_EQ(box.getArea(), 2 * (2 * 5 + 2 * 3 + 3 * 5));
    EXPECT_EQ(box.getSurfaceArea(), 2 * (2 * 5 + 2 * 3 + 3 * 5));
}

struct MaxDimCase {
    const char* name;
    float dx, dy, dz;
    unsigned axis;
};
class BoxMaxDim : public TestWithParam<MaxDimCase> {};
TEST_P(BoxMaxDim, IsTheLongestAxisAndTheLaterOneOnATie)
{
    const MaxDimCase& c = GetParam();
    EXPECT_EQ(Box(0, 0, 0, c.dx, c.dy, c.dz).maxDim(), c.axis);
}
INSTANTIATE_TEST_SUITE_P(Table, BoxMaxDim,
                         Values(MaxDimCase{"X", 3, 2, 1, 0}, MaxDimCase{"Y", 2, 3, 1, 1}, MaxDimCase{"Z", 1, 2, 3, 2},
                                MaxDimCase{"XBeforeZ", 3, 1, 2, 0}, MaxDimCase{"ZBeforeX", 2, 1, 3, 2},
                                MaxDimCase{"XAndYTie", 3, 3, 1, 1}, MaxDimCase{"XAndZTie", 3, 1, 3, 2},
                                MaxDimCase{"YAndZTie", 1, 3, 3, 2}, MaxDimCase{"Cube", 1, 1, 1, 2},
                                MaxDimCase{"Nan", nan, nan, nan, 2}),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(Box, LongestAxisOfTheEmptyBoxIsZ)
{
    EXPECT_EQ(Box().maxDim(), 2u);
}

TEST(Box, IsValidNeedsAllThreeAxes)
{
    EXPECT_TRUE(Box(0, 0, 0, 0, 0, 0).isValid());
    EXPECT_FALSE(Box(1, 0, 0, 0, 1, 1).isValid());
    EXPECT_FALSE(Box(0, 1, 0, 1, 0, 1).isValid());
    EXPECT_FALSE(Box(0, 0, 1, 1, 1, 0).isValid());
    EXPECT_FALSE(Box(nan, 0, 0, 1, 1, 1).isValid());
}

TEST(Box, FacesBelongToTheInside)
{
    const Box box(0, 0, 0, 1, 2, 3);

    for (unsigned i = 0; i < 8; ++i) {
        const Posf corner = box.getCorner(i);
        EXPECT_TRUE(box.isPointInside(corner.x, corner.y, corner.z));
    }
    EXPECT_FALSE(box.isPointInside(-0.001f, 1, 1));
    EXPECT_FALSE(box.isPointInside(1.001f, 1, 1));
    EXPECT_FALSE(box.isPointInside(0.5f, -0.001f, 1));
    EXPECT_FALSE(box.isPointInside(0.5f, 2.001f, 1));
    EXPECT_FALSE(box.isPointInside(0.5f, 1, -0.001f));
    EXPECT_FALSE(box.isPointInside(0.5f, 1, 3.001f));
    EXPECT_FALSE(box.isPointInside(nan, 1, 1));
}

TEST(Box, TransformedIsTheSettledBoxOfTheMovedCorners)
{
    const float half = std::sqrt(0.5f);
    const rob::Posef quarterTurnAboutZ({10, 20, 30}, rob::Rotationf(half, 0, 0, half));

    const Box moved = Box(0, 0, 0, 1, 2, 3).transformed(quarterTurnAboutZ);

    EXPECT_NEAR(moved.min.x, 8, 1e-5f);
    EXPECT_NEAR(moved.min.y, 20, 1e-5f);
    EXPECT_NEAR(moved.min.z, 30, 1e-5f);
    EXPECT_NEAR(moved.max.x, 10, 1e-5f);
    EXPECT_NEAR(moved.max.y, 21, 1e-5f);
    EXPECT_NEAR(moved.max.z, 33, 1e-5f);
    EXPECT_NEAR(moved.center.y, 20.5f, 1e-5f);
    EXPECT_FALSE(moved.centerDirty);
}

TEST(Box, TransformAssignsTheTransformedBox)
{
    for (unsigned seed = 0; seed < 100; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Dice dice(seed);
        Box box = dice.box(5);
        const rob::Posef pose(dice.point(), rob::Rotationf(dice.number(-3, 3), rob::normalized(dice.point())));

        const Box moved = box.transformed(pose);
        box.transform(pose);

        EXPECT_EQ(box.min, moved.min);
        EXPECT_EQ(box.max, moved.max);
        EXPECT_EQ(box.center, moved.center);
    }
}

TEST(Box, DumpWritesBothCorners)
{
    std::ostringstream out;
    Box(1, 2.5f, -3, 4, 5, 6).dump(out);

    EXPECT_EQ(out.str(), "box:\n1, 2.5, -3\n4, 5, 6\n");
}

} // namespace
} // namespace vrk::selection
