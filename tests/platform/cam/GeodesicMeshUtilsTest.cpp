#include "platform/cam/GeodesicMeshUtils.h"

#include "CamSurfaces.h"
#include "platform/cam/MeshAdapter.h"

#include <gmock/gmock.h>

#include <stdexcept>

namespace camcore {
namespace {

namespace test = vrk::test;
using Mesh = cadcam::TMesh<double>;

std::shared_ptr<Mesh> soupBox()
{
    return std::make_shared<Mesh>(vrk::cam::meshOf<double>(test::soupOf(test::boxOf(1))));
}

TEST(GeodesicMeshUtils, SoupIsCoveredByEdgesOfAboutTheLength)
{
    std::shared_ptr<Mesh> result;

    GeodesicMeshUtils::RemeshByEdgeLength(2, soupBox(), result);

    const vrk::cam::TriangleSurface covered = vrk::cam::weldedOf(*result);
    EXPECT_EQ(covered.vertices.size(), result->vertices()->size());
    EXPECT_NEAR(test::meanEdge(covered), 2, 0.4);
    EXPECT_NEAR(test::volumeOf(covered), 40 * 20 * 10, 1e-6);
}

TEST(GeodesicMeshUtils, TriangleNormalsAreTheCrossProductOfTheirEdges)
{
    std::shared_ptr<Mesh> result;

    GeodesicMeshUtils::RemeshByEdgeLength(4, soupBox(), result);

    ASSERT_FALSE(result->triangles()->empty());
    const auto at = [&](unsigned vertex) {
        const auto& p = (*result->vertices())[vertex];
        return vrk::rob::Vec3d(p.x, p.y, p.z);
    };
    for (const auto& triangle : *result->triangles()) {
        const auto& [a, b, c] = triangle.vertices;
        const vrk::rob::Vec3d normal = (at(c) - at(b)).cross(at(a) - at(b));
        EXPECT_EQ(vrk::rob::Vec3d(triangle.normal), normal);
        EXPECT_GT(normal.length(), 0);
    }
    EXPECT_EQ(result->normals()->size(), result->vertices()->size());
}

TEST(GeodesicMeshUtils, RefusedItLeavesTheResultAsItWas)
{
    const auto before = std::make_shared<Mesh>();
    std::shared_ptr<Mesh> result = before;

    EXPECT_THROW(GeodesicMeshUtils::RemeshByEdgeLength(2, nullptr, result), std::invalid_argument);
    EXPECT_THROW(GeodesicMeshUtils::RemeshByEdgeLength(0, soupBox(), result), std::invalid_argument);
    EXPECT_THROW(GeodesicMeshUtils::RemeshByEdgeLength(1e-9, soupBox(), result), std::length_error);

    EXPECT_EQ(result, before);
}

} // namespace
} // namespace camcore
