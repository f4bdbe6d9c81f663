#include "platform/station/ExportCloud.h"

#include "platform/station/ImportCloud.h"
#include "support/TempFolder.h"

#include <gmock/gmock.h>

#include <limits>
#include <numbers>
#include <random>

namespace vrk::station {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;
using testing::ThrowsMessage;
using Points = layout::PointCloud::Points;
using Normals = layout::PointCloud::Normals;
using Numbers = std::vector<std::uint32_t>;

/// As many points anywhere, with normals of length 1.
ExportedPoints randomPoints(std::mt19937& random, std::size_t count, double reach)
{
    std::uniform_real_distribution<double> place(-reach, reach), turn(0, 2 * std::numbers::pi);
    ExportedPoints made;
    for (std::size_t i = 0; i < count; ++i) {
        made.points.push_back(
            {static_cast<float>(place(random)), static_cast<float>(place(random)), static_cast<float>(place(random))});
        const double angle = turn(random);
        made.normals.emplace_back(static_cast<float>(std::cos(angle)), 0.0f, static_cast<float>(std::sin(angle)));
    }
    return made;
}

class ExportCloudTest : public testing::TestWithParam<const char*> {
protected:
    std::filesystem::path file() const { return folder / (std::string("points") + GetParam()); }

    test::TempFolder folder;
};

TEST_P(ExportCloudTest, WhatIsReadBackIsTheSameToTheBit)
{
    std::mt19937 random(4);
    for (const bool withNormals : {true, false}) {
        ExportedPoints points = randomPoints(random, 1000, 5000);
        if (!withNormals)
            points.normals.clear();

        ExportPointCloud(file(), points);
        const auto read = ImportPointCloud(file());

        EXPECT_EQ(read->getPoints(), Points(points.points.begin(), points.points.end()));
        EXPECT_EQ(read->getNormals(), points.normals);
        EXPECT_EQ(read->getPose(), rob::Posed());
    }
}

TEST_P(ExportCloudTest, PlacesThatOnlyDoublePrecisionHoldsLoseNothing)
{
    const ExportedPoints points{.points = {{4500000.125, 5300000.0625, 120.5}, {4500001.3, 5300002.7, 121.1}},
                                .normals = {}};

    ExportPointCloud(file(), points);
    const auto read = ImportPointCloud(file());

    ASSERT_EQ(read->getPoints().size(), 2u);
    for (std::size_t i = 0; i < 2; ++i)
        EXPECT_LT((read->getPose() * rob::Posd(read->getPoints()[i]) - points.points[i]).length(), 1e-6);
}

TEST_P(ExportCloudTest, FileThatIsThereIsReplacedAsAWholeOrNotAtAll)
{
    folder.write(file().filename(), "old");
    EXPECT_THAT([&] { ExportPointCloud(file(), {}); },
                ThrowsMessage<ExportError>(file().string() + ": there is no point to write"));
    EXPECT_EQ(test::TempFolder::Read(file()), "old");

    ExportPointCloud(file(), {.points = {{1, 2, 3}}, .normals = {}});
    EXPECT_THAT(ImportPointCloud(file())->getPoints(), ElementsAre(rob::Posf(1, 2, 3)));
}

TEST_P(ExportCloudTest, FolderThatIsNotThereIsToldInOneLine)
{
    const std::filesystem::path nowhere = folder / "no folder" / (std::string("points") + GetParam());
    EXPECT_THAT(
        [&] {
            ExportPointCloud(nowhere, {.points = {{1, 2, 3}}, .normals = {}});
        },
        ThrowsMessage<ExportError>(nowhere.string() + ": cannot be written"));
}

INSTANTIATE_TEST_SUITE_P(Kinds, ExportCloudTest, testing::Values(".ply", ".xyz", ".PLY"),
                         [](const auto& info) { return "Kind" + std::to_string(info.index); });

TEST(ExportCloud, OtherKindsAreRefused)
{
    const test::TempFolder folder;
    for (const char* name : {"a.pcd", "a.stl", "a"})
        EXPECT_THAT(
            [&] {
                ExportPointCloud(folder / name, {.points = {{1, 2, 3}}, .normals = {}});
            },
            ThrowsMessage<ExportError>((folder / name).string() +
                                       ": not a kind of point cloud that can be written (.ply, .xyz)"));
}

TEST(ExportCloud, TextIsAsShortAsItCanBeReadBack)
{
    const test::TempFolder folder;

    ExportPointCloud(folder / "a.xyz", {.points = {{0.1f, 2, -3}}, .normals = {{0, 0, 1}}});

    EXPECT_EQ(test::TempFolder::Read(folder / "a.xyz"), "0.1 2 -3 0 0 1\n");
}

TEST(PointsInWorld, StandWhereThePoseOfTheCloudPutsThem)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const layout::PointCloud cloud(1, "scan", {{1, 0, 0}, {nan, 0, 0}, {0, 2, 0}, {0, 0, 3}},
                                   Normals(4, rob::Vec3f(1, 0, 0)));
    const rob::Posed pose(rob::Posd(10, 20, 30), rob::Rotationd(0, 0, std::numbers::pi / 2));

    const ExportedPoints moved = PointsInWorld(cloud, pose, Numbers{0, 1, 3, 99});

    ASSERT_EQ(moved.points.size(), 2u) << "without those that are not finite, and without those that it has not";
    EXPECT_LT((moved.points[0] - rob::Posd(10, 21, 30)).length(), 1e-9);
    EXPECT_LT((moved.points[1] - rob::Posd(10, 20, 33)).length(), 1e-9);
    ASSERT_EQ(moved.normals.size(), 2u);
    EXPECT_LT((moved.normals[0] - rob::Vec3f(0, 1, 0)).length(), 1e-6f);
    EXPECT_THAT(PointsInWorld(cloud, {}, Numbers{2}).points, ElementsAre(rob::Posd(0, 2, 0)));
}

} // namespace
} // namespace vrk::station
