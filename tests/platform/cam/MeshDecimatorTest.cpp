#include "platform/cam/MeshDecimator.h"

#include "CamSurfaces.h"
#include "platform/cam/MeshAdapter.h"

#include <gmock/gmock.h>

#include <limits>
#include <stdexcept>

namespace OpenMeshUtils {
namespace {

using vrk::cam::meshOf;
namespace test = vrk::test;

TEST(MeshDecimator, SoupIsWeldedAndMadeCoarser)
{
    const auto soup = meshOf<double>(test::soupOf(test::boxOf(8)));

    const auto result = MeshDecimator::DecimateMesh<double>(soup, 0.01, true);

    EXPECT_EQ(result.triangles()->size(), 12u);
    EXPECT_EQ(result.vertices()->size(), 8u);
    EXPECT_EQ(result.normals()->size(), 8u);
}

TEST(MeshDecimator, CountIsReached)
{
    const auto torus = meshOf<double>(test::waveTorus(60, 40));

    EXPECT_EQ(MeshDecimator::DecimateMeshToCount<double>(torus, 600, false).triangles()->size(), 600u);
}

TEST(MeshDecimator, SourceIsLeftAsItIs)
{
    const auto torus = meshOf<double>(test::waveTorus(30, 20));
    const auto vertices = *torus.vertices();
    const auto triangles = *torus.triangles();

    MeshDecimator::DecimateMesh<double>(torus, 0.5, true);

    EXPECT_EQ(*torus.vertices(), vertices);
    EXPECT_EQ(*torus.triangles(), triangles);
}

TEST(MeshDecimator, NothingStaysNothing)
{
    EXPECT_TRUE(MeshDecimator::DecimateMesh<double>(cadcam::TMesh<double>(), 1, true).triangles()->empty());
}

TEST(MeshDecimator, ToleranceThatIsNoneIsRefused)
{
    for (const double tolerance : {-1.0, std::numeric_limits<double>::quiet_NaN()})
        EXPECT_THROW(MeshDecimator::DecimateMesh<double>(cadcam::TMesh<double>(), tolerance, true),
                     std::invalid_argument);
}

TEST(MeshDecimator, TriangleOfAVertexThatThereIsNotIsRefused)
{
    EXPECT_THROW(MeshDecimator::DecimateMesh<double>(cadcam::TMesh<double>({{}}, {{{0, 0, 1}}}), 1, true),
                 std::out_of_range);
}

TEST(TMesh, TriangleHasThreeFurtherIndicesOfAllOnes)
{
    EXPECT_THAT(cadcam::TTriangle<cadcam::TPoint3d<double>>().others, testing::Each(0xFFFFFFFFu));
}

} // namespace
} // namespace OpenMeshUtils
