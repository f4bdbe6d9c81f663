#include "mesh/StlReader.h"
#include "StlTexts.h"
#include "platform/geometry/StlFormat.h"
#include "platform/station/Uri.h"
#include "support/ThrowsExactly.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <limits>
#include <numeric>
#include <random>
#include <sstream>
#include <unistd.h>

namespace vrk::visual {
namespace {

using rob::Posf;
using rob::Vec3f;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::ThrowsMessage;

Mesh parsed(std::string_view text)
{
    return parseStl(bytesOf(text));
}

std::string facet(const std::string& content)
{
    return "facet " + content + " endfacet";
}

std::string facetWithVertex(const std::string& vertex)
{
    return facet("normal 0 0 1 vertex " + vertex + " vertex 1 0 0 vertex 0 1 0");
}

/// A folder of its own that goes with the test.
class ReadStl : public testing::Test {
protected:
    ReadStl() { std::filesystem::create_directories(folder); }
    ~ReadStl() override { std::filesystem::remove_all(folder); }

    std::string write(const std::string& name, const std::string& content)
    {
        const std::filesystem::path path = folder / name;
        std::ofstream(path, std::ios::binary) << content;
        return path.string();
    }

    const std::filesystem::path folder =
        std::filesystem::temp_directory_path() / ("vrk_read_stl_" + std::to_string(getpid()));
};

std::vector<StlRecord> randomRecords(std::size_t count)
{
    std::mt19937 random(7);
    std::uniform_real_distribution<float> number(-1000, 1000);
    std::vector<StlRecord> records(count);
    for (StlRecord& record : records) {
        record.normal = {number(random), number(random), number(random)};
        for (Posf& corner : record.corners)
            corner = {number(random), number(random), number(random)};
    }
    return records;
}

void expectSameTriangles(const Mesh& mesh, const std::vector<StlRecord>& records)
{
    ASSERT_EQ(mesh.vertices.size(), 3 * records.size());
    ASSERT_EQ(mesh.normals.size(), 3 * records.size());
    ASSERT_EQ(mesh.indices.size(), 3 * records.size());
    for (std::size_t i = 0; i < mesh.vertices.size(); ++i) {
        ASSERT_EQ(mesh.vertices[i], records[i / 3].corners[i % 3]) << i;
        ASSERT_EQ(mesh.normals[i], records[i / 3].normal) << i;
        ASSERT_EQ(mesh.indices[i], i);
    }
}

} // namespace

TEST(ParseStl, BinaryRecordsBecomeVerticesThatNoTwoTrianglesShare)
{
    const std::vector<StlRecord> records = randomRecords(2000); // several groups and a rest

    const Mesh mesh = parsed(binaryStl(records));

    expectSameTriangles(mesh, records);
    EXPECT_THAT(mesh.colors, IsEmpty());
}

TEST(ParseStl, BinaryHeaderWithoutTrianglesIsAnEmptyMesh)
{
    const std::string file = binaryStl({});
    ASSERT_EQ(file.size(), 84u);

    const Mesh mesh = parsed(file);

    EXPECT_THAT(mesh.vertices, IsEmpty());
    EXPECT_THAT(mesh.indices, IsEmpty());
}

TEST(ParseStl, ZeroNormalOfABinaryFileStays)
{
    const Mesh mesh = parsed(binaryStl({{{0, 0, 0}, {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}}}));

    EXPECT_THAT(mesh.normals, ElementsAre(Vec3f(), Vec3f(), Vec3f()));
}

TEST(ParseStl, TextWhoseSizeHappensToFitItsOwnCountIsBinary)
{
    // "!\0\0\0" at offset 80 tells 33 triangles.
    std::string text = oneFacet;
    text.resize(80, ' ');
    text += std::string("!\0\0\0", 4);
    text.resize(84 + 33 * 50, ' ');

    EXPECT_EQ(parsed(text).vertices.size(), 99u);
}

TEST(ParseStl, BinaryFileWithTrailingBytesIsReadAsText)
{
    std::string file = binaryStl(randomRecords(1));
    file += ' ';

    EXPECT_THAT([&] { parsed(file); }, test::throwsExactly<std::runtime_error>("Bad STL File"));
}

TEST(ParseStl, CountThatWrapsAroundIn32BitsIsNotBinary)
{
    // 84 + 50 * n is the file's size modulo 2^32 only.
    const std::uint32_t count = 85899346; // 50 n = 2^32 + 4
    std::string file = binaryStl(count, {});
    file.append(4, ' ');

    EXPECT_THAT([&] { parsed(file); }, test::throwsExactly<std::runtime_error>("Bad STL File"));
}

TEST(ParseStl, AsciiFacetGivesThreeVerticesWithItsNormal)
{
    const Mesh mesh = parsed(oneFacet);

    EXPECT_THAT(mesh.vertices, ElementsAre(Posf(0, 0, 0), Posf(1.5f, 0, 0), Posf(0, 25, -3)));
    EXPECT_THAT(mesh.normals, ElementsAre(Vec3f(0, 0, 1), Vec3f(0, 0, 1), Vec3f(0, 0, 1)));
    EXPECT_THAT(mesh.indices, ElementsAre(0, 1, 2));
    EXPECT_THAT(mesh.name, IsEmpty());
}

TEST(ParseStl, EveryWhiteSpaceOfAStreamSeparatesWords)
{
    const Mesh mesh = parsed("facet\rnormal\v0\f0\t1\r\nvertex 0 0 0\fvertex 1 0 0\vvertex 0 1 0\rendfacet");

    EXPECT_EQ(mesh.vertices.size(), 3u);
}

TEST(ParseStl, FacetsOfSeveralSolidsAreOneMesh)
{
    const Mesh mesh = parsed(oneFacet + oneFacet);

    EXPECT_THAT(mesh.indices, ElementsAre(0, 1, 2, 3, 4, 5));
}

TEST(ParseStl, VertexBeforeItsNormalHasNone)
{
    const Mesh mesh =
        parsed(facetWithVertex("0 0 0") + " facet vertex 0 0 0 vertex 1 0 0 normal 0 1 0 vertex 0 0 1 endfacet");

    EXPECT_THAT(mesh.normals,
                ElementsAre(Vec3f(0, 0, 1), Vec3f(0, 0, 1), Vec3f(0, 0, 1), Vec3f(), Vec3f(), Vec3f(0, 1, 0)));
}

struct BadStlCase {
    const char* name;
    std::string text;
    const char* failure;
};
class BadStl : public testing::TestWithParam<BadStlCase> {};

TEST_P(BadStl, IsRefused)
{
    EXPECT_THAT([] { parsed(GetParam().text); }, test::throwsExactly<std::runtime_error>(GetParam().failure));
}

const char* const badFile = "Bad STL File";
const char* const badNormal = "Error in reading normal";
const char* const badVertex = "Error in reading vertex";

INSTANTIATE_TEST_SUITE_P(
    Table, BadStl,
    testing::Values(
        BadStlCase{"NoBytes", "", badFile}, BadStlCase{"OnlySpace", " \n\t\r\v\f ", badFile},
        BadStlCase{"NoFacet", "solid part endsolid part", badFile},
        BadStlCase{"WordThatOnlyBeginsLikeAFacet",
                   "facets normal 0 0 1 vertex 0 0 0 vertex 1 0 0 vertex 0 1 0 endfacet", badFile},
        BadStlCase{"WordThatOnlyBeginsLikeTheEnd",
                   "facet normal 0 0 1 vertex 0 0 0 vertex 1 0 0 vertex 0 1 0 endfacets", badFile},
        BadStlCase{"OtherCase", "FACET NORMAL 0 0 1 ENDFACET", badFile},
        BadStlCase{"OtherCaseOfTheNormal", facet("NORMAL 0 0 1 vertex 0 0 0 vertex 1 0 0 vertex 0 1 0"), badFile},
        BadStlCase{"OtherCaseOfAVertex", facet("normal 0 0 1 Vertex 0 0 0 vertex 1 0 0 vertex 0 1 0"), badFile},
        BadStlCase{"OtherCaseOfTheEnd", "facet normal 0 0 1 vertex 0 0 0 vertex 1 0 0 vertex 0 1 0 endFacet", badFile},
        BadStlCase{"EndInsideAFacet", "facet normal 0 0 1 vertex 0 0 0", badFile},
        BadStlCase{"TwoVertices", facet("normal 0 0 1 vertex 0 0 0 vertex 1 0 0"), badFile},
        BadStlCase{"FourVertices", facet("normal 0 0 1 vertex 0 0 0 vertex 1 0 0 vertex 0 1 0 vertex 1 1 0"), badFile},
        BadStlCase{"NoNormal", facet("vertex 0 0 0 vertex 1 0 0 vertex 0 1 0"), badFile},
        BadStlCase{"TwoNormals", facet("normal 0 0 1 normal 0 0 1 vertex 0 0 0 vertex 1 0 0 vertex 0 1 0"), badFile},
        BadStlCase{"WordInANormal", facet("normal 0 up 1"), badNormal},
        BadStlCase{"NanInANormal", facet("normal nan nan nan"), badNormal},
        BadStlCase{"EndInANormal", "facet normal 0 0", badNormal},
        BadStlCase{"WordInAVertex", facetWithVertex("0 zero 0"), badVertex},
        BadStlCase{"InfInAVertex", facetWithVertex("0 inf 0"), badVertex},
        BadStlCase{"TwoNumbersInAVertex", facetWithVertex("0 0"), badVertex},
        BadStlCase{"LoneSign", facetWithVertex("0 - 0"), badVertex},
        BadStlCase{"TwoSigns", facetWithVertex("0 +-1 0"), badVertex},
        BadStlCase{"ExponentWithoutDigits", facetWithVertex("0 1e 0"), badVertex},
        BadStlCase{"ExponentWithASignOnly", facetWithVertex("0 1e+ 0"), badVertex},
        BadStlCase{"LonePoint", facetWithVertex("0 . 0"), badVertex},
        BadStlCase{"TooLarge", facetWithVertex("0 1e39 0"), badVertex},
        BadStlCase{"FarTooLarge", facetWithVertex("0 -1e400 0"), badVertex},
        BadStlCase{"Hexadecimal", facetWithVertex("0 0x10 0"), badVertex},
        BadStlCase{"DecimalComma", facetWithVertex("0 1,5 0"), badVertex}),
    [](const auto& info) { return std::string(info.param.name); });

struct NumberCase {
    const char* name;
    const char* text;
    float z;
};
class StlNumber : public testing::TestWithParam<NumberCase> {};

TEST_P(StlNumber, IsReadAsAStreamReadsIt)
{
    // As the last number of a vertex, so that what it leaves is skipped as a word of its own.
    const Mesh mesh = parsed(facetWithVertex(std::string("0 0 ") + GetParam().text));

    EXPECT_EQ(mesh.vertices[0].z, GetParam().z);
}

INSTANTIATE_TEST_SUITE_P(
    Table, StlNumber,
    testing::Values(NumberCase{"Plus", "+1.5", 1.5f}, NumberCase{"Minus", "-2", -2.0f},
                    NumberCase{"NoLeadingDigit", ".5", 0.5f}, NumberCase{"NoFraction", "5.", 5.0f},
                    NumberCase{"CapitalExponent", "1E+2", 100.0f}, NumberCase{"LeadingZeros", "007", 7.0f},
                    NumberCase{"UnitBehind", "1.5mm", 1.5f}, NumberCase{"SecondPoint", "1.2.3", 1.2f},
                    NumberCase{"TooSmall", "1e-60", 0.0f}, NumberCase{"FarTooSmall", "1e-400", 0.0f},
                    NumberCase{"Subnormal", "1e-45", std::numeric_limits<float>::denorm_min()},
                    NumberCase{"Largest", "3.4028235e38", std::numeric_limits<float>::max()}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(ParseStl, NumbersAgreeWithAStreamOnAnyText)
{
    // A property: a stream with the classic locale is the oracle of what a number is and how far it goes.
    std::mt19937 random(11);
    const std::string_view alphabet = "0123456789+-..eE x";
    for (unsigned i = 0; i < 20000; ++i) {
        std::string text;
        for (unsigned k = random() % 9; k-- > 0;)
            text += alphabet[random() % alphabet.size()];
        SCOPED_TRACE(text);
        std::istringstream stream("0 0 " + text);
        stream.imbue(std::locale::classic());
        Posf expected;
        stream >> expected.x >> expected.y >> expected.z;

        if (stream.fail())
            EXPECT_THAT([&] { parsed(facet("normal 0 0 1 vertex 0 0 " + text)); },
                        test::throwsExactly<std::runtime_error>(badVertex));
        else
            EXPECT_EQ(parsed(facetWithVertex("0 0 " + text)).vertices[0], expected);
    }
}

TEST(StlText, WhatIsStrictlyRightTheViewReadsWithTheSameCorners)
{
    // A property: damaged files that the import takes as they stand must open in the view.
    const std::string whole = oneFacet + oneFacet + facetWithVertex("+1 -2.5e3 .5");
    const std::string_view alphabet = "0123456789+-.eE xfV\n";
    std::mt19937 random(7);
    unsigned taken = 0;
    for (unsigned i = 0; i < 20000; ++i) {
        std::string text = whole;
        for (unsigned changes = 1 + random() % 3; changes-- > 0;)
            text[random() % text.size()] = alphabet[random() % alphabet.size()];
        SCOPED_TRACE(text);
        std::vector<Posf> corners;
        const auto strict = geometry::readStlText(
            text, {.anyCase = true, .wholeNumbers = true}, [&corners](const geometry::StlFacet& read, unsigned) {
                for (std::size_t c = 0; c < 9; c += 3)
                    corners.emplace_back(read.corners[c], read.corners[c + 1], read.corners[c + 2]);
            });
        if (strict.fault != geometry::StlFault::None || !strict.isInSmallLetters)
            continue;
        ++taken;
        ASSERT_EQ(parsed(text).vertices, corners);
    }
    EXPECT_GT(taken, 1000u);
}

TEST(StlText, WordsInCapitalsAreNotedWhereTheyAreTaken)
{
    const std::string capitals = "FACET NORMAL 0 0 1 VERTEX 0 0 0 vertex 1 0 0 Vertex 0 2 0 ENDFACET";
    const auto ignore = [](const geometry::StlFacet&, unsigned) {};

    EXPECT_EQ(geometry::readStlText(capitals, {}, ignore).fault, geometry::StlFault::NoFacet);
    EXPECT_EQ(geometry::readStlText(capitals, {.anyCase = true}, ignore).fault, geometry::StlFault::None);
    EXPECT_FALSE(geometry::readStlText(capitals, {.anyCase = true}, ignore).isInSmallLetters);
    EXPECT_TRUE(geometry::readStlText(oneFacet, {.anyCase = true}, ignore).isInSmallLetters);
}

TEST_F(ReadStl, BinaryFileIsNamedByItsPath)
{
    const std::vector<StlRecord> records = randomRecords(50000); // more than two blocks
    const std::string path = write("part.stl", binaryStl(records));

    const Mesh mesh = readStl(path);

    expectSameTriangles(mesh, records);
    EXPECT_EQ(mesh.name, path);
}

TEST_F(ReadStl, BinaryFileTakesNoMoreRoomThanItsTriangles)
{
    const Mesh mesh = readStl(write("part.stl", binaryStl(randomRecords(3000))));

    EXPECT_EQ(mesh.vertices.capacity(), 9000u);
    EXPECT_EQ(mesh.normals.capacity(), 9000u);
    EXPECT_EQ(mesh.indices.capacity(), 9000u);
}

TEST_F(ReadStl, AsciiFileIsRead)
{
    EXPECT_EQ(readStl(write("part.stl", oneFacet)).vertices.size(), 3u);
}

TEST_F(ReadStl, FileShorterThanAHeaderIsText)
{
    const std::string path = write("part.stl", "facet");

    EXPECT_THAT([&] { readStl(path); }, test::throwsExactly<std::runtime_error>(badFile));
}

TEST_F(ReadStl, BinaryFileWithTrailingBytesIsReadAsText)
{
    const std::string path = write("part.stl", binaryStl(randomRecords(2)) + "\n" + oneFacet);

    EXPECT_EQ(readStl(path).vertices.size(), 3u);
}

TEST_F(ReadStl, FileThatCannotBeOpenedIsNamed)
{
    const std::string path = (folder / "absent.stl").string();

    EXPECT_THAT([&] { readStl(path); }, test::throwsExactly<std::runtime_error>(path));
}

TEST_F(ReadStl, FolderIsNoFile)
{
    const std::filesystem::path path = folder / "folder.stl";
    std::filesystem::create_directory(path);

    EXPECT_THAT([&] { readStl(path.string()); }, test::throwsExactly<std::runtime_error>(path.string()));
}

TEST_F(ReadStl, FileUriIsAFile)
{
    const std::string path = write("part.stl", oneFacet);

    const Mesh mesh = readStl("file://" + path);

    EXPECT_EQ(mesh.vertices.size(), 3u);
    EXPECT_EQ(mesh.name, "file://" + path);
}

TEST_F(ReadStl, StationUriIsAFileOfTheStationsFolder)
{
    write("part.stl", oneFacet);
    SetStationFolder(folder);

    EXPECT_EQ(readStl("station://part.stl").vertices.size(), 3u);
    EXPECT_THAT([] { readStl("station://absent.stl"); },
                test::throwsExactly<std::runtime_error>((folder / "absent.stl").string()));

    SetStationFolder({});
}

TEST_F(ReadStl, OtherUriIsReadByThePlatform)
{
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::create_directory(folder / "other:");
    write("other:/part.stl", binaryStl(randomRecords(2)));

    std::filesystem::current_path(folder); // where the platform's reader looks for a scheme that it does not know
    const Mesh mesh = readStl("other://part.stl");
    std::filesystem::current_path(before);

    expectSameTriangles(mesh, randomRecords(2));
    EXPECT_EQ(mesh.name, "other://part.stl");
}

TEST_F(ReadStl, UriWhoseSchemeOnlyBeginsLikeAFilesIsTakenForAPath)
{
    for (const std::string uri : {"files://absent/part.stl", "stationery://absent/part.stl"})
        EXPECT_THAT([&] { readStl(uri); }, test::throwsExactly<std::runtime_error>(uri));
}

TEST_F(ReadStl, OtherUriGoesToThePlatformsReader)
{
    // Its failure says more than the bare path of a file that cannot be opened.
    const std::string uri = "other://absent/part.stl";

    EXPECT_THAT([&] { readStl(uri); },
                ThrowsMessage<std::runtime_error>(testing::AllOf(testing::HasSubstr(uri), testing::Ne(uri))));
}

} // namespace vrk::visual
