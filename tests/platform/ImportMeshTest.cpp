#include "platform/station/Import.h"

#include "platform/layout/Body.h"
#include "platform/layout/Part.h"
#include "platform/station/GeometryCache.h"
#include "platform/station/clouds/PlyMesh.h"
#include "station/CacheFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vrk::station {
namespace {

using testing::ThrowsMessage;

std::string triangle(const std::string& more = "", const std::string& values = "")
{
    return "ply\nformat ascii 1.0\nelement vertex 3\nproperty float x\nproperty float y\nproperty float z\n" + more +
           "element face 1\nproperty list uchar int vertex_indices\nend_header\n0 0 0" + values + "\n1 0 0" + values +
           "\n0 1 0" + values + "\n3 0 1 2\n";
}

const std::string colors = "property uchar red\nproperty uchar green\nproperty uchar blue\n";

class ImportMeshTest : public testing::Test {
protected:
    std::shared_ptr<layout::Body> bodyOf(const std::filesystem::path& file, LengthUnit unit = LengthUnit::Millimetre)
    {
        parts = ImportFile(file, {}, unit);
        return parts.at(0)->getBodies().at(0);
    }
    static geometry::TriangleMesh meshOf(const layout::Body& body)
    {
        return parsePlyMesh(test::TempFolder::Read(body.getGeometryUri())).mesh;
    }

    test::TempFolder folder;
    test::CacheFolder cache;
    std::vector<std::shared_ptr<layout::Part>> parts;
};

TEST_F(ImportMeshTest, PlyWithFacesBecomesABodyThatKnowsItsFile)
{
    const std::filesystem::path file = folder.write("robot hand.ply", triangle());

    const auto body = bodyOf(file);

    EXPECT_EQ(parts.at(0)->getName(), "robot hand");
    EXPECT_EQ(body->getFileType(), "mesh");
    EXPECT_TRUE(body->isMesh());
    EXPECT_TRUE(GeometryCache::Holds(body->getGeometryUri()));
    EXPECT_EQ(body->getSourceFile(), file.string());
    EXPECT_EQ(body->getMaterialName(), "MeshBody");
    EXPECT_EQ(meshOf(*body).indices.size(), 3u);
}

TEST_F(ImportMeshTest, ColoursOfThePointsAreKeptAndShown)
{
    const auto body = bodyOf(folder.write("a.ply", triangle(colors, " 1 2 3")));

    EXPECT_EQ(body->getMaterialName(), "Body");
    EXPECT_THAT(meshOf(*body).colors, testing::Each(PointColor{1, 2, 3}));
}

TEST_F(ImportMeshTest, UnitScalesPlyAndStl)
{
    const auto ply = bodyOf(folder.write("a.ply", triangle()), LengthUnit::Centimetre);
    EXPECT_EQ(meshOf(*ply).points.at(1), rob::Posf(10, 0, 0));
    EXPECT_EQ(ply->getSourceUnit(), LengthUnit::Centimetre);

    const std::filesystem::path file =
        folder.write("a.stl", "solid\nfacet normal 0 0 1 outer loop vertex 0 0 0 vertex 2 0 0 vertex 0 2 0 endloop "
                              "endfacet\nendsolid\n");
    const auto stl = bodyOf(file, LengthUnit::Inch);
    EXPECT_EQ(stl->getFileType(), "stl");
    EXPECT_EQ(stl->getSourceFile(), file.string());
    EXPECT_EQ(stl->getSourceUnit(), LengthUnit::Inch);
    const std::string bytes = test::TempFolder::Read(stl->getGeometryUri());
    ASSERT_EQ(bytes.size(), 134u);
    float x = 0;
    std::memcpy(&x, bytes.data() + 84 + 24, sizeof x);
    EXPECT_EQ(x, 50.8f);

    EXPECT_EQ(bodyOf(file)->getGeometryUri(), file.string()) << "millimetres need no copy";
    EXPECT_EQ(parts.at(0)->getBodies().at(0)->getSourceFile(), "");
}

TEST_F(ImportMeshTest, AnotherGeometryForgetsTheSource)
{
    const auto body = bodyOf(folder.write("a.ply", triangle()), LengthUnit::Metre);

    body->setGeometry("other.stl", "stl");

    EXPECT_EQ(body->getSourceFile(), "");
    EXPECT_EQ(body->getSourceUnit(), LengthUnit::Millimetre);
}

TEST_F(ImportMeshTest, PlyOfPointsAloneIsNoMesh)
{
    const std::filesystem::path cloud =
        folder.write("a.ply", "ply\nformat ascii 1.0\nelement vertex 1\nproperty float x\nproperty float y\nproperty "
                              "float z\nend_header\n1 2 3\n");

    EXPECT_FALSE(isMeshFile(cloud));
    EXPECT_TRUE(isMeshFile(folder.write("b.ply", triangle())));
    EXPECT_FALSE(isMeshFile(folder / "missing.ply"));
    EXPECT_THAT([&] { ImportFile(cloud); },
                ThrowsMessage<ImportError>(cloud.string() + ": the file holds no triangle"));
}

TEST_F(ImportMeshTest, DamageIsOneLineThatNamesFileAndPlace)
{
    const std::filesystem::path file = folder.write("a.ply", triangle().substr(0, triangle().size() - 4));

    EXPECT_THAT([&] { ImportFile(file); },
                ThrowsMessage<ImportError>(file.string() + ": line 13: a list of another length than it says"));
}

TEST_F(ImportMeshTest, SurveyedMeshKeepsItsDetailsAroundAPlaceNearIt)
{
    const auto body = bodyOf(folder.write(
        "a.ply", "ply\nformat ascii 1.0\nelement vertex 3\nproperty double x\nproperty double y\nproperty double z\n"
                 "element face 1\nproperty list uchar int vertex_indices\nend_header\n"
                 "5000000.25 0 0\n5000000.5 0 0\n5000000.25 1 0\n3 0 1 2\n"));

    EXPECT_EQ(parts.at(0)->getPose().position, rob::Posd(5000000, 0, 0));
    EXPECT_EQ(meshOf(*body).points.at(1), rob::Posf(0.5f, 0, 0));
}

} // namespace
} // namespace vrk::station
