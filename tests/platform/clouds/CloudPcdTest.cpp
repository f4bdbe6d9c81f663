#include "CloudFiles.h"
#include "CloudParsing.h"

namespace vrk::station {
namespace {

using test::bytesOf;
using test::floatBytes;
using test::packed;
using test::packedData;
using test::pcdHeader;
using testing::ElementsAre;
using testing::IsEmpty;

const rob::Posf first(1, 2, 3);
const rob::Posf second(-4, 5.5f, 6e-3f);

void expectRefused(const std::string& bytes, const std::string& text)
{
    expectFault(parsePcd, bytes, text);
}

TEST(CloudPcd, ThreeWaysToStoreGiveTheSamePoints)
{
    const Cloud ascii = parsePcd(pcdHeader("ascii", 2) + "1 2 3\n-4 5.5 6e-3\n");
    const Cloud binary = parsePcd(pcdHeader("binary", 2) + floatBytes({1, 2, 3, -4, 5.5f, 6e-3f}));
    const Cloud compressed =
        parsePcd(pcdHeader("binary_compressed", 2) + packedData(floatBytes({1, -4, 2, 5.5f, 3, 6e-3f})));

    for (const Cloud* cloud : {&ascii, &binary, &compressed}) {
        EXPECT_THAT(cloud->points, ElementsAre(first, second));
        EXPECT_THAT(cloud->normals, IsEmpty());
    }
}

TEST(CloudPcd, NormalsAreKeptAndOtherFieldsPassedOver)
{
    const std::string fields = "rgb normal_x normal_y normal_z curvature x y z";
    const std::string ascii = "4.2e6 0 0.6 0.8 99 1 2 3\n";
    const std::string numbers = floatBytes({4.2e6f, 0, 0.6f, 0.8f, 99, 1, 2, 3});

    for (const Cloud& cloud :
         {parsePcd(pcdHeader("ascii", 1, fields) + ascii), parsePcd(pcdHeader("binary", 1, fields) + numbers),
          parsePcd(pcdHeader("binary_compressed", 1, fields) + packedData(numbers))}) {
        EXPECT_THAT(cloud.points, ElementsAre(first));
        EXPECT_THAT(cloud.normals, ElementsAre(rob::Vec3f(0, 0.6f, 0.8f)));
    }
}

TEST(CloudPcd, FieldsMayHaveSeveralEntriesAndOtherTypes)
{
    const std::string header = "FIELDS x hist y z\nSIZE 8 2 1 4\nTYPE F U I F\nCOUNT 1 3 1 1\nWIDTH 1\nDATA ";
    const std::string numbers = bytesOf(1.0) + bytesOf<std::uint16_t>(7) + bytesOf<std::uint16_t>(8) +
                                bytesOf<std::uint16_t>(9) + bytesOf<std::int8_t>(-2) + bytesOf(3.0f);

    EXPECT_THAT(parsePcd(header + "ascii\n1 7 8 9 -2 3").points, ElementsAre(rob::Posf(1, -2, 3)));
    EXPECT_THAT(parsePcd(header + "binary\n" + numbers).points, ElementsAre(rob::Posf(1, -2, 3)));
    EXPECT_THAT(parsePcd(header + "binary_compressed\n" + packedData(numbers)).points,
                ElementsAre(rob::Posf(1, -2, 3)));
}

TEST(CloudPcd, OldHeadersDoWithFewEntries)
{
    EXPECT_THAT(parsePcd("COLUMNS x y z\nSIZE 4 4 4\nTYPE F F F\nPOINTS 1\nDATA ascii\n1 2 3\n").points,
                ElementsAre(first));
    EXPECT_THAT(parsePcd("FIELDS x y z\nWIDTH 1\nHEIGHT 1\nDATA ascii\n1 2 3\n").points, ElementsAre(first));
}

TEST(CloudPcd, CompressedRunsThatRepeatAreOpened)
{
    // One byte as it is, then ten times the byte before: the twelve bytes of a point are zero.
    const std::string runs{'\x00', '\x00', '\xe0', '\x02', '\x00'};
    const std::string data = bytesOf<std::uint32_t>(runs.size()) + bytesOf<std::uint32_t>(12) + runs;

    EXPECT_THAT(parsePcd(pcdHeader("binary_compressed", 1) + data).points, ElementsAre(rob::Posf(0, 0, 0)));
}

TEST(CloudPcd, PointsThatAreNotFiniteAreDroppedAndCounted)
{
    const Cloud cloud = parsePcd(pcdHeader("ascii", 3) + "nan nan nan\n1 2 3\nnan nan nan\n");

    EXPECT_THAT(cloud.points, ElementsAre(first));
    EXPECT_EQ(cloud.dropped, 2u);
}

TEST(CloudPcd, HeaderThatIsNotOneIsRefused)
{
    const std::string fields = "FIELDS x y z\n";
    expectRefused("", "line 0: the file ends before the line 'DATA'");
    expectRefused("VERSION 0.7\nFIELDS x y z\n", "line 2: the file ends before the line 'DATA'");
    expectRefused("hello\n", "line 1: 'hello' is no entry of a PCD header");
    expectRefused("DATA ascii\n", "line 1: no FIELDS before the data");
    expectRefused(fields + "SIZE 4 4\n", "line 2: 2 entries for 3 fields");
    expectRefused("SIZE 4 4 4\n", "line 1: 3 entries for 0 fields");
    expectRefused(fields + "SIZE 4 4 big\n", "line 2: 'big' is not a count");
    expectRefused(fields + "COUNT 1 1 0\n", "line 2: '0' is not a count");
    expectRefused(fields + "COUNT 1 1 70000\n", "line 2: '70000' is not a count");
    expectRefused(fields + "SIZE 4 4 2\nDATA ascii\n", "line 3: the field 'z' has no known TYPE and SIZE");
    expectRefused(fields + "TYPE F F Q\nDATA ascii\n", "line 3: the field 'z' has no known TYPE and SIZE");
    expectRefused(fields + "DATA ascii\n", "line 2: no usable number of points before the data");
    expectRefused(fields + "WIDTH 4294967295\nHEIGHT 4294967295\nDATA ascii\n",
                  "line 4: no usable number of points before the data");
    expectRefused(fields + "WIDTH\n", "line 2: '' is not a count");
    expectRefused(fields + "WIDTH 2\nHEIGHT 3\nPOINTS 5\nDATA ascii\n",
                  "line 5: POINTS is 5, but WIDTH times HEIGHT is 6");
    expectRefused(fields + "POINTS 1\nDATA\n", "line 3: '' is no way to store data");
    expectRefused(fields + "POINTS 1\nDATA zipped\n", "line 3: 'zipped' is no way to store data");
    expectRefused(pcdHeader("ascii", 1, "x y") + "1 2\n", "line 10: no field 'z' before the data");
}

TEST(CloudPcd, PointsOfAbsurdSizeAreRefused)
{
    std::string names, counts;
    for (int i = 0; i < 100; ++i) {
        names += " f" + std::to_string(i);
        counts += " 65536";
    }
    expectRefused("FIELDS" + names + "\nCOUNT" + counts + "\nPOINTS 1\nDATA binary\n",
                  "line 4: points of 26214400 bytes");
}

TEST(CloudPcd, DamagedTextIsRefusedWithItsLine)
{
    const std::string header = pcdHeader("ascii", 2);
    expectRefused(header + "1 2 3\n1 2\n", "line 12: 2 numbers where 3 are expected");
    expectRefused(header + "1 2 3\n1 two 3\n", "line 12: 'two' is not a number");
    expectRefused(header + "1 2 3\n", "line 11: the file ends after 1 of 2 points");
    expectRefused(header + "1 2 3\n1 2 3\n\n1 2 3\n", "line 14: more than the 2 points of the header");
}

TEST(CloudPcd, BinaryDataOfAnotherLengthIsRefusedWithTheByte)
{
    const std::string header = pcdHeader("binary", 2);
    const std::size_t end = header.size() + 24;
    const std::string points = floatBytes({1, 2, 3, 4, 5, 6});
    expectRefused(header + points.substr(0, 20),
                  "ends at byte " + std::to_string(end - 4) + " of " + std::to_string(end));
    expectRefused(header + points + "more",
                  "byte " + std::to_string(end) + ": 4 bytes more than the 2 points of the header");
    EXPECT_EQ(parsePcd(header + points + std::string(4000, '\0')).points.size(), 2u) << "a page filled up";
}

TEST(CloudPcd, DamagedCompressedDataIsRefusedWithTheByte)
{
    const std::string header = pcdHeader("binary_compressed", 2);
    const std::size_t begin = header.size();
    const std::string data = packedData(floatBytes({1, -4, 2, 5.5f, 3, 6e-3f}));
    const auto at = [begin](std::size_t offset) { return std::to_string(begin + offset); };

    expectRefused(header + data.substr(0, 6), "ends at byte " + at(6) + " of " + at(8));
    expectRefused(header + data.substr(0, 30), "ends at byte " + at(30) + " of " + at(33));
    expectRefused(header + data + "more", "byte " + at(33) + ": 4 bytes more than the 2 points of the header");
    expectRefused(header + packedData(floatBytes({1, 2, 3})),
                  "byte " + at(4) + ": 12 bytes of data where 2 points need 24");

    std::string badRun = data;
    badRun[8] = '\x1f'; // a run longer than the data
    expectRefused(header + badRun, "byte " + at(8) + ": the compressed data is damaged");
    std::string noBefore = data;
    noBefore[8] = '\x20'; // a repetition of what is not there
    expectRefused(header + noBefore, "byte " + at(8) + ": the compressed data is damaged");
}

TEST(CloudPcd, FewBytesThatClaimToBeManyAreNotOpened)
{
    const std::string header = pcdHeader("binary_compressed", 300000000);
    const std::string data = bytesOf<std::uint32_t>(4) + bytesOf<std::uint32_t>(3600000000u) + "\x01xyz";

    expectRefused(header + data, "byte " + std::to_string(header.size() + 8) + ": the compressed data is damaged");
}

} // namespace
} // namespace vrk::station
