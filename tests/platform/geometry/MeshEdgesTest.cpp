#include "platform/geometry/MeshEdges.h"

#include "Surfaces.h"

#include <gmock/gmock.h>

#include <limits>

namespace vrk::geometry {
namespace {

using test::Surface;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr float nan = std::numeric_limits<float>::quiet_NaN();

/// Two squares of side 10 along the y axis: one lies in the plane z = 0, the other is bent up from it by so many degrees.
Surface bentBy(double degrees)
{
    const double angle = degrees * M_PI / 180;
    const auto x = static_cast<float>(10 * std::cos(angle)), z = static_cast<float>(10 * std::sin(angle));
    Surface made;
    made.points = {{-10, 0, 0}, {0, 0, 0}, {0, 10, 0}, {-10, 10, 0}, {x, 0, z}, {x, 10, z}};
    made.addQuad(0, 1, 2, 3);
    made.addQuad(1, 4, 5, 2);
    return made;
}

const test::Segment fold{test::Place{0, 0, 0}, test::Place{0, 10, 0}};

TEST(MeshEdges, CubeHasTwelve)
{
    const MeshEdges edges = test::edgesOf(test::cube());

    EXPECT_THAT(edges.points, SizeIs(24));
    EXPECT_DOUBLE_EQ(test::lengthOf(edges), 12) << "no diagonal, and none twice";
    EXPECT_EQ(edges.vertices, 8u);
    EXPECT_EQ(edges.triangles, 12u);
}

TEST(MeshEdges, TrianglesOfTheirOwnVerticesAreJoinedWhereTheseLie)
{
    const Surface soup = test::soupOf(test::cube());

    const MeshEdges edges = test::edgesOf(soup);

    EXPECT_EQ(test::segmentsOf(edges), test::segmentsOf(test::edgesOf(test::cube())));
    EXPECT_EQ(edges.vertices, 36u);
}

TEST(MeshEdges, VerticesMayDifferByAMillionthOfTheExtent)
{
    Surface soup = test::soupOf(test::cube(1000));
    std::mt19937 random(1);
    std::uniform_real_distribution<float> shift(-2e-4f, 2e-4f);
    for (rob::Posf& point : soup.points)
        point = rob::Posf(point.x + shift(random), point.y + shift(random), point.z + shift(random));

    EXPECT_THAT(test::edgesOf(soup).points, SizeIs(24));
}

TEST(MeshEdges, BothZerosAreOnePlace)
{
    Surface soup = test::soupOf(test::cube());
    for (std::size_t i = 0; i < soup.points.size(); i += 2)
        if (soup.points[i].z == 0)
            soup.points[i].z = -0.0f;

    EXPECT_THAT(test::edgesOf(soup).points, SizeIs(24));
}

TEST(MeshEdges, CylinderHasOnlyItsRims)
{
    const MeshEdges edges = test::edgesOf(test::cylinder(24));

    EXPECT_THAT(edges.points, SizeIs(2 * 2 * 24));
    for (std::size_t i = 0; i < edges.points.size(); i += 2)
        EXPECT_EQ(edges.points[i].z, edges.points[i + 1].z) << "segment " << i / 2;
}

struct BendCase {
    const char* name;
    double degrees;
    bool isDrawn;
};
class MeshEdgesBend : public testing::TestWithParam<BendCase> {};
TEST_P(MeshEdgesBend, IsDrawnBeyondThirtyFiveDegrees)
{
    const BendCase& c = GetParam();

    EXPECT_EQ(test::segmentsOf(test::edgesOf(bentBy(c.degrees))).count(fold), c.isDrawn ? 1u : 0u);
}
INSTANTIATE_TEST_SUITE_P(Table, MeshEdgesBend,
                         testing::Values(BendCase{"Flat", 0, false}, BendCase{"Less", 34, false},
                                         BendCase{"More", 36, true}, BendCase{"Down", -36, true},
                                         BendCase{"Right", 90, true}, BendCase{"Sharp", 170, true}),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(MeshEdges, SideThatATriangleShowsTellsNothing)
{
    for (const double degrees : {0.0, 36.0}) {
        Surface turned = bentBy(degrees);
        for (std::size_t i = 6; i < 12; i += 3)
            std::swap(turned.indices[i], turned.indices[i + 1]);

        EXPECT_EQ(test::segmentsOf(test::edgesOf(turned)), test::segmentsOf(test::edgesOf(bentBy(degrees))));
    }
}

TEST(MeshEdges, SurfaceOfTwoSidesIsDrawnAsOneOfOne)
{
    Surface both = bentBy(20);
    const std::vector<unsigned> front = both.indices;
    for (std::size_t i = 0; i < front.size(); i += 3)
        both.indices.insert(both.indices.end(), {front[i + 1], front[i], front[i + 2]});

    EXPECT_EQ(test::segmentsOf(test::edgesOf(both)), test::segmentsOf(test::edgesOf(bentBy(20))));
}

TEST(MeshEdges, BordersAreDrawnAndWhatIsFlatWithinIsNot)
{
    const MeshEdges edges = test::edgesOf(test::field(3, [](unsigned, unsigned) { return 0.0; }));

    EXPECT_THAT(edges.points, SizeIs(2 * 12));
    EXPECT_DOUBLE_EQ(test::lengthOf(edges), 12);
}

TEST(MeshEdges, EdgeOfThreeTrianglesIsDrawnOnce)
{
    Surface fin;
    fin.points = {{0, 0, 0}, {0, 10, 0}, {10, 0, 0}, {-10, 0, 0}, {0, 0, 10}};
    fin.indices = {0, 2, 1, 0, 1, 3, 0, 1, 4};

    EXPECT_EQ(test::segmentsOf(test::edgesOf(fin)).count(fold), 1u);
    EXPECT_THAT(test::edgesOf(fin).points, SizeIs(2 * 7));
}

TEST(MeshEdges, TrianglesThatAreNoneArePassedOver)
{
    Surface cube = test::cube();
    const auto farAway = static_cast<unsigned>(cube.points.size());
    cube.points.emplace_back(nan, 0.0f, 0.0f);
    cube.points.emplace_back(std::numeric_limits<float>::infinity(), 0.0f, 0.0f);
    cube.indices.insert(cube.indices.end(), {0, 0, 1, 2, 2, 2, 0, 1, farAway, 1, 2, farAway + 1, 0, 1, 1000, 5});

    EXPECT_EQ(test::segmentsOf(test::edgesOf(cube)), test::segmentsOf(test::edgesOf(test::cube())));
}

TEST(MeshEdges, NoCoordinateIsNotFinite)
{
    Surface soup = test::soupOf(test::cube());
    soup.points[7].y = nan;

    const MeshEdges edges = test::edgesOf(soup);

    EXPECT_THAT(edges.points, Not(IsEmpty()));
    EXPECT_TRUE(std::ranges::all_of(edges.points, [](const rob::Posf& p) { return p.isFinite(); }));
}

TEST(MeshEdges, NothingAndASinglePlaceHaveNone)
{
    EXPECT_THAT(test::edgesOf({}).points, IsEmpty());
    EXPECT_THAT(test::edgesOf({{{1, 1, 1}, {1, 1, 1}, {1, 1, 1}}, {0, 1, 2}}).points, IsEmpty());
    EXPECT_THAT(test::edgesOf({{{nan, nan, nan}}, {0, 0, 0}}).points, IsEmpty());
}

/// A square of side 10 beside two triangles that meet in the middle of its side, `flat` or bent up there.
Surface withVertexInASide(bool flat)
{
    Surface made;
    const float x = flat ? 10.0f : 0.0f, z = flat ? 0.0f : 10.0f;
    made.points = {{-10, 0, 0}, {0, 0, 0}, {0, 10, 0}, {-10, 10, 0}, {0, 5, 0}, {x, 5, z}};
    made.addQuad(0, 1, 2, 3);
    made.indices.insert(made.indices.end(), {1, 5, 4, 4, 5, 2});
    return made;
}

TEST(MeshEdges, VertexInTheSideOfATriangleMakesNoBorderOfAFlatPlace)
{
    EXPECT_THAT(test::edgesOf(withVertexInASide(true)).points, SizeIs(2 * 5))
        << "three of the square, two of the others";
}

TEST(MeshEdges, VertexInTheSideOfATriangleSplitsTheBend)
{
    const auto segments = test::segmentsOf(test::edgesOf(withVertexInASide(false)));

    EXPECT_EQ(segments.count(fold), 0u);
    EXPECT_EQ(segments.count({test::Place{0, 0, 0}, test::Place{0, 5, 0}}), 1u);
    EXPECT_EQ(segments.count({test::Place{0, 5, 0}, test::Place{0, 10, 0}}), 1u);
}

TEST(MeshEdges, TriangleWithoutAreaBetweenOthersIsNotSeen)
{
    Surface filled = withVertexInASide(true);
    filled.indices.insert(filled.indices.end(), {1, 2, 4}); // 1, 4 and 2 lie on one line

    EXPECT_EQ(test::segmentsOf(test::edgesOf(filled)), test::segmentsOf(test::edgesOf(withVertexInASide(true))));
}

TEST(MeshEdges, TriangleWithoutAreaHidesNoBend)
{
    Surface filled = withVertexInASide(false);
    filled.indices.insert(filled.indices.end(), {1, 2, 4});

    EXPECT_EQ(test::segmentsOf(test::edgesOf(filled)), test::segmentsOf(test::edgesOf(withVertexInASide(false))));
}

TEST(MeshEdges, StrayVertexFarOutLeavesTheOthersApart)
{
    Surface cube = test::cube(100);
    cube.points.emplace_back(1e12f, 0.0f, 0.0f);

    const MeshEdges edges = test::edgesOf(cube);

    EXPECT_THAT(edges.points, IsEmpty()) << "it is a point, seen from there";
    EXPECT_EQ(edges.triangles, 12u);
}

} // namespace
} // namespace vrk::geometry
