#include "platform/station/GeometryCache.h"

#include "CacheFolder.h"

#include "platform/station/Import.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <unistd.h>

#include <algorithm>
#include <stdexcept>

namespace vrk::station {
namespace {

using testing::StartsWith;
using testing::ThrowsMessage;

class GeometryCacheTest : public testing::Test {
protected:
    std::filesystem::path get(const std::string& key, const std::string& stem = "part")
    {
        return GeometryCache::Get(stem, key, ".stl", [this] {
            ++made;
            return std::string("bytes");
        });
    }

    test::CacheFolder cache;
    test::TempFolder folder;
    int made = 0;
};

TEST_F(GeometryCacheTest, FileIsMadeOnceForAKey)
{
    const std::filesystem::path first = get("key");
    const std::filesystem::path second = get("key");

    EXPECT_EQ(first, second);
    EXPECT_EQ(made, 1);
    EXPECT_EQ(first.parent_path(), cache.path());
    EXPECT_THAT(first.filename().string(), StartsWith("part-"));
    EXPECT_EQ(first.extension(), ".stl");
    EXPECT_EQ(test::TempFolder::Read(first), "bytes");
}

TEST_F(GeometryCacheTest, OtherKeyHasAFileOfItsOwn)
{
    EXPECT_NE(get("key"), get("other key"));
    EXPECT_EQ(made, 2);
}

TEST_F(GeometryCacheTest, DeletedFileIsMadeAnew)
{
    std::filesystem::remove(get("key"));

    EXPECT_TRUE(std::filesystem::exists(get("key")));
    EXPECT_EQ(made, 2);
}

TEST_F(GeometryCacheTest, NameOfTheFileIsPlain)
{
    EXPECT_THAT(get("key", "a b/../c\xFF").filename().string(), StartsWith("a_b_.._c_-"));
    EXPECT_LT(get("key", std::string(300, 'x')).filename().string().size(), 100u);
}

TEST_F(GeometryCacheTest, FilesThatWereNotAskedForTheLongestTimeGoFirst)
{
    const std::filesystem::path asked = get("asked for");
    std::vector<std::filesystem::path> others; // as other processes leave them
    for (int i = 0; i < 4; ++i) {
        others.push_back(cache.path() / ("other" + std::to_string(i)));
        writeWhole(others.back(), std::string(100, 'x'));
        std::filesystem::last_write_time(others.back(), std::filesystem::last_write_time(asked) -
                                                            std::chrono::seconds(i == 0 ? 10 : 100 + i));
    }

    GeometryCache::Trim(GeometryCache::sizeLimit);
    EXPECT_TRUE(std::ranges::all_of(others, [](const auto& file) { return std::filesystem::exists(file); }));
    GeometryCache::Trim(210);

    EXPECT_TRUE(std::filesystem::exists(others[0]));
    EXPECT_TRUE(std::filesystem::exists(others[1]));
    EXPECT_FALSE(std::filesystem::exists(others[2]));
    EXPECT_FALSE(std::filesystem::exists(others[3]));
    GeometryCache::Trim(0);
    EXPECT_FALSE(std::filesystem::exists(others[0]));
    EXPECT_TRUE(std::filesystem::exists(asked)) << "a body of this process may be read from it";
}

TEST_F(GeometryCacheTest, FileThatIsAskedForAgainIsNew)
{
    const std::filesystem::path file = get("key");
    const auto old = std::filesystem::last_write_time(file) - std::chrono::hours(1);
    std::filesystem::last_write_time(file, old);

    get("key");

    EXPECT_GT(std::filesystem::last_write_time(file), old + std::chrono::minutes(59));
}

TEST_F(GeometryCacheTest, NothingIsLeftWhereMakingFails)
{
    EXPECT_THROW(GeometryCache::Get("part", "key", ".stl", []() -> std::string { throw std::logic_error("no"); }),
                 std::logic_error);
    EXPECT_FALSE(std::filesystem::exists(cache.path()));
}

TEST_F(GeometryCacheTest, FolderThatCannotBeWrittenIsReplacedByATemporaryOne)
{
    folder.write("vrkvisual", "a file in place of the folder");
    setenv("XDG_CACHE_HOME", folder.path().c_str(), 1);

    const std::filesystem::path file = get("a key of the test of folders " + std::to_string(getpid()));

    EXPECT_EQ(test::TempFolder::Read(file), "bytes");
    EXPECT_THAT(file.string(), StartsWith(std::filesystem::temp_directory_path().string()));
    EXPECT_TRUE(GeometryCache::Holds(file));
    std::filesystem::remove(file);
}

TEST_F(GeometryCacheTest, HoldsOnlyItsOwnFiles)
{
    EXPECT_TRUE(GeometryCache::Holds(get("key")));
    EXPECT_FALSE(GeometryCache::Holds(folder / "a.stl"));
}

TEST_F(GeometryCacheTest, KeyOfAFileChangesWithTheFile)
{
    const std::filesystem::path file = folder.write("a.stl", "one");
    const std::string before = GeometryCache::KeyOf(file);
    EXPECT_EQ(GeometryCache::KeyOf(folder / "." / "a.stl"), before);

    folder.write("a.stl", "longer");
    EXPECT_NE(GeometryCache::KeyOf(file), before);

    folder.write("a.stl", "two");
    std::filesystem::last_write_time(file, std::filesystem::last_write_time(file) + std::chrono::seconds(5));
    EXPECT_NE(GeometryCache::KeyOf(file), before);
}

TEST_F(GeometryCacheTest, HashIsTheSameInEveryRun)
{
    EXPECT_EQ(hashOf(""), "cbf29ce484222325");
    EXPECT_EQ(hashOf("a"), "af63dc4c8601ec8c");
    EXPECT_NE(hashOf("ab"), hashOf("ba"));
}

TEST_F(GeometryCacheTest, WholeFileReplacesOneOfItsName)
{
    const std::filesystem::path file = folder.write("a.txt", "old");

    writeWhole(file, "new");

    EXPECT_EQ(test::TempFolder::Read(file), "new");
    EXPECT_THAT([&] { writeWhole(folder / "none" / "a.txt", "new"); },
                ThrowsMessage<std::runtime_error>((folder / "none" / "a.txt").string() + ": cannot be written"));
}

} // namespace
} // namespace vrk::station
