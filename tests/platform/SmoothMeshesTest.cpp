#include "platform/station/SmoothMeshes.h"

#include "geometry/Surfaces.h"
#include "platform/layout/Body.h"
#include "platform/layout/Part.h"
#include "platform/station/GeometryCache.h"
#include "platform/station/clouds/PlyMesh.h"
#include "station/CacheFolder.h"

#include <gmock/gmock.h>

#include <fstream>
#include <iterator>
#include <limits>
#include <numbers>

namespace vrk::station {
namespace {

using geometry::test::Surface;

constexpr double degree = std::numbers::pi / 180;

class SmoothMeshFileTest : public testing::Test {
protected:
    std::filesystem::path write(const std::string& name, const Surface& surface) const
    {
        const std::filesystem::path file = folder.path() / name;
        std::ofstream stream(file);
        stream << "solid s\n";
        for (std::size_t i = 0; i < surface.indices.size(); i += 3) {
            stream << "facet normal 0 0 1\nouter loop\n"; // as some programs write it of each
            for (std::size_t k = 0; k < 3; ++k) {
                const rob::Posf& p = surface.points[surface.indices[i + k]];
                stream << "vertex " << p.x << ' ' << p.y << ' ' << p.z << '\n';
            }
            stream << "endloop\nendfacet\n";
        }
        stream << "endsolid s\n";
        return file;
    }
    static geometry::TriangleMesh read(const std::filesystem::path& file)
    {
        std::ifstream stream(file, std::ios::binary);
        return parsePlyMesh(std::string(std::istreambuf_iterator<char>(stream), {})).mesh;
    }
    /// The greatest angle, in degrees, between the normal of a triangle of the wall and those at its corners.
    static double turnOfWall(const geometry::TriangleMesh& mesh)
    {
        double greatest = 0;
        for (std::size_t i = 0; i < mesh.indices.size(); i += 3) {
            const auto at = [&](std::size_t k) { return rob::Vec3d(mesh.points[mesh.indices[i + k]]); };
            const rob::Vec3d across = (at(1) - at(0)).cross(at(2) - at(0));
            if (std::abs(across.z) > 0.1 * across.length())
                continue;
            for (std::size_t k = 0; k < 3; ++k) {
                const rob::Vec3d normal(mesh.normals[mesh.indices[i + k]]);
                const double cosine = normal.dot(across) / (normal.length() * across.length());
                greatest = std::max(greatest, std::acos(std::min(cosine, 1.0)) / degree);
            }
        }
        return greatest;
    }

    test::TempFolder folder;
    test::CacheFolder cache;
};

TEST_F(SmoothMeshFileTest, LightGoesOnAcrossWhatIsBentByLessAndNotAcrossTheRest)
{
    const Surface cylinder = geometry::test::cylinder(24); // bent by 15 degrees along the wall, by 90 at the rims
    const std::filesystem::path file = write("cylinder.stl", cylinder);

    const geometry::TriangleMesh smooth = read(SmoothMeshFile(file, usualSmoothAngle));

    EXPECT_EQ(smooth.indices.size(), cylinder.indices.size());
    EXPECT_NEAR(turnOfWall(smooth), 7.5, 0.1);
    EXPECT_EQ(smooth.points.size(), 4u * 24 + 2) << "points at the rims have two normals, others are shared";
}

TEST_F(SmoothMeshFileTest, WithoutAnAngleEachFacetShows)
{
    const std::filesystem::path file = write("facets.stl", geometry::test::cylinder(24));

    EXPECT_NEAR(turnOfWall(read(SmoothMeshFile(file, 0))), 0, 0.1);
}

TEST_F(SmoothMeshFileTest, WhatWasSmoothedIsSmoothedAnewByAnotherAngle)
{
    const std::filesystem::path file = write("again.stl", geometry::test::cylinder(24));
    const std::filesystem::path facets = SmoothMeshFile(file, 0);

    EXPECT_NEAR(turnOfWall(read(SmoothMeshFile(facets, 20 * degree))), 7.5, 0.1);
    EXPECT_EQ(read(SmoothMeshFile(facets, 20 * degree)).points.size(), 4u * 24 + 2) << "it does not grow";
    EXPECT_TRUE(GeometryCache::Holds(facets));
}

TEST_F(SmoothMeshFileTest, TriangleWithoutAreaLeavesTheNormalsOfTheOthers)
{
    Surface cylinder = geometry::test::cylinder(24);
    cylinder.indices.insert(cylinder.indices.end(), {0, 0, 1});
    cylinder.points.emplace_back(200.0f, 0.0f, 0.0f);
    cylinder.points.emplace_back(300.0f, 0.0f, 0.0f);
    cylinder.points.emplace_back(400.0f, 0.0f, 0.0f);
    const auto last = static_cast<unsigned>(cylinder.points.size());
    cylinder.indices.insert(cylinder.indices.end(), {last - 3, last - 2, last - 1});

    EXPECT_NEAR(turnOfWall(read(SmoothMeshFile(write("line.stl", cylinder), 0))), 0, 0.1);
}

TEST_F(SmoothMeshFileTest, ColoursOfPointsStay)
{
    geometry::TriangleMesh mesh;
    mesh.points = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 0}};
    mesh.colors = {{255, 0, 0}, {0, 255, 0}, {0, 0, 255}, {9, 9, 9}};
    mesh.normals.assign(4, {1, 0, 0});
    mesh.indices = {0, 1, 2};
    const std::filesystem::path file = folder.path() / "colours.ply";
    writeWhole(file, plyOf(mesh));

    const geometry::TriangleMesh smooth = read(SmoothMeshFile(file, usualSmoothAngle));

    ASSERT_EQ(smooth.colors.size(), smooth.points.size());
    EXPECT_EQ(smooth.colors[smooth.indices[1]].g, 255);
    EXPECT_EQ(smooth.normals[smooth.indices[0]], rob::Vec3f(0, 0, 1)) << "those of the file gave way";
}

TEST_F(SmoothMeshFileTest, WhatIsNoAngleOrNoMeshIsRefused)
{
    const std::filesystem::path file = write("refused.stl", geometry::test::cube());
    for (const double angle : {-0.1, 3.2, std::numeric_limits<double>::quiet_NaN()})
        EXPECT_THAT([&] { SmoothMeshFile(file, angle); },
                    testing::ThrowsMessage<std::invalid_argument>("an angle of smoothing is one from 0 to pi"));
    EXPECT_THROW(SmoothMeshFile(folder.path() / "absent.stl", 0.5), ImportError);
    const std::filesystem::path damaged = folder.path() / "damaged.ply";
    writeWhole(damaged, "ply\nformat");
    EXPECT_THROW(SmoothMeshFile(damaged, 0.5), ImportError);
}

TEST_F(SmoothMeshFileTest, MeshesOfPartsAreDrawnFromTheOtherFile)
{
    const std::filesystem::path file = write("part.stl", geometry::test::cylinder(24));
    const auto parts = ImportFile(file);

    SmoothMeshes(parts, usualSmoothAngle);

    const layout::Body& body = *parts.front()->getBodies().front();
    EXPECT_EQ(body.getFileType(), "mesh");
    EXPECT_EQ(body.getGeometryUri(), SmoothMeshFile(file, usualSmoothAngle).string());
    EXPECT_EQ(body.getSourceFile(), "") << "or a saved station would read that one";
}

} // namespace
} // namespace vrk::station
