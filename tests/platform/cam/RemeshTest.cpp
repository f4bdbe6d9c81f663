#include "platform/cam/Remesh.h"

#include "CamSurfaces.h"
#include "platform/cam/SurfaceTree.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <stdexcept>

namespace vrk::cam {
namespace {

using testing::TestWithParam;
using testing::Values;

TriangleSurface remeshed(const TriangleSurface& surface, double edgeLength)
{
    RemeshOptions options;
    options.edgeLength = edgeLength;
    return remesh(surface, options).value();
}

struct CoverCase {
    const char* name;
    TriangleSurface (*make)();
    double edgeLength;
};
class CoveredAnew : public TestWithParam<CoverCase> {};

TEST_P(CoveredAnew, HasEvenTrianglesOfAboutTheLengthOnTheSurface)
{
    const TriangleSurface surface = GetParam().make();

    const TriangleSurface result = remeshed(surface, GetParam().edgeLength);

    EXPECT_NEAR(test::meanEdge(result), GetParam().edgeLength, 0.2 * GetParam().edgeLength);
    EXPECT_GT(test::meanSmallestAngle(result), 44);
    // An edge of four thirds of the length that lies across a bend of 60 degrees, the most that is no line, cuts it so far.
    const double most = 2.0 / 3 * std::tan(std::numbers::pi / 6) * GetParam().edgeLength;
    EXPECT_LE(test::farthest(result, surface), most);
    EXPECT_LE(test::farthest(surface, result), most);
}

TEST_P(CoveredAnew, KeepsItsTopologyAndHasNoTriangleWithoutArea)
{
    const TriangleSurface surface = GetParam().make();

    const TriangleSurface result = remeshed(surface, GetParam().edgeLength);

    EXPECT_EQ(test::eulerNumber(result), test::eulerNumber(surface));
    EXPECT_EQ(test::edgesOf(result).borders == 0, test::edgesOf(surface).borders == 0);
    EXPECT_EQ(test::edgesOf(result).more == 0, test::edgesOf(surface).more == 0);
    EXPECT_GT(test::leastArea(result), 0);
}

INSTANTIATE_TEST_SUITE_P(Surfaces, CoveredAnew,
                         Values(CoverCase{"WaveTorus", [] { return test::waveTorus(120, 60); }, 0.6},
                                CoverCase{"WaveTorusFiner", [] { return test::waveTorus(60, 30); }, 0.4},
                                CoverCase{"Box", [] { return test::boxOf(1); }, 1.5},
                                CoverCase{"BoxCoarser", [] { return test::boxOf(20); }, 3},
                                CoverCase{"OpenSheet", [] { return test::waveSheet(50); }, 1.2},
                                CoverCase{"FinOnSheet", [] { return test::finOnSheet(20); }, 1.5}),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(Remesh, SharpEdgesOfABoxStay)
{
    const TriangleSurface result = remeshed(test::boxOf(3), 1.7);

    EXPECT_NEAR(test::volumeOf(result), 40 * 20 * 10, 1e-6);
    EXPECT_NEAR(test::areaOf(result), 2 * (40 * 20 + 20 * 10 + 10 * 40), 1e-6);
}

TEST(Remesh, EndsKeepTheirLines)
{
    const TriangleSurface surface = test::finOnSheet(7);

    const TriangleSurface result = remeshed(surface, 2);

    EXPECT_NEAR(test::endsLength(result), test::endsLength(surface), 1e-6);
    EXPECT_NEAR(test::areaOf(result), test::areaOf(surface), 1e-6);
}

TEST(Remesh, ThinWallKeepsItsTwoSides)
{
    // The other side is nearer than the middle of the neighbours.
    TriangleSurface wall = test::boxOf(8);
    for (rob::Posd& place : wall.vertices)
        place.z *= 0.01;

    const TriangleSurface result = remeshed(wall, 2);

    EXPECT_NEAR(test::volumeOf(result), 40 * 20 * 0.1, 1e-6);
}

TEST(Remesh, SameSurfaceGivesTheSameResult)
{
    const TriangleSurface surface = test::waveTorus(60, 40);

    EXPECT_TRUE(test::isSame(remeshed(surface, 0.6), remeshed(surface, 0.6)));
}

TEST(Remesh, LengthThatIsNoneIsRefused)
{
    for (const double length :
         {0.0, -1.0, std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN()})
        EXPECT_THROW(remeshed(test::boxOf(1), length), std::invalid_argument);
}

TEST(Remesh, LengthThatMakesTooManyTrianglesIsRefused)
{
    for (const double length : {1e-9, 1e-3, std::numeric_limits<double>::denorm_min()})
        EXPECT_THROW(remeshed(test::boxOf(4), length), std::length_error);
}

TEST(Remesh, LengthBeyondTheSurfaceLeavesWhatLinesAsk)
{
    const TriangleSurface result = remeshed(test::boxOf(6), 1e6);

    EXPECT_NEAR(test::volumeOf(result), 40 * 20 * 10, 1e-6);
}

TEST(Remesh, NothingStaysNothing)
{
    EXPECT_TRUE(remeshed({}, 1).triangles.empty());
}

TEST(Remesh, StoppedItIsEmpty)
{
    std::stop_source source;
    RemeshOptions options;
    options.edgeLength = 0.3;
    options.stop = source.get_token();
    options.progress = [&source](double fraction) {
        if (fraction > 0.5)
            source.request_stop();
    };

    EXPECT_FALSE(remesh(test::waveTorus(120, 60), options).has_value());
}

TEST(Remesh, ProgressRisesToOne)
{
    std::vector<double> told;
    RemeshOptions options;
    options.edgeLength = 0.6;
    options.progress = [&told](double fraction) { told.push_back(fraction); };

    remesh(test::waveTorus(60, 40), options);

    EXPECT_TRUE(std::ranges::is_sorted(told));
    EXPECT_EQ(told.back(), 1);
}

TEST(Remesh, VerticesLieOnTheSurface)
{
    struct Case {
        TriangleSurface surface;
        double edgeLength;
    };
    for (const auto& [surface, edgeLength] : {Case{test::waveTorus(120, 60), 0.8}, Case{test::waveTorus(120, 60), 1.6},
                                              Case{test::waveSheet(50), 1}, Case{test::boxOf(4), 1.5}}) {
        const SurfaceTree tree(surface);

        const TriangleSurface result = remeshed(surface, edgeLength);

        const auto off = std::ranges::count_if(
            result.vertices, [&](const rob::Posd& vertex) { return tree.squaredDistance(rob::Vec3d(vertex)) > 1e-20; });
        EXPECT_EQ(off, 0) << "of " << result.vertices.size();
    }
}

} // namespace
} // namespace vrk::cam
