#include "platform/station/ImportCloud.h"

#include "CloudFiles.h"

#include "platform/common/Logger.h"
#include "platform/layout/Layout.h"
#include "platform/layout/PointCloud.h"
#include "platform/sdf/SdfManager.h"
#include "support/TempFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vrk::station {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::ThrowsMessage;

/// What the application's user is told while it lives.
class Heard {
public:
    Heard()
    {
        AppLogger::inst()->setListener([this](LogLevel, const std::string& text) { messages.push_back(text); });
    }
    ~Heard() { AppLogger::inst()->setListener({}); }
    Heard(const Heard&) = delete;
    Heard& operator=(const Heard&) = delete;

    std::vector<std::string> messages;
};

class ImportCloudTest : public testing::Test {
protected:
    void expectRefused(const std::string& name, const std::string& bytes, const std::string& cause) const
    {
        const std::filesystem::path file = folder.write(name, bytes);
        EXPECT_THAT([&] { ImportPointCloud(file); }, ThrowsMessage<ImportError>(file.string() + ": " + cause));
    }

    test::TempFolder folder;
    Heard heard;
};

TEST_F(ImportCloudTest, EndingTellsAPointCloudInAnyCase)
{
    for (const char* name : {"a.ply", "a.pcd", "a.xyz", "A.PLY", "a.Pcd", "a.b.XYZ"})
        EXPECT_TRUE(isPointCloudFile(name)) << name;
    for (const char* name : {"a.stl", "ply", ".ply", "a.plyx", "a", ""})
        EXPECT_FALSE(isPointCloudFile(name)) << name;
}

TEST_F(ImportCloudTest, EachKindBecomesACloudThatNamesItsFile)
{
    const std::vector<std::pair<std::string, std::string>> files{
        {"ply", test::plyHeader("ascii", 1) + "1 2 3\n"},
        {"PCD", test::pcdHeader("ascii", 1) + "1 2 3\n"},
        {"xyz", "1 2 3\n"},
    };
    for (const auto& [ending, bytes] : files) {
        const std::filesystem::path file = folder.write("scan of a hall." + ending, bytes);

        const auto cloud = ImportPointCloud(std::filesystem::relative(file));

        EXPECT_EQ(cloud->getName(), "scan of a hall");
        EXPECT_EQ(cloud->getGeometryUri(), file.string());
        EXPECT_THAT(cloud->getPoints(), ElementsAre(rob::Posf(1, 2, 3)));
        EXPECT_THAT(cloud->getNormals(), IsEmpty());
        EXPECT_EQ(cloud->getPose(), rob::Posed());
        EXPECT_EQ(sdf::SdfManager::inst().find(cloud->getId()), nullptr) << "not yet in the station";
    }
    EXPECT_EQ(ImportPointCloud(folder / "scan of a hall.PCD")->getFileType(), "pcd");
    EXPECT_THAT(heard.messages, IsEmpty());
}

TEST_F(ImportCloudTest, NormalsAreKept)
{
    const auto cloud = ImportPointCloud(folder.write("a.xyz", "1 2 3 0 0 1\n"));

    EXPECT_THAT(cloud->getNormals(), ElementsAre(rob::Vec3f(0, 0, 1)));
}

TEST_F(ImportCloudTest, FarCloudStandsAtItsPlace)
{
    const auto cloud = ImportPointCloud(folder.write("a.xyz", "512743.625 5403547.5 308.68\n512743.125 5403547 309\n"));

    EXPECT_EQ(cloud->getPose().position, rob::Posd(512744, 5403548, 309));
    EXPECT_EQ(cloud->getPoints()[1], rob::Posf(-0.875f, -1, 0));
}

TEST_F(ImportCloudTest, UserIsToldOfDroppedPoints)
{
    const std::filesystem::path file = folder.write("a.xyz", "1 2 3\nnan nan nan\n0 inf 0\n");

    EXPECT_EQ(ImportPointCloud(file)->getPoints().size(), 1u);

    EXPECT_THAT(heard.messages, ElementsAre(file.string() + ": 2 of 3 points are not finite and were dropped"));
}

TEST_F(ImportCloudTest, ProgressGoesUpToOne)
{
    std::string text;
    for (int i = 0; i < 200000; ++i)
        text += "1 2 3\n";
    std::vector<double> told;

    ImportPointCloud(folder.write("a.xyz", text), [&](std::string_view, double fraction) { told.push_back(fraction); });

    EXPECT_GE(told.size(), 4u);
    EXPECT_TRUE(std::is_sorted(told.begin(), told.end()));
    EXPECT_EQ(told.back(), 1);
}

TEST_F(ImportCloudTest, DamagedFileIsRefusedInOneLineThatNamesIt)
{
    expectRefused("a.xyz", "1 2 3\n1 2\n", "line 2: 2 numbers where 3 are expected");
    expectRefused("a.ply", test::plyHeader("binary_little_endian", 2), "ends at byte 138 of 162");
    expectRefused("a.pcd", "hello\n", "line 1: 'hello' is no entry of a PCD header");
}

TEST_F(ImportCloudTest, FileWithoutAPointIsRefused)
{
    expectRefused("a.ply", "", "the file is empty");
    expectRefused("a.ply", test::plyHeader("ascii", 0), "the file holds no point");
    expectRefused("a.pcd", test::pcdHeader("binary", 0), "the file holds no point");
    expectRefused("a.pcd", test::pcdHeader("binary_compressed", 0) + test::packedData(""), "the file holds no point");
    expectRefused("a.xyz", "# nothing\n", "the file holds no point");
    expectRefused("a.xyz", "nan nan nan\n", "the file holds no point");
}

TEST_F(ImportCloudTest, WhatIsNoFileOfAPointCloudIsRefused)
{
    expectRefused("a.stl", "1 2 3\n", "not a kind of point cloud that can be read (.ply, .pcd, .xyz)");
    const std::filesystem::path absent = folder / "absent.ply";
    EXPECT_THAT([&] { ImportPointCloud(absent); }, ThrowsMessage<ImportError>(absent.string() + ": no such file"));
    std::filesystem::create_directory(folder / "folder.ply");
    EXPECT_THAT([&] { ImportPointCloud(folder / "folder.ply"); },
                ThrowsMessage<ImportError>((folder / "folder.ply").string() + ": it is a folder"));
}

TEST_F(ImportCloudTest, StationKeepsCloudsAndForgetsThem)
{
    layout::Layout& station = layout::Layout::inst();
    const auto first = ImportPointCloud(folder.write("a.xyz", "1 2 3\n"));
    const auto second = ImportPointCloud(folder.write("b.xyz", "1 2 3\n"));

    station.addPointCloud(first);
    station.addPointCloud(second);
    EXPECT_THAT(station.pointclouds, ElementsAre(first, second));
    EXPECT_EQ(sdf::SdfManager::inst().find(first->getId()), first.get());

    station.removePointCloud(4711);
    station.removePointCloud(first->getId());
    EXPECT_THAT(station.pointclouds, ElementsAre(second));
    EXPECT_EQ(sdf::SdfManager::inst().find(first->getId()), nullptr);

    station.clear();
    EXPECT_THAT(station.pointclouds, IsEmpty());
    EXPECT_EQ(sdf::SdfManager::inst().find(second->getId()), nullptr);
}

} // namespace
} // namespace vrk::station
