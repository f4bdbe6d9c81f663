#include "CloudFiles.h"
#include "CloudParsing.h"

namespace vrk::station {
namespace {

using test::bytesOf;
using test::floatBytes;
using test::plyHeader;
using testing::ElementsAre;
using testing::IsEmpty;

const rob::Posf first(1, 2, 3);
const rob::Posf second(-4, 5.5f, 6e-3f);

void expectRefused(const std::string& bytes, const std::string& text)
{
    expectFault(parsePly, bytes, text);
}

TEST(CloudPly, AsciiPointsAreRead)
{
    const Cloud cloud = parsePly(plyHeader("ascii", 2) + "1 2 3\n-4 +5.5 6e-3\n");

    EXPECT_THAT(cloud.points, ElementsAre(first, second));
    EXPECT_THAT(cloud.normals, IsEmpty());
    EXPECT_EQ(cloud.origin, rob::Posd(0, 0, 0));
}

TEST(CloudPly, BothByteOrdersAreRead)
{
    const auto points = [](bool bigEndian) { return floatBytes({1, 2, 3, -4, 5.5f, 6e-3f}, bigEndian); };

    EXPECT_THAT(parsePly(plyHeader("binary_little_endian", 2) + points(false)).points, ElementsAre(first, second));
    EXPECT_THAT(parsePly(plyHeader("binary_big_endian", 2) + points(true)).points, ElementsAre(first, second));
}

TEST(CloudPly, LinesMayEndWithCarriageReturns)
{
    const std::string text = "ply\r\nformat ascii 1.0\r\nelement vertex 1\r\nproperty float x\r\nproperty float y\r\n"
                             "property float z\r\nend_header\r\n1 2 3\r\n";

    EXPECT_THAT(parsePly(text).points, ElementsAre(first));
}

TEST(CloudPly, NormalsAreKeptInEveryOrderOfProperties)
{
    const std::string names = "nx ny nz quality z y x";

    const Cloud ascii = parsePly(plyHeader("ascii", 1, names) + "0 0.6 0.8 99 3 2 1\n");
    const Cloud binary =
        parsePly(plyHeader("binary_little_endian", 1, names) + floatBytes({0, 0.6f, 0.8f, 99, 3, 2, 1}));

    EXPECT_THAT(ascii.points, ElementsAre(first));
    EXPECT_THAT(ascii.normals, ElementsAre(rob::Vec3f(0, 0.6f, 0.8f)));
    EXPECT_THAT(binary.points, ElementsAre(first));
    EXPECT_THAT(binary.normals, ElementsAre(rob::Vec3f(0, 0.6f, 0.8f)));
}

TEST(CloudPly, ValuesOfAPropertyStandBesideThePointsThatAreKept)
{
    const std::string names = "x y z thickness";
    const auto read = [](const std::string& bytes) { return parsePlyWithValues(bytes, "thickness"); };

    const Cloud ascii = read(plyHeader("ascii", 3, names) + "1 2 3 0.5\nnan 0 0 9\n-4 5.5 6e-3 0.25\n");
    const Cloud binary =
        read(plyHeader("binary_big_endian", 2, names) + floatBytes({1, 2, 3, 0.5f, -4, 5.5f, 6e-3f, 0.25f}, true));

    EXPECT_THAT(ascii.points, ElementsAre(first, second));
    EXPECT_THAT(ascii.values, ElementsAre(0.5f, 0.25f));
    EXPECT_THAT(binary.values, ElementsAre(0.5f, 0.25f));
    EXPECT_THAT(parsePly(plyHeader("ascii", 1, names) + "1 2 3 0.5\n").values, IsEmpty());
}

TEST(CloudPly, PropertyThatIsAskedForMustBeThere)
{
    const auto read = [](std::string_view bytes, const Progress&, double) {
        return parsePlyWithValues(bytes, "thickness");
    };

    expectFault(read, plyHeader("ascii", 1) + "1 2 3\n", "line 8: the vertices have no property 'thickness'");
}

TEST(CloudPly, TwoThirdsOfANormalAreNone)
{
    EXPECT_THAT(parsePly(plyHeader("ascii", 1, "x y z nx ny") + "1 2 3 0 1\n").normals, IsEmpty());
}

TEST(CloudPly, EveryTypeOfNumberIsRead)
{
    struct Case {
        const char* type;
        std::string seven;
    };
    const std::vector<Case> cases{{"char", bytesOf<std::int8_t>(7)},   {"uint8", bytesOf<std::uint8_t>(7)},
                                  {"short", bytesOf<std::int16_t>(7)}, {"uint16", bytesOf<std::uint16_t>(7)},
                                  {"int", bytesOf<std::int32_t>(7)},   {"uint32", bytesOf<std::uint32_t>(7)},
                                  {"float32", bytesOf<float>(7)},      {"double", bytesOf<double>(7)}};
    for (const Case& c : cases) {
        std::string header = plyHeader("binary_little_endian", 1);
        header.replace(header.find("float x"), 5, c.type);

        EXPECT_THAT(parsePly(header + c.seven + floatBytes({2, 3})).points, ElementsAre(rob::Posf(7, 2, 3))) << c.type;
    }
}

TEST(CloudPly, OtherElementsAndListsArePassedOver)
{
    const std::string header = "element camera 2\nproperty uchar id\nelement strip 2\nproperty list uchar int of\n"
                               "element vertex 1\nproperty float x\nproperty list ushort short of\nproperty float y\n"
                               "property float z\nelement face 1\nproperty list uchar int vertex_indices\nend_header\n";
    const std::string strips = bytesOf<std::uint8_t>(2) + bytesOf(8) + bytesOf(9) + bytesOf<std::uint8_t>(0);
    const std::string face = bytesOf<std::uint8_t>(3) + bytesOf(0) + bytesOf(0) + bytesOf(0);
    const std::string vertex =
        floatBytes({1}) + bytesOf<std::uint16_t>(1) + bytesOf<std::int16_t>(9) + floatBytes({2, 3});

    EXPECT_THAT(parsePly("ply\nformat binary_little_endian 1.0\n" + header + "ab" + strips + vertex + face).points,
                ElementsAre(first));
    EXPECT_THAT(parsePly("ply\nformat ascii 1.0\n" + header + "1\n2\n2 8 9\n0\n1 1 9 2 3\n3 0 0 0\n").points,
                ElementsAre(first));
}

TEST(CloudPly, PointsThatAreNotFiniteAreDroppedAndCounted)
{
    const Cloud cloud = parsePly(plyHeader("ascii", 5, "x y z nx ny nz") +
                                 "nan 0 0 0 0 1\n1 2 3 0 0 1\n0 -inf 0 0 0 1\n-4 5.5 6e-3 nan 0 1\n0 1e99 0 0 0 1\n");

    EXPECT_THAT(cloud.points, ElementsAre(first, second));
    EXPECT_THAT(cloud.normals, ElementsAre(rob::Vec3f(0, 0, 1), rob::Vec3f(0, 0, 0)));
    EXPECT_EQ(cloud.dropped, 3u);
}

TEST(CloudPly, NumbersTooLargeOrTooSmallForAnyTypeAreInfiniteAndZero)
{
    const Cloud cloud = parsePly(plyHeader("ascii", 2) + "1e999 0 0\n1e-999 2 3\n");

    EXPECT_THAT(cloud.points, ElementsAre(rob::Posf(0, 2, 3)));
    EXPECT_EQ(cloud.dropped, 1u);
}

TEST(CloudPly, FarPointsAreRelativeToAPlaceNearThem)
{
    const Cloud cloud =
        parsePly(plyHeader("ascii", 2) + "512743.625 5403547.53 308.68\n512744.625 5403548.54 309.68\n");

    EXPECT_EQ(cloud.origin, rob::Posd(512744, 5403548, 309));
    EXPECT_NEAR(cloud.points[1].x - cloud.points[0].x, 1.0, 1e-6);
    EXPECT_NEAR(cloud.points[1].y - cloud.points[0].y, 1.01, 1e-6);
}

TEST(CloudPly, HeaderThatIsNotOneIsRefused)
{
    const std::string ok = "ply\nformat ascii 1.0\nelement vertex 1\n";
    expectRefused("", "line 1: not a PLY file");
    expectRefused("plywood\n", "line 1: not a PLY file");
    expectRefused("ply\nformat ascii 2.0\n", "line 2: not a format of PLY 1.0");
    expectRefused("ply\nformat morse 1.0\n", "line 2: not a format of PLY 1.0");
    expectRefused("ply\nproperty float x\n", "line 2: a property before the first element");
    expectRefused(ok + "property flot x\n", "line 4: 'flot' is no type of a property");
    expectRefused(ok + "property float\n", "line 4: not a property of PLY 1.0");
    expectRefused(ok + "property list float int of\n", "line 4: a list whose length is no whole number");
    expectRefused("ply\nelement vertex\n", "line 2: not an element of PLY 1.0");
    expectRefused("ply\nelement vertex many\n", "line 2: 'many' is not a count");
    expectRefused("ply\nelement vertex -1\n", "line 2: '-1' is not a count");
    expectRefused(ok + "vertices follow\n", "line 4: 'vertices' is no entry of a PLY header");
    expectRefused(ok, "line 3: the file ends before 'end_header'");
    expectRefused("ply\nelement vertex 0\nend_header\n", "line 3: a header without a format");
    expectRefused("ply\nformat ascii 1.0\nelement face 0\nend_header\n",
                  "line 4: a header without an element 'vertex'");
    expectRefused(plyHeader("ascii", 1, "x y t"), "line 8: the vertices have no property 'z'");
}

TEST(CloudPly, DamagedTextIsRefusedWithItsLine)
{
    const std::string header = plyHeader("ascii", 2);
    expectRefused(header + "1 2 3\n1 2\n", "line 10: 2 numbers where 3 are expected");
    expectRefused(header + "1 2 3\n1\n", "line 10: 1 number where 3 are expected");
    expectRefused(header + "1 2 3\n1 2 3 4\n", "line 10: 4 numbers where 3 are expected");
    expectRefused(header + "1 2 3\n1 two 3\n", "line 10: 'two' is not a number");
    expectRefused(header + "1 2 3\n1 2,5 3\n", "line 10: '2,5' is not a number");
    expectRefused(header + "1 2 3\n+-1 2 3\n", "line 10: '+-1' is not a number");
    expectRefused(header + "1 2 3\n", "line 9: the file ends after 1 of 2 points");
    expectRefused(header + "1 2 3\n1 2 3\n1 2 3\n", "line 11: more than the 2 points of the header");
    expectRefused(plyHeader("ascii", 18446744073709551615u) + "1 2 3\n",
                  "line 9: the file ends after 1 of 18446744073709551615 points");
}

TEST(CloudPly, FaultQuotesNoMoreThanAShortPrintablePiece)
{
    expectRefused(plyHeader("ascii", 1) + "1 2 \x01\xff" + std::string(100, 'z') + "\n",
                  "line 9: '??" + std::string(22, 'z') + "...' is not a number");
}

TEST(CloudPly, DamagedListInTextIsRefused)
{
    const std::string header = "ply\nformat ascii 1.0\nelement vertex 1\nproperty float x\nproperty float y\n"
                               "property float z\nproperty list uchar int of\nend_header\n";
    expectRefused(header + "1 2 3 2 7\n", "line 9: a list of another length than it says");
    expectRefused(header + "1 2 3 -1\n", "line 9: a list of another length than it says");
    expectRefused(header + "1 2 3 nan\n", "line 9: a list of another length than it says");
    expectRefused(header + "1 2 3 1 7 8\n", "line 9: 6 numbers where 5 are expected");
    expectRefused(header + "1 2 3\n", "line 9: the line ends too soon");
}

TEST(CloudPly, BinaryDataOfAnotherLengthIsRefusedWithTheByte)
{
    const std::string header = plyHeader("binary_little_endian", 2);
    ASSERT_EQ(header.size(), 138u);
    const std::string points = floatBytes({1, 2, 3, 4, 5, 6});
    expectRefused(header + points.substr(0, 23), "ends at byte 161 of 162");
    expectRefused(header, "ends at byte 138 of 162");
    expectRefused(header + points + "end", "byte 162: 3 bytes more than the 2 points of the header");
    EXPECT_EQ(parsePly(header + points + std::string(20, '\0') + "\n").points.size(), 2u) << "a page filled up";

    const std::string huge = plyHeader("binary_big_endian", 18446744073709551615u);
    EXPECT_THROW(parsePly(huge + points), CloudFault);
}

TEST(CloudPly, DamagedListInBinaryDataIsRefusedWithTheByte)
{
    const std::string header = "ply\nformat binary_little_endian 1.0\nelement strip 2\nproperty list int int of\n"
                               "element vertex 1\nproperty float x\nproperty float y\nproperty float z\nend_header\n";
    const std::size_t begin = header.size();
    expectRefused(header + bytesOf(-1), "byte " + std::to_string(begin + 4) + ": a list of -1 entries");
    expectRefused(header + bytesOf(3) + bytesOf(1),
                  "ends at byte " + std::to_string(begin + 8) + " of " + std::to_string(begin + 16));
    expectRefused(header + bytesOf(0),
                  "ends at byte " + std::to_string(begin + 4) + " of " + std::to_string(begin + 8));
}

} // namespace
} // namespace vrk::station
