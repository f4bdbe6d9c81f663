#include "platform/station/Uri.h"

#include "ZipFiles.h"
#include "platform/common/ResourcePath.h"
#include "support/TempFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vrk {
namespace {

using testing::HasSubstr;
using testing::ThrowsMessage;

class UriTest : public testing::Test {
protected:
    ~UriTest() override
    {
        SetStationFolder({});
        common::SetResourcePath({});
    }
    static std::string textOf(const std::string& uri)
    {
        const std::unique_ptr<common::ZipBuffer> buffer = ReadFileFromURI(uri);
        return {buffer->data(), buffer->size()};
    }

    test::TempFolder folder;
};

TEST_F(UriTest, PlainPathStandsAsItIs)
{
    EXPECT_EQ(UriToFilePath("/a/b c.stl"), "/a/b c.stl");
    EXPECT_EQ(UriToFilePath("sub/part%20one.stl"), "sub/part%20one.stl");
    EXPECT_EQ(UriToFilePath(""), "");
}

TEST_F(UriTest, FileUriIsFollowedByAPath)
{
    EXPECT_EQ(UriToFilePath("file:///a/b.stl"), "/a/b.stl");
    EXPECT_EQ(UriToFilePath("file://sub/b.stl"), "sub/b.stl");
}

TEST_F(UriTest, StationUriIsRelativeToTheStationsFolder)
{
    SetStationFolder("/stations/one");

    EXPECT_EQ(UriToFilePath("station://parts/a.stl"), "/stations/one/parts/a.stl");
}

TEST_F(UriTest, StationUriStaysInTheStationsFolderWithASlashInFront)
{
    SetStationFolder("/stations/one");

    EXPECT_EQ(UriToFilePath("station:///parts/a.stl"), "/stations/one/parts/a.stl");
}

TEST_F(UriTest, StationUriIsRelativeToTheWorkingDirectoryWhereNoFolderIsSet)
{
    EXPECT_EQ(UriToFilePath("station://a.stl"), std::filesystem::current_path() / "a.stl");
}

TEST_F(UriTest, PercentEscapesAreResolvedInUris)
{
    SetStationFolder("/s");

    EXPECT_EQ(UriToFilePath("file:///a%20b/%C3%A4.stl"), "/a b/\xC3\xA4.stl");
    EXPECT_EQ(UriToFilePath("station://100%25.stl"), "/s/100%.stl");
}

TEST_F(UriTest, FaultyEscapesStandAsTheyAre)
{
    EXPECT_EQ(UriToFilePath("file:///a%2"), "/a%2");
    EXPECT_EQ(UriToFilePath("file:///a%"), "/a%");
    EXPECT_EQ(UriToFilePath("file:///a%zz%4g"), "/a%zz%4g");
    EXPECT_EQ(UriToFilePath("file:///a%00b"), "/a%00b");
}

TEST_F(UriTest, OtherSchemesArePathsAsTheyStand)
{
    EXPECT_EQ(UriToFilePath("stationery://a"), "stationery://a");
    EXPECT_EQ(UriToFilePath("resource://a"), "resource://a");
}

TEST_F(UriTest, ResourceUriReadsFromTheResourceZip)
{
    test::writeZip(folder / "r.zip", {{"material/a.material", "from the zip"}});
    common::SetResourcePath(folder / "r.zip");

    EXPECT_EQ(textOf("resource://material/a.material"), "from the zip");
    EXPECT_THAT([] { textOf("resource://material/b.material"); },
                ThrowsMessage<std::runtime_error>(HasSubstr("material/b.material")));
}

TEST_F(UriTest, FilesAreReadByUriAndByPath)
{
    const std::string bytes("a\0b", 3);
    const std::filesystem::path file = folder.write("part one.bin", bytes);
    SetStationFolder(folder.path());

    EXPECT_EQ(textOf(file.string()), bytes);
    EXPECT_EQ(textOf("file://" + file.string()), bytes);
    EXPECT_EQ(textOf("station://part%20one.bin"), bytes);
}

TEST_F(UriTest, EmptyFileGivesAnEmptyBuffer)
{
    EXPECT_EQ(textOf(folder.write("empty", "").string()), "");
}

TEST_F(UriTest, WhatCannotBeReadIsRefusedByName)
{
    for (const std::string& uri :
         {std::string("file:///no/such/file"), std::string("http://a/b"), folder.path().string()}) {
        EXPECT_THAT([&] { textOf(uri); }, ThrowsMessage<std::runtime_error>(uri + ": cannot be opened"));
    }
}

} // namespace
} // namespace vrk
