#include "platform/common/ZipManager.h"

#include "ZipFiles.h"
#include "platform/common/ResourcePath.h"
#include "support/TempFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <string_view>

namespace vrk::common {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::ThrowsMessage;

std::string randomText(std::size_t length)
{
    std::mt19937 random(1);
    std::string text(length, ' ');
    for (char& c : text)
        c = static_cast<char>('a' + random() % 20);
    return text;
}

class ZipManagerTest : public testing::Test {
protected:
    ZipManagerTest()
    {
        test::writeZip(zip,
                       {{"material/a.material", "first"}, {"material/empty", ""}, {"program/long.glsl", longText}});
        SetResourcePath(zip);
    }
    ~ZipManagerTest() override { SetResourcePath({}); }

    std::string textOf(const std::string& entry) const
    {
        const std::unique_ptr<ZipBuffer> buffer = ZipManager::Read(zip, entry);
        return {buffer->data(), buffer->size()};
    }
    void expectDamaged(const std::filesystem::path& file, const std::string& entry) const
    {
        EXPECT_THAT([&] { ZipManager::Read(file, entry); },
                    ThrowsMessage<std::runtime_error>(AllOf(HasSubstr(file.string()), HasSubstr(entry))));
    }

    test::TempFolder folder;
    std::filesystem::path zip = folder / "resources.zip";
    std::string longText = randomText(300000);
};

TEST_F(ZipManagerTest, EntriesAreReadUncompressed)
{
    EXPECT_EQ(textOf("material/a.material"), "first");
    EXPECT_EQ(textOf("program/long.glsl"), longText);
}

TEST_F(ZipManagerTest, EmptyEntryGivesAnEmptyBuffer)
{
    EXPECT_EQ(ZipManager::Read(zip, "material/empty")->size(), 0u);
}

TEST_F(ZipManagerTest, ReleasedBytesBelongToTheTaker)
{
    const std::unique_ptr<ZipBuffer> buffer = ZipManager::Read(zip, "material/a.material");

    const std::unique_ptr<char[]> bytes(buffer->release());

    EXPECT_EQ(std::string_view(bytes.get(), 5), "first");
    EXPECT_EQ(buffer->size(), 0u);
    EXPECT_EQ(buffer->data(), nullptr);
}

TEST_F(ZipManagerTest, ZipThatIsWrittenAnewIsReadAnew)
{
    ASSERT_EQ(textOf("program/long.glsl"), longText);
    const auto written = std::filesystem::last_write_time(zip);
    const std::uintmax_t size = std::filesystem::file_size(zip);

    // As many bytes, and at the same time as far as the file system tells: the entries lie elsewhere.
    test::writeZip(zip, {{"program/long.glsl", longText}, {"material/a.material", "other"}, {"material/empty", ""}});
    ASSERT_EQ(std::filesystem::file_size(zip), size);
    std::filesystem::last_write_time(zip, written);

    EXPECT_EQ(textOf("material/a.material"), "other");
    EXPECT_EQ(textOf("program/long.glsl"), longText);
    EXPECT_EQ(textOf("material/empty"), "");
}

TEST_F(ZipManagerTest, EntriesOfTwoZipsAreToldApart)
{
    const std::filesystem::path other = folder / "other.zip";
    test::writeZip(other, {{"material/b.material", "second"}, {"material/a.material", "third"}});

    for (int turn = 0; turn < 2; ++turn) {
        EXPECT_EQ(textOf("material/a.material"), "first");
        EXPECT_EQ(ZipManager::Read(other, "material/a.material")->size(), 5u);
        EXPECT_EQ(*ZipManager::Read(other, "material/a.material")->data(), 't');
        EXPECT_THAT([&] { textOf("material/b.material"); }, ThrowsMessage<std::runtime_error>(HasSubstr("no entry")));
    }
}

TEST_F(ZipManagerTest, MissingEntryIsRefused)
{
    EXPECT_THAT([&] { ZipManager::Read(zip, "material/b.material"); },
                ThrowsMessage<std::runtime_error>(zip.string() + ": no entry 'material/b.material'"));
}

TEST_F(ZipManagerTest, NamesAreCaseSensitive)
{
    EXPECT_THAT([&] { ZipManager::Read(zip, "Material/a.material"); },
                ThrowsMessage<std::runtime_error>(zip.string() + ": no entry 'Material/a.material'"));
    EXPECT_FALSE(ZipManager::Exists("resource://Material/a.material"));
}

TEST_F(ZipManagerTest, MissingZipIsRefused)
{
    const std::filesystem::path none = folder / "none.zip";

    EXPECT_THAT([&] { ZipManager::Read(none, "a"); },
                ThrowsMessage<std::runtime_error>(none.string() + ": cannot be opened as a zip file, 'a' is not read"));
}

TEST_F(ZipManagerTest, FileThatIsNoZipIsRefused)
{
    const std::filesystem::path text = folder.write("text.zip", "hello, I am no zip file");

    EXPECT_THAT([&] { ZipManager::Read(text, "a"); },
                ThrowsMessage<std::runtime_error>(text.string() + ": cannot be opened as a zip file, 'a' is not read"));
}

TEST_F(ZipManagerTest, DamagedBytesAreFoundByTheChecksum)
{
    std::string bytes = test::TempFolder::Read(zip);
    const std::size_t middle = bytes.find("program/long.glsl") + longText.size() / 4;
    bytes[middle] ^= 0x55;
    const std::filesystem::path damaged = folder.write("damaged.zip", bytes);

    EXPECT_THAT([&] { ZipManager::Read(damaged, "program/long.glsl"); },
                ThrowsMessage<std::runtime_error>(damaged.string() + ": the entry 'program/long.glsl' is damaged"));
    EXPECT_EQ(ZipManager::Read(damaged, "material/a.material")->size(), 5u);
}

TEST_F(ZipManagerTest, ZipThatIsCutShortIsRefused)
{
    const std::string bytes = test::TempFolder::Read(zip);

    for (std::size_t length : {bytes.size() / 2, bytes.size() - 30, std::size_t(10)})
        expectDamaged(folder.write("short.zip", std::string_view(bytes).substr(0, length)), "program/long.glsl");
}

TEST_F(ZipManagerTest, HugeSizeInTheDirectoryIsDamageAndNotAllocated)
{
    std::string bytes = test::TempFolder::Read(zip);
    const std::size_t nameInDirectory = bytes.rfind("program/long.glsl");
    const std::size_t sizeField = nameInDirectory - 46 + 24; // of the uncompressed entry, in the directory's record
    bytes.replace(sizeField, 4, "\xF0\xFF\xFF\xFF", 4);

    expectDamaged(folder.write("huge.zip", bytes), "program/long.glsl");
}

TEST_F(ZipManagerTest, ExistsAnswersForTheResourceZip)
{
    EXPECT_TRUE(ZipManager::Exists("resource://material/a.material"));
    EXPECT_TRUE(ZipManager::Exists("resource://program/long.glsl"));
    EXPECT_FALSE(ZipManager::Exists("resource://program/a.material"));
}

TEST_F(ZipManagerTest, OtherTextsDoNotExist)
{
    EXPECT_FALSE(ZipManager::Exists("material/a.material"));
    EXPECT_FALSE(ZipManager::Exists("file://material/a.material"));
    EXPECT_FALSE(ZipManager::Exists(""));
}

TEST_F(ZipManagerTest, NothingExistsWithoutTheResourceZip)
{
    SetResourcePath(folder / "none.zip");

    EXPECT_FALSE(ZipManager::Exists("resource://material/a.material"));
}

} // namespace
} // namespace vrk::common
