#include "scene/core/ResourceArchive.h"

#include "platform/common/ResourcePath.h"
#include "platform/common/ZipManager.h"
#include "support/TempFolder.h"
#include "support/ThrowsExactly.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <OgreDataStream.h>
#include <minizip/zip.h>

#include <fstream>
#include <map>

namespace vrk::visual {
namespace {

using testing::IsEmpty;
using testing::ThrowsMessage;
using testing::UnorderedElementsAre;

using Entries = std::map<std::string, std::string>;

void writeZip(const std::filesystem::path& file, const Entries& entries)
{
    const zipFile zip = zipOpen(file.string().c_str(), APPEND_STATUS_CREATE);
    for (const auto& [name, content] : entries) {
        zipOpenNewFileInZip(zip, name.c_str(), nullptr, nullptr, 0, nullptr, 0, nullptr, Z_DEFLATED, 6);
        zipWriteInFileInZip(zip, content.data(), static_cast<unsigned>(content.size()));
        zipCloseFileInZip(zip);
    }
    zipClose(zip, nullptr);
}

/// A resource zip of the test's own in place of the library's.
class ResourceArchiveTest : public testing::Test {
protected:
    ResourceArchiveTest() { common::SetResourcePath(zip); }
    ~ResourceArchiveTest() override { common::SetResourcePath({}); }

    test::TempFolder folder;
    std::filesystem::path zip = folder.path() / "resources.zip";
    KelvaneResourceArchiveFactory factory;
    KelvaneResourceArchive materials{"resource://material", "KelvaneResource"};
};

TEST_F(ResourceArchiveTest, FindSeesTheFolderAtAnyDepthAndNoOther)
{
    writeZip(zip, {{"material/a.material", "a"}, {"material/sub/b.material", "b"}, {"program/c.glsl", "c"}});

    const Ogre::StringVectorPtr found = materials.find("*.material");

    EXPECT_THAT(*found, UnorderedElementsAre("resource://material/a.material", "resource://material/sub/b.material"));
}

TEST_F(ResourceArchiveTest, DepthAndFoldersAreNotAskedFor)
{
    writeZip(zip, {{"material/a.material", "a"}, {"material/sub/b.material", "b"}});

    for (const bool recursive : {false, true})
        for (const bool dirs : {false, true}) {
            EXPECT_THAT(*materials.find("*", recursive, dirs),
                        UnorderedElementsAre("resource://material/a.material", "resource://material/sub/b.material"));
            EXPECT_EQ(materials.findFileInfo("*", recursive, dirs)->size(), 2u);
            EXPECT_EQ(materials.list(recursive, dirs), nullptr);
            EXPECT_THAT(*materials.listFileInfo(recursive, dirs), IsEmpty());
        }
}

TEST_F(ResourceArchiveTest, EntryNamedLikeTheFolderWithoutSlashIsNotSeen)
{
    writeZip(zip, {{"material", "not a folder"}, {"materials/a.material", "another folder"}});

    EXPECT_THAT(*materials.find("*"), IsEmpty());
}

TEST_F(ResourceArchiveTest, LocationWithoutFolderSeesTheWholeZip)
{
    writeZip(zip, {{"loose.material", "a"}, {"material/a.material", "b"}});
    const KelvaneResourceArchive all("resource://", "KelvaneResource");

    EXPECT_THAT(*all.find("*"), UnorderedElementsAre("resource://loose.material", "resource://material/a.material"));
}

TEST_F(ResourceArchiveTest, FindTellsCaseApart)
{
    writeZip(zip, {{"material/A.Material", "a"}});

    EXPECT_THAT(*materials.find("*.material"), IsEmpty());
    EXPECT_TRUE(materials.isCaseSensitive());
}

TEST_F(ResourceArchiveTest, FileInfoNamesTheUriAndTheSizes)
{
    writeZip(zip, {{"material/a.material", std::string(1000, 'x')}});

    const Ogre::FileInfoListPtr found = materials.findFileInfo("*.material");

    ASSERT_EQ(found->size(), 1u);
    const Ogre::FileInfo& info = found->front();
    EXPECT_EQ(info.archive, &materials);
    EXPECT_EQ(info.filename, "resource://material/a.material");
    EXPECT_EQ(info.path, "resource://material");
    EXPECT_EQ(info.basename, "resource://material/a.material");
    EXPECT_EQ(info.uncompressedSize, 1000u);
    EXPECT_LT(info.compressedSize, 1000u);
}

TEST_F(ResourceArchiveTest, UriAndBareNameAskForTheSameEntry)
{
    writeZip(zip, {{"material/a.material", "content"}});

    EXPECT_TRUE(materials.exists("resource://material/a.material"));
    EXPECT_TRUE(materials.exists("a.material"));
    EXPECT_FALSE(materials.exists("resource://material/b.material"));
    EXPECT_FALSE(materials.exists("b.material"));
    EXPECT_EQ(materials.open("resource://material/a.material")->getAsString(), "content");
    EXPECT_EQ(materials.open("a.material")->getAsString(), "content");
}

TEST_F(ResourceArchiveTest, OpenedStreamIsNamedByItsUri)
{
    writeZip(zip, {{"material/a.material", "content"}});

    EXPECT_EQ(materials.open("a.material")->getName(), "resource://material/a.material");
}

TEST_F(ResourceArchiveTest, OpenedStreamIsReadOnlyWhateverIsAskedFor)
{
    writeZip(zip, {{"material/a.material", "content"}});

    for (const bool readOnly : {true, false}) {
        const Ogre::DataStreamPtr stream = materials.open("a.material", readOnly);
        EXPECT_FALSE(stream->isWriteable());
        EXPECT_EQ(stream->size(), 7u);
    }
}

TEST_F(ResourceArchiveTest, OpeningAnAbsentEntryNamesIt)
{
    writeZip(zip, {{"material/a.material", "content"}});

    EXPECT_THAT([this] { materials.open("b.material"); },
                ThrowsMessage<std::runtime_error>(testing::HasSubstr("material/b.material")));
}

TEST_F(ResourceArchiveTest, AbsentZipGivesEmptyResults)
{
    EXPECT_THAT(*materials.find("*"), IsEmpty());
    EXPECT_THAT(*materials.findFileInfo("*"), IsEmpty());
    EXPECT_FALSE(materials.exists("a.material"));
}

TEST_F(ResourceArchiveTest, FileThatIsNoZipGivesEmptyResults)
{
    std::ofstream(zip) << "this is no zip file, however long it may be";

    EXPECT_THAT(*materials.find("*"), IsEmpty());
    EXPECT_THAT(*materials.findFileInfo("*"), IsEmpty());
}

TEST_F(ResourceArchiveTest, EntryWhoseInformationCannotBeReadIsAFailure)
{
    writeZip(zip, {{"material/a.material", "a"}});
    // The directory says that the name is longer than what is left of the file.
    std::fstream file(zip, std::ios::in | std::ios::out | std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(file), {}};
    const std::size_t entry = bytes.rfind("PK\x01\x02");
    ASSERT_NE(entry, std::string::npos);
    constexpr std::size_t nameLengthOffset = 28;
    file.seekp(static_cast<std::streamoff>(entry + nameLengthOffset));
    file.write("\xFF\x7F", 2);
    file.close();

    const auto failure = test::throwsExactly<std::runtime_error>("Get current file info failed");
    EXPECT_THAT([this] { materials.find("*"); }, failure);
    EXPECT_THAT([this] { materials.findFileInfo("*"); }, failure);
}

TEST_F(ResourceArchiveTest, StateThatCannotBeAskedForIsAFailureNamedExists)
{
    // A path through a file instead of a folder is absent; a name that is too long cannot even be asked for.
    common::SetResourcePath(folder.path() / std::string(5000, 'x'));

    const auto failure = testing::Throws<std::filesystem::filesystem_error>(
        testing::Property(&std::exception::what, testing::StartsWith("filesystem error: exists: ")));
    EXPECT_THAT([this] { materials.find("*"); }, failure);
    EXPECT_THAT([this] { materials.findFileInfo("*"); }, failure);
}

TEST_F(ResourceArchiveTest, ListIsAnEmptyPointerAndFileInfoAnEmptyList)
{
    writeZip(zip, {{"material/a.material", "a"}});

    EXPECT_EQ(materials.list(), nullptr);
    ASSERT_NE(materials.listFileInfo(), nullptr);
    EXPECT_THAT(*materials.listFileInfo(), IsEmpty());
}

TEST_F(ResourceArchiveTest, NothingCanBeWritten)
{
    EXPECT_TRUE(materials.isReadOnly());
    EXPECT_EQ(materials.create("new.material"), nullptr);
    EXPECT_NO_THROW(materials.remove("a.material"));
    EXPECT_EQ(materials.getModifiedTime("a.material"), 0);
}

TEST_F(ResourceArchiveTest, FactoryMakesReadOnlyArchivesOnly)
{
    EXPECT_EQ(factory.getType(), "KelvaneResource");
    EXPECT_EQ(factory.createInstance("resource://material", false), nullptr);
    Ogre::Archive* made = factory.createInstance("resource://program", true);
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(made->getName(), "resource://program");
    EXPECT_EQ(made->getType(), "KelvaneResource");
    factory.destroyInstance(made);
    factory.destroyInstance(factory.createInstance("resource://program")); // which reads only
    factory.destroyInstance(nullptr);
}

} // namespace
} // namespace vrk::visual
