#include "platform/station/Import.h"

#include "platform/layout/Body.h"
#include "platform/layout/Part.h"
#include "station/CacheFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>

namespace vrk::station {
namespace {

using testing::ThrowsMessage;

const std::string facet = "facet normal 0 0 1\n outer loop\n  vertex 0 0 0\n  vertex 1 0 0\n  vertex 0 1.5e-1 +2\n"
                          " endloop\nendfacet\n";

std::string binaryStl(std::uint32_t count, std::size_t records, const std::string& header = "made by a test")
{
    std::string bytes = header;
    bytes.resize(80, '\0');
    for (int shift : {0, 8, 16, 24})
        bytes += static_cast<char>(count >> shift);
    return bytes + std::string(50 * records, '\0');
}

class ImportStlTest : public testing::Test {
protected:
    void expectAccepted(const std::string& bytes) const
    {
        EXPECT_EQ(ImportFile(folder.write("part.stl", bytes)).size(), 1u);
    }
    void expectRefused(const std::string& bytes, const std::string& cause) const
    {
        const std::filesystem::path file = folder.write("part.stl", bytes);
        EXPECT_THAT([&] { ImportFile(file); }, ThrowsMessage<ImportError>(file.string() + ": " + cause));
    }

    test::TempFolder folder;
    test::CacheFolder cache;
};

TEST_F(ImportStlTest, FileBecomesAPartWithOneBodyThatNamesIt)
{
    const std::filesystem::path file = folder.write("robot hand.stl", binaryStl(1, 1));

    const auto parts = ImportFile(file);

    ASSERT_EQ(parts.size(), 1u);
    ASSERT_EQ(parts[0]->getBodies().size(), 1u);
    const std::shared_ptr<layout::Body> body = parts[0]->getBodies()[0];
    EXPECT_EQ(parts[0]->getName(), "robot hand");
    EXPECT_EQ(body->getGeometryUri(), file.string());
    EXPECT_EQ(body->getFileType(), "stl");
    EXPECT_EQ(body->getMaterialName(), "MeshBody");
    EXPECT_TRUE(body->getShape().IsNull());
}

TEST_F(ImportStlTest, RelativePathIsNamedAbsolutely)
{
    const std::filesystem::path file = folder.write("part.stl", binaryStl(1, 1));

    const auto parts = ImportFile(std::filesystem::relative(file));

    EXPECT_EQ(parts[0]->getBodies()[0]->getGeometryUri(), file.string());
}

TEST_F(ImportStlTest, BothFormsAreAccepted)
{
    expectAccepted(binaryStl(3, 3));
    expectAccepted("solid a\n" + facet + "endsolid a\n");
    expectAccepted("solid a\r\n" + facet + facet + "endsolid a\r\nsolid b\r\n" + facet + "endsolid b\r\n");
    expectAccepted(facet);
}

TEST_F(ImportStlTest, BinaryFileMayBeginLikeAnAsciiOne)
{
    expectAccepted(binaryStl(2, 2, "solid of a careless writer"));
}

TEST_F(ImportStlTest, EndingInCapitalsIsAccepted)
{
    EXPECT_EQ(ImportFile(folder.write("part.STL", binaryStl(1, 1))).size(), 1u);
}

TEST_F(ImportStlTest, FileThatTheViewDoesNotReadIsKeptInAFormThatItDoes)
{
    const std::string capitals = "SOLID A\nFACET NORMAL 0 0 1\n VERTEX 0 0 0 vertex 1 0 0 Vertex 0 2 0\nENDFACET\n";
    for (const std::filesystem::path& file :
         {folder.write("part.Stl", binaryStl(1, 1)), folder.write("capitals.stl", capitals)}) {
        const auto parts = ImportFile(file);

        const std::shared_ptr<layout::Body> body = parts[0]->getBodies()[0];
        EXPECT_EQ(body->getName(), file.stem().string());
        EXPECT_NE(body->getGeometryUri(), file.string());
        EXPECT_TRUE(body->getGeometryUri().starts_with(cache.path().string())) << body->getGeometryUri();
        EXPECT_TRUE(body->getGeometryUri().ends_with(".stl"));
        EXPECT_EQ(test::TempFolder::Read(body->getGeometryUri()).size(), 134u);
    }
}

TEST_F(ImportStlTest, TrianglesOfAKeptFileAreTheSame)
{
    const auto parts =
        ImportFile(folder.write("a.stl", "FACET NORMAL 0 0 1 VERTEX 0 0 0 VERTEX 1 0 0 VERTEX 0 2 0 ENDFACET"));

    const std::string bytes = test::TempFolder::Read(parts[0]->getBodies()[0]->getGeometryUri());
    std::array<float, 12> facet{};
    std::memcpy(facet.data(), bytes.data() + 84, sizeof facet);

    EXPECT_THAT(facet, testing::ElementsAre(0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 2, 0));
}

TEST_F(ImportStlTest, BytesBehindTheTrianglesAreLeftOutOfTheKeptFile)
{
    for (const std::string& more :
         {std::string("\n"), std::string(7, '\0'), std::string(50, '\0'), std::string(512, 'x')}) {
        const std::filesystem::path file = folder.write("more.stl", binaryStl(2, 2) + more);

        const auto parts = ImportFile(file);

        const std::string kept = parts[0]->getBodies()[0]->getGeometryUri();
        EXPECT_NE(kept, file.string());
        EXPECT_EQ(test::TempFolder::Read(kept).size(), 84u + 2 * 50u);
    }
}

/// By them faces have light and shade.
TEST_F(ImportStlTest, NormalsThatAreLeftOutAreThoseOfTheCorners)
{
    const float corners[] = {0, 0, 0, 2, 0, 0, 0, 0, 3}; // in the plane of x and z
    std::string binary = binaryStl(2, 2);
    std::memcpy(binary.data() + 84 + 12, corners, sizeof corners); // the second triangle has no area, and no normal
    const std::string ascii = "solid s\nfacet normal 0 0 0\nouter loop\nvertex 0 0 0\nvertex 2 0 0\nvertex 0 0 3\n"
                              "endloop\nendfacet\n" +
                              facet + "endsolid s\n";
    for (const std::string& bytes : {binary, ascii}) {
        const std::filesystem::path file = folder.write("plain.stl", bytes);

        const auto parts = ImportFile(file);

        const std::string kept = parts[0]->getBodies()[0]->getGeometryUri();
        ASSERT_NE(kept, file.string());
        const std::string written = test::TempFolder::Read(kept);
        ASSERT_EQ(written.size(), 84u + 2 * 50u);
        float normal[3];
        std::memcpy(normal, written.data() + 84, sizeof normal);
        EXPECT_THAT(normal, testing::ElementsAre(0, -1, 0));
        std::memcpy(normal, written.data() + 84 + 50, sizeof normal);
        EXPECT_EQ(normal[0], 0);
        EXPECT_NE(normal[2], -1); // as the file has it, or none
    }
}

TEST_F(ImportStlTest, TrianglesThatAreNowhereAreLeftOutWithAWord)
{
    for (const float wrong : {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(), 1e30f}) {
        std::string bytes = binaryStl(100, 100);
        std::memcpy(bytes.data() + 84 + 99 * 50 + 12, &wrong, sizeof wrong); // of the last one's first corner
        testing::internal::CaptureStderr();

        const auto parts = ImportFile(folder.write("partly.stl", bytes));

        EXPECT_THAT(testing::internal::GetCapturedStderr(),
                    testing::HasSubstr("1 of 100 triangles are left out: their corners are nowhere"));
        EXPECT_EQ(test::TempFolder::Read(parts[0]->getBodies()[0]->getGeometryUri()).size(), 84u + 99 * 50u);
    }
}

TEST_F(ImportStlTest, FileOfTrianglesThatAreNowhereIsRefused)
{
    std::string bytes = binaryStl(2, 2);
    const float none = std::numeric_limits<float>::quiet_NaN();
    for (const std::size_t triangle : {0, 1})
        std::memcpy(bytes.data() + 84 + triangle * 50 + 12, &none, sizeof none);
    const std::filesystem::path file = folder.write("nan.stl", bytes);

    EXPECT_THAT([&] { ImportFile(file); },
                testing::ThrowsMessage<ImportError>(file.string() +
                                                    ": no triangle of the STL file has corners that are somewhere"));
}

TEST_F(ImportStlTest, NameOfASolidMayHoldTheWordFacet)
{
    for (const char* name : {"facet", "a facet normal to z", "Facet 7", "facet normal facet", "many facet"}) {
        const std::string text = std::string("solid ") + name + "\n" + facet + facet + "endsolid " + name + "\n";
        const std::filesystem::path file = folder.write("named.stl", text);

        const auto parts = ImportFile(file);

        const std::string kept = parts[0]->getBodies()[0]->getGeometryUri();
        EXPECT_NE(kept, file.string()) << name;
        EXPECT_EQ(test::TempFolder::Read(kept).size(), 84u + 2 * 50u) << name;
    }
}

TEST_F(ImportStlTest, FileOfOneLineIsReadToItsEnd)
{
    std::string line = facet;
    std::ranges::replace(line, '\n', ' ');
    const std::filesystem::path plain = folder.write("line.stl", "solid of one " + line + line + "endsolid of one");
    const std::filesystem::path named = folder.write("facet.stl", "solid facet " + line + line + "endsolid facet");

    EXPECT_EQ(ImportFile(plain)[0]->getBodies()[0]->getGeometryUri(), plain.string());
    EXPECT_EQ(test::TempFolder::Read(ImportFile(named)[0]->getBodies()[0]->getGeometryUri()).size(), 84u + 2 * 50u);
}

TEST_F(ImportStlTest, FileWithoutATriangleIsRefused)
{
    expectRefused("", "the file is empty");
    expectRefused(binaryStl(0, 0), "the STL file holds no triangle");
    expectRefused("solid a\nendsolid a\n", "neither a binary nor an ascii STL file");
}

TEST_F(ImportStlTest, BinaryFileOfAnotherLengthIsRefused)
{
    expectRefused(binaryStl(3, 2), "not an STL file, or a damaged one: 3 triangles need 234 bytes, it has 184");
    expectRefused(binaryStl(0, 2), "not an STL file, or a damaged one: 0 triangles need 84 bytes, it has 184");
    expectRefused(binaryStl(1, 1).substr(0, 60), "the binary STL file is cut short");
    expectRefused(binaryStl(0xFFFFFFFF, 1),
                  "not an STL file, or a damaged one: 4294967295 triangles need 214748364834 bytes, it has 134");
}

TEST_F(ImportStlTest, OtherTextIsRefused)
{
    expectRefused("hello, I am no mesh", "neither a binary nor an ascii STL file");
    expectRefused(std::string(1000, 'x'), "neither a binary nor an ascii STL file");
}

TEST_F(ImportStlTest, AsciiFileThatIsCutShortIsRefused)
{
    expectRefused("solid\n" + facet.substr(0, facet.find("endloop")), "the ascii STL file is cut short");
    expectRefused("solid\n" + facet.substr(0, facet.find("1.5e-1")), "the ascii STL file is cut short");
}

TEST_F(ImportStlTest, WordInPlaceOfANumberIsRefused)
{
    expectRefused("facet normal 0 zero 1", "a normal of the STL file is not three numbers");
    expectRefused("facet normal 0 0 1 vertex 0 0 nan", "a vertex of the STL file is not three numbers");
    expectRefused("facet normal 0 0 1 vertex 0 0 1e99", "a vertex of the STL file is not three numbers");
    expectRefused("facet normal 0 0 1 vertex 0 0 1.5mm", "a vertex of the STL file is not three numbers");
}

TEST_F(ImportStlTest, NumberThatTheViewDoesNotReadIsRefused)
{
    expectRefused("facet normal 0 0 1 vertex 0 0 +-1", "a vertex of the STL file is not three numbers");
}

TEST_F(ImportStlTest, NumberTooSmallForAFloatIsZero)
{
    expectAccepted("facet normal 0 0 1 vertex 0 0 1e-60 vertex 1 0 -1e-400 vertex 0 1 0 endfacet");
}

TEST_F(ImportStlTest, FacetOfAnotherMakeIsRefused)
{
    const std::string cause = "a facet of the STL file has not one normal and three vertices";
    expectRefused("facet normal 0 0 1 vertex 0 0 0 vertex 1 0 0 endfacet", cause);
    expectRefused("facet vertex 0 0 0 vertex 1 0 0 vertex 0 1 0 endfacet", cause);
    expectRefused("facet normal 0 0 1 vertex 0 0 0 vertex 1 0 0 vertex 1 1 0 vertex 0 1 0 endfacet", cause);
}

} // namespace
} // namespace vrk::station
