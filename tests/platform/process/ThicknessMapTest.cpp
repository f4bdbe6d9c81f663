#include "platform/process/ThicknessMap.h"

#include "Plates.h"
#include "platform/station/clouds/CloudFormats.h"
#include "support/TempFolder.h"

#include <cmath>
#include <string>

namespace vrk::process {
namespace {

using rob::Posf;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;
using testing::ThrowsMessage;

class ThicknessMapTest : public testing::Test {
protected:
    static ThicknessMap mapOf(const test::Plate& plate)
    {
        ThicknessMap map{plate.vertices, {}, plate.indices};
        for (std::size_t i = 0; i < plate.vertices.size(); ++i)
            map.thickness.push_back(0.001f * static_cast<float>(i) / 3);
        return map;
    }
    std::string textFile(const std::string& vertices, unsigned count, const std::string& property = "thickness")
    {
        return folder
            .write("text.ply", "ply\nformat ascii 1.0\nelement vertex " + std::to_string(count) +
                                   "\nproperty float x\nproperty float y\nproperty float z\nproperty float " +
                                   property + "\nend_header\n" + vertices)
            .string();
    }

    test::TempFolder folder;
    const std::vector<Posf> two{{0, 0, 0}, {1, 2, 3}};
};

TEST_F(ThicknessMapTest, IsReadAsItWasWritten)
{
    const test::Plate plate(30, 20);
    const ThicknessMap map = mapOf(plate);

    saveThicknessMap(folder / "map.ply", map);

    EXPECT_EQ(loadThicknessMap(folder / "map.ply", plate.vertices, 0), map.thickness);
}

TEST_F(ThicknessMapTest, IsAPlyOfTheSkinThatOthersRead)
{
    const ThicknessMap map{{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, {0.5f, 0.25f, 1}, {0, 1, 2}};

    saveThicknessMap(folder / "map.ply", map);

    const std::string bytes = test::TempFolder::Read(folder / "map.ply");
    EXPECT_THAT(bytes, StartsWith("ply\nformat binary_little_endian 1.0\nelement vertex 3\nproperty float x\n"
                                  "property float y\nproperty float z\nproperty float thickness\nelement face 1\n"
                                  "property list uchar uint vertex_indices\nend_header\n"));
    EXPECT_THAT(bytes, EndsWith(std::string("\x03\0\0\0\0\x01\0\0\0\x02\0\0\0", 13)));
    EXPECT_EQ(station::parsePly(bytes).points, map.vertices) << "as a cloud";
}

TEST_F(ThicknessMapTest, OfAnotherProgramIsReadAsText)
{
    EXPECT_THAT(loadThicknessMap(textFile("0 0 0 0.5\n1 2 3 0.25\n", 2), two, 0), ElementsAre(0.5f, 0.25f));
}

TEST_F(ThicknessMapTest, FarFromTheOriginIsThatOfTheSameSkin)
{
    const std::vector<Posf> far{{500000, 0, 0}, {500001, 2, 3}};
    saveThicknessMap(folder / "far.ply", {far, {1, 2}, {}});

    EXPECT_THAT(loadThicknessMap(folder / "far.ply", far, 0), ElementsAre(1, 2));
}

TEST_F(ThicknessMapTest, OfAnotherBodyIsRefused)
{
    const std::string file = textFile("0 0 0 0.5\n1 2 3 0.25\n", 2);

    EXPECT_THAT(
        [&] {
            loadThicknessMap(file, {{0, 0, 0}}, 0);
        },
        ThrowsMessage<ThicknessMapError>(EndsWith(": a map of 2 vertices, and the body's skin has 1")));
    EXPECT_THAT(
        [&] {
            loadThicknessMap(file, {{0, 0, 0}, {1, 2, 3.1f}}, 0.05f);
        },
        ThrowsMessage<ThicknessMapError>(EndsWith(": a map of another body: vertex 2 lies elsewhere")));
    EXPECT_NO_THROW(loadThicknessMap(file, {{0, 0, 0}, {1, 2, 3.1f}}, 0.2f));
}

TEST_F(ThicknessMapTest, ValueThatIsNoThicknessIsRefused)
{
    for (const char* value : {"-1", "nan", "inf"})
        EXPECT_THROW(loadThicknessMap(textFile("0 0 0 0.5\n1 2 3 " + std::string(value) + "\n", 2), two, 0),
                     ThicknessMapError)
            << value;
}

TEST_F(ThicknessMapTest, FileWithoutThicknessIsRefused)
{
    EXPECT_THAT([&] { loadThicknessMap(textFile("0 0 0 0.5\n1 2 3 0.25\n", 2, "height"), two, 0); },
                ThrowsMessage<ThicknessMapError>(HasSubstr("the vertices have no property 'thickness'")));
}

TEST_F(ThicknessMapTest, FileThatIsDamagedMissingOrOfAnotherKindIsRefused)
{
    EXPECT_THAT([&] { loadThicknessMap(textFile("0 0 0 0.5\n", 2), two, 0); },
                ThrowsMessage<ThicknessMapError>(HasSubstr("the file ends after 1 of 2 points")));
    EXPECT_THROW(loadThicknessMap(folder / "absent.ply", two, 0), ThicknessMapError);
    EXPECT_THROW(loadThicknessMap(folder.path(), two, 0), ThicknessMapError);
    EXPECT_THROW(saveThicknessMap(folder / "map.txt", {two, {1, 2}, {}}), ThicknessMapError);
    EXPECT_THROW(saveThicknessMap(folder / "no" / "such" / "map.ply", {two, {1, 2}, {}}), ThicknessMapError);
    EXPECT_THROW(saveThicknessMap(folder / "map.ply", {two, {1}, {}}), ThicknessMapError);
    EXPECT_THROW(saveThicknessMap(folder / "map.ply", {}), ThicknessMapError);
    EXPECT_FALSE(std::filesystem::exists(folder / "map.ply"));
}

} // namespace
} // namespace vrk::process
