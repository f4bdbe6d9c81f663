#include "task/bands/Ribbon.h"

#include <BRepBuilderAPI_MakeEdge.hxx>
#include <gp_Circ.hxx>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <numbers>
#include <random>

namespace vrk::visual {
namespace {

using geometry::MfgVector;
using task::EdgeMfgShape;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StrEq;
using testing::ThrowsMessage;

std::vector<RibbonVertex> ribbonOf(const EdgeMfgShape& shape)
{
    return MakeRibbon(shape, shape.getPathPointsForRender());
}

std::unique_ptr<EdgeMfgShape> straightShape(std::vector<MfgVector> vectors)
{
    auto shape = std::make_unique<EdgeMfgShape>(1, "seam");
    shape->addEdge({BRepBuilderAPI_MakeEdge(gp_Pnt(0, 0, 0), gp_Pnt(100, 0, 0)).Edge(), std::move(vectors), 0, 0});
    return shape;
}

TEST(Ribbon, RunsAlongTheEdgeAndABandWidthAlongTheToolDirection)
{
    const std::vector<RibbonVertex> vertices = ribbonOf(*straightShape({{50, {0, 3, 4}}}));

    ASSERT_THAT(vertices, SizeIs(6));
    const double along[] = {0, 50, 100};
    for (std::size_t i = 0; i < 3; ++i) {
        const RibbonVertex& edge = vertices[2 * i];
        const RibbonVertex& rim = vertices[2 * i + 1];
        EXPECT_NEAR((edge.position - rob::Posd(along[i], 0, 0)).length(), 0, 1e-12) << i;
        EXPECT_NEAR((rim.position - rob::Posd(along[i], 15, 20)).length(), 0, 1e-12) << i;
        for (const RibbonVertex& vertex : {edge, rim})
            EXPECT_NEAR((vertex.normal - rob::Dird(0, -0.8, 0.6)).length(), 0, 1e-12) << i;
    }
}

TEST(Ribbon, OfACircleIsAConeOrATubeOfItsRadius)
{
    // A fan of directions: at the angle a of the circle the tool leans outwards by 30 degrees.
    EdgeMfgShape shape(1, "rim");
    std::vector<MfgVector> vectors;
    for (int i = 0; i <= 64; ++i) {
        const double a = 2 * std::numbers::pi * i / 64;
        vectors.push_back({a, {0.5 * std::cos(a), 0.5 * std::sin(a), std::sqrt(0.75)}});
    }
    shape.addEdge({BRepBuilderAPI_MakeEdge(gp_Circ(gp_Ax2(), 40)).Edge(), vectors, 0, 0});

    const std::vector<RibbonVertex> vertices = ribbonOf(shape);

    ASSERT_GE(vertices.size(), 130u);
    for (std::size_t i = 0; i < vertices.size(); i += 2) {
        const rob::Posd& low = vertices[i].position;
        const rob::Posd& high = vertices[i + 1].position;
        EXPECT_NEAR(std::hypot(low.x, low.y), 40, 1e-9);
        EXPECT_NEAR(low.z, 0, 1e-9);
        EXPECT_NEAR((high - low).length(), 25, 1e-9);
        EXPECT_NEAR(std::hypot(high.x, high.y), 40 + 12.5, 0.05) << "between two vectors the direction is in between";
        EXPECT_NEAR(vertices[i].normal.z, -0.5, 0.02) << "across the cone, outwards and down";
    }
}

TEST(Ribbon, OfAReversedEdgeRunsAgainstItsCurveAndTurnsItsNormal)
{
    EdgeMfgShape shape(1, "seam");
    TopoDS_Edge edge = BRepBuilderAPI_MakeEdge(gp_Pnt(0, 0, 0), gp_Pnt(100, 0, 0)).Edge();
    edge.Reverse();
    shape.addEdge({edge, {{50, {0, 0, 1}}}, 0, 0});

    const std::vector<RibbonVertex> vertices = ribbonOf(shape);

    ASSERT_THAT(vertices, SizeIs(6));
    EXPECT_NEAR(vertices[0].position.x, 100, 1e-12);
    EXPECT_NEAR(vertices[4].position.x, 0, 1e-12);
    EXPECT_NEAR(vertices[0].normal.y, 1, 1e-12);
    EXPECT_NEAR(ribbonOf(*straightShape({{50, {0, 0, 1}}}))[0].normal.y, -1, 1e-12);
}

TEST(Ribbon, VerticesLieByTheirEdgeAndNormalsAreSquareToBoth) // whatever the directions
{
    for (unsigned seed = 0; seed < 100; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        std::mt19937 random(seed);
        std::uniform_real_distribution<double> any(-1, 1);
        std::vector<MfgVector> vectors;
        for (int i = 0; i < 6; ++i)
            vectors.push_back({50 * (any(random) + 1), {0.2 * any(random), any(random), 1.5 + any(random)}});
        const auto owned = straightShape(vectors);
        const EdgeMfgShape& shape = *owned;
        const std::vector<EdgeMfgShape::PathPoint> points = shape.getPathPointsForRender();

        const std::vector<RibbonVertex> vertices = MakeRibbon(shape, points);

        ASSERT_EQ(vertices.size(), 2 * points.size());
        for (std::size_t i = 0; i < points.size(); ++i) {
            const rob::Vec3d across = vertices[2 * i + 1].position - vertices[2 * i].position;
            EXPECT_NEAR(vertices[2 * i].position.x, points[i].parameter, 1e-9);
            EXPECT_NEAR(across.length(), 25, 1e-9);
            EXPECT_NEAR(vertices[2 * i].normal.dot(across), 0, 1e-9);
            EXPECT_NEAR(vertices[2 * i].normal.x, 0, 1e-9);
            EXPECT_NEAR(vertices[2 * i].normal.length(), 1, 1e-12);
        }
    }
}

TEST(Ribbon, OfNoPointsIsEmpty)
{
    EXPECT_THAT(ribbonOf(EdgeMfgShape(1, "seam")), IsEmpty());
    EXPECT_THAT(MakeRibbon(*straightShape({{0, {0, 0, 1}}}), {}), IsEmpty());
}

TEST(Ribbon, ToolDirectionAlongTheEdgeIsRefused)
{
    for (const double along : {1.0, -1.0})
        EXPECT_THAT(
            [along] {
                ribbonOf(*straightShape({{50, {along, 0, 0}}}));
            },
            ThrowsMessage<std::overflow_error>(StrEq("0-length vector cannot be normalized.")));
    EXPECT_THAT(
        [] {
            ribbonOf(*straightShape({{50, {0, 0, 0}}}));
        },
        ThrowsMessage<std::overflow_error>(StrEq("0-length vector cannot be normalized.")));
}

TEST(Ribbon, PointOnAnEdgeThatIsNotThereIsRefused)
{
    const auto owned = straightShape({{50, {0, 0, 1}}});
    const EdgeMfgShape& shape = *owned;
    for (const int edge : {1, -1})
        EXPECT_THAT(([&] {
                        MakeRibbon(shape, std::vector<EdgeMfgShape::PathPoint>{{edge, 0}});
                    }),
                    ThrowsMessage<std::out_of_range>(StrEq("invalid vector subscript")));
}

} // namespace
} // namespace vrk::visual
