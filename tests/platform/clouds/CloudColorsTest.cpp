#include "CloudFiles.h"
#include "CloudParsing.h"

#include "platform/station/ExportCloud.h"
#include "platform/station/ImportCloud.h"
#include "support/TempFolder.h"

#include <bit>

namespace vrk::station {
namespace {

using test::bytesOf;
using test::floatBytes;
using test::packedData;
using testing::ElementsAre;
using testing::IsEmpty;

const PointColor red{255, 0, 0};
const PointColor mixed{1, 128, 254};

std::string plyWith(const std::string& names, const std::string& type, const std::string& row)
{
    std::string header =
        "ply\nformat ascii 1.0\nelement vertex 1\nproperty float x\nproperty float y\nproperty float z\n";
    for (std::size_t at = 0; at < names.size();) {
        const std::size_t end = std::min(names.find(' ', at), names.size());
        header += "property " + type + " " + names.substr(at, end - at) + "\n";
        at = end + 1;
    }
    return header + "end_header\n1 2 3 " + row + "\n";
}

TEST(CloudColors, PlyColoursAreReadUnderTheNamesThatWritersGiveThem)
{
    EXPECT_THAT(parsePly(plyWith("red green blue", "uchar", "1 128 254")).colors, ElementsAre(mixed));
    EXPECT_THAT(parsePly(plyWith("blue green red", "uchar", "0 0 255")).colors, ElementsAre(red));
    EXPECT_THAT(parsePly(plyWith("diffuse_red diffuse_green diffuse_blue", "uchar", "255 0 0")).colors,
                ElementsAre(red));
    EXPECT_THAT(parsePly(plyWith("r g b", "float", "1 0 0")).colors, ElementsAre(red));
    EXPECT_THAT(parsePly(plyWith("red green blue", "ushort", "65535 0 0")).colors, ElementsAre(red));
}

TEST(CloudColors, PlyWithoutAllThreeHasNone)
{
    EXPECT_THAT(parsePly(plyWith("red green", "uchar", "255 0")).colors, IsEmpty());
}

TEST(CloudColors, PartsPastTheirRangeAreHeldToIt)
{
    EXPECT_THAT(parsePly(plyWith("red green blue", "float", "7 -1 nan")).colors, ElementsAre(red));
}

TEST(CloudColors, PointThatIsDroppedTakesItsColourAlong)
{
    const Cloud cloud =
        parsePly("ply\nformat ascii 1.0\nelement vertex 3\nproperty float x\nproperty float y\nproperty "
                 "float z\nproperty uchar red\nproperty uchar green\nproperty uchar blue\nend_header\n"
                 "0 0 0 1 128 254\nnan 0 0 9 9 9\n1 1 1 255 0 0\n");

    EXPECT_EQ(cloud.dropped, 1u);
    EXPECT_THAT(cloud.colors, ElementsAre(mixed, red));
}

std::string pcd(const std::string& storage, const std::string& names, const std::string& types,
                const std::string& sizes)
{
    return "VERSION 0.7\nFIELDS x y z " + names + "\nSIZE 4 4 4 " + sizes + "\nTYPE F F F " + types +
           "\nWIDTH 1\nHEIGHT 1\nPOINTS 1\nDATA " + storage + "\n";
}

TEST(CloudColors, PcdPacksThemIntoOneNumberOfEitherType)
{
    constexpr std::uint32_t packed = 0x000180FE; // alpha, red, green, blue
    const std::string point = floatBytes({1, 2, 3});

    EXPECT_THAT(parsePcd(pcd("binary", "rgba", "U", "4") + point + bytesOf(packed)).colors, ElementsAre(mixed));
    EXPECT_THAT(parsePcd(pcd("binary", "rgb", "F", "4") + point + bytesOf(packed)).colors, ElementsAre(mixed));
    EXPECT_THAT(parsePcd(pcd("binary_compressed", "rgb", "F", "4") + packedData(point + bytesOf(packed))).colors,
                ElementsAre(mixed));
    EXPECT_THAT(parsePcd(pcd("ascii", "rgb", "U", "4") + "1 2 3 " + std::to_string(packed) + "\n").colors,
                ElementsAre(mixed));
    EXPECT_THAT(parsePcd(pcd("ascii", "rgb", "I", "4") + "1 2 3 -65536\n").colors, ElementsAre(red))
        << "0xFFFF0000, signed";
    EXPECT_THAT(parsePcd(pcd("ascii", "rgb", "F", "4") + "1 2 3 2.3418052e-38\n").colors, ElementsAre(red));
}

TEST(CloudColors, PcdMayHaveAFieldForEach)
{
    EXPECT_THAT(parsePcd(pcd("ascii", "r g b", "U U U", "1 1 1") + "1 2 3 255 0 0\n").colors, ElementsAre(red));
}

TEST(CloudColors, XyzLinesOfSixSevenAndNineColumnsHaveThem)
{
    EXPECT_THAT(parseXyz("1 2 3 255 0 0\n1 2 3 1 128 254\n").colors, ElementsAre(red, mixed));
    EXPECT_THAT(parseXyz("1 2 3 0.73 255 0 0\n").colors, ElementsAre(red)) << "behind an intensity";
    const Cloud withNormals = parseXyz("1 2 3 255 0 0 0 0 1\n");
    EXPECT_THAT(withNormals.colors, ElementsAre(red));
    EXPECT_THAT(parseXyz("1 2 3 1 0 0.0\n1 2 3 0.5 0.5 0.25\n").colors, ElementsAre(red, PointColor{128, 128, 64}))
        << "shares of 1";
}

TEST(CloudColors, XyzColumnsThatAreNoColoursGiveNone)
{
    EXPECT_THAT(parseXyz("1 2 3 0 0 1\n4 5 6 1 0 0\n").colors, IsEmpty()) << "normals";
    EXPECT_THAT(parseXyz("1 2 3 255 0 256\n").colors, IsEmpty());
    EXPECT_THAT(parseXyz("1 2 3 -1 0 200\n").colors, IsEmpty());
    EXPECT_THAT(parseXyz("1 2 3 12.5 0 200\n").colors, IsEmpty());
    EXPECT_THAT(parseXyz("1 2 3 0 0 0\n4 5 6 0 0 0\n").colors, IsEmpty()) << "all black shows nothing";
    EXPECT_THAT(parseXyz("1 2 3 77\n").colors, IsEmpty()) << "an intensity alone";
}

TEST(CloudColors, AreWrittenAndReadAgain)
{
    const test::TempFolder folder;
    for (const char* name : {"cloud.ply", "cloud.xyz"}) {
        ExportPointCloud(folder / name, {.points = {{1, 2, 3}, {4, 5, 6}}, .colors = {red, mixed}});

        const auto read = ImportPointCloud(folder / name);

        ASSERT_TRUE(read->hasColors()) << name;
        EXPECT_THAT(read->getColors(), ElementsAre(red, mixed)) << name;
    }
}

TEST(CloudUnits, CoordinatesBecomeMillimetres)
{
    const test::TempFolder folder;
    const std::filesystem::path file = folder.write("a.xyz", "1 2 -3\n0.001 0 0\n");

    const auto metres = ImportPointCloud(file, {}, LengthUnit::Metre);
    const auto inches = ImportPointCloud(file, {}, LengthUnit::Inch);

    EXPECT_EQ(metres->getPoints().at(0), rob::Posf(1000, 2000, -3000));
    EXPECT_EQ(metres->getPoints().at(1), rob::Posf(1, 0, 0));
    EXPECT_EQ(metres->getFileUnit(), LengthUnit::Metre);
    EXPECT_EQ(inches->getPoints().at(0), rob::Posf(25.4f, 50.8f, -76.2f));
    EXPECT_EQ(ImportPointCloud(file)->getFileUnit(), LengthUnit::Millimetre);
}

TEST(CloudUnits, SurveyInMetresKeepsItsDetails)
{
    const test::TempFolder folder;
    const auto cloud = ImportPointCloud(
        folder.write("a.xyz", "512743.625 5403547.5 308.68\n512743.626 5403547.5 308.68\n"), {}, LengthUnit::Metre);

    EXPECT_EQ(cloud->getPose().position, rob::Posd(512743625, 5403547500, 308680));
    EXPECT_NEAR(cloud->getPoints().at(1).x - cloud->getPoints().at(0).x, 1, 1e-4);
}

} // namespace
} // namespace vrk::station
