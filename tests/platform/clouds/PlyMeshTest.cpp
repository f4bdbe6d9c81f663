#include "platform/station/clouds/PlyMesh.h"

#include "CloudFiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <set>

namespace vrk::station {
namespace {

using test::bytesOf;
using test::floatBytes;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StrEq;
using testing::ThrowsMessage;

std::string headerOf(const std::string& format, std::size_t points, std::size_t faces, const std::string& more = "",
                     const std::string& list = "vertex_indices")
{
    return "ply\nformat " + format + " 1.0\nelement vertex " + std::to_string(points) +
           "\nproperty float x\nproperty float y\nproperty float z\n" + more + "element face " + std::to_string(faces) +
           "\nproperty list uchar int " + list + "\nend_header\n";
}

const std::string square = "0 0 0\n1 0 0\n1 1 0\n0 1 0\n";

void expectFault(const std::string& bytes, const std::string& text)
{
    EXPECT_THAT([&] { parsePlyMesh(bytes); }, ThrowsMessage<CloudFault>(StrEq(text)));
}

/// The faces of a cube as squares.
std::string cube()
{
    std::string text = headerOf("ascii", 8, 6);
    for (int corner = 0; corner < 8; ++corner)
        text += std::to_string(corner & 1) + " " + std::to_string(corner >> 1 & 1) + " " + std::to_string(corner >> 2) +
                "\n";
    return text + "4 0 2 3 1\n4 4 5 7 6\n4 0 1 5 4\n4 2 6 7 3\n4 0 4 6 2\n4 1 3 7 5\n";
}

/// A tube without ends, of so many sides, one high.
std::string tube(int sides)
{
    std::string text = headerOf("ascii", static_cast<std::size_t>(2 * sides), static_cast<std::size_t>(sides));
    for (int i = 0; i < 2 * sides; ++i) {
        const double angle = 2 * std::numbers::pi * (i / 2) / sides;
        text += std::to_string(std::cos(angle)) + " " + std::to_string(std::sin(angle)) + " " + std::to_string(i % 2) +
                "\n";
    }
    for (int i = 0; i < sides; ++i) {
        const int next = (i + 1) % sides;
        text += "4 " + std::to_string(2 * i) + " " + std::to_string(2 * next) + " " + std::to_string(2 * next + 1) +
                " " + std::to_string(2 * i + 1) + "\n";
    }
    return text;
}

TEST(PlyMesh, PolygonsBecomeTriangles)
{
    const PlyTriangles read = parsePlyMesh(headerOf("ascii", 4, 2) + square + "4 0 1 2 3\n3 0 2 1\n");

    EXPECT_EQ(read.mesh.indices.size(), 9u);
    EXPECT_EQ(read.leftOut, 0u);
}

TEST(PlyMesh, BothByteOrdersAndBothNamesOfTheListAreRead)
{
    for (const bool isBig : {false, true}) {
        std::string face = bytesOf<std::uint8_t>(3);
        for (const std::int32_t corner : {2, 0, 1})
            face += bytesOf(corner, isBig);
        const std::string bytes = headerOf(isBig ? "binary_big_endian" : "binary_little_endian", 3, 1, "",
                                           isBig ? "vertex_index" : "vertex_indices") +
                                  floatBytes({0, 0, 0, 1, 0, 0, 0, 1, 0}, isBig) + face;

        const PlyTriangles read = parsePlyMesh(bytes);

        EXPECT_THAT(read.mesh.indices, ElementsAre(2, 0, 1));
        EXPECT_THAT(read.mesh.normals, ElementsAre(rob::Vec3f(0, 0, 1), rob::Vec3f(0, 0, 1), rob::Vec3f(0, 0, 1)));
    }
}

TEST(PlyMesh, FileThatEndsWithinItsFacesIsRefused)
{
    expectFault(headerOf("ascii", 4, 2) + square + "4 0 1 2 3\n", "line 14: the file ends after 1 of 2 faces");
    expectFault(headerOf("ascii", 4, 1) + square + "4 0 1", "line 14: a list of another length than it says");
    const std::string binary = headerOf("binary_little_endian", 3, 1) + floatBytes({0, 0, 0, 1, 0, 0, 0, 1, 0}) +
                               bytesOf<std::uint8_t>(3) + bytesOf(0) + bytesOf(1);
    expectFault(binary, "ends at byte " + std::to_string(binary.size()) + " of " + std::to_string(binary.size() + 4));
}

TEST(PlyMesh, CloudOfAFileThatEndsWithinItsFacesIsRefusedToo)
{
    EXPECT_THAT([] { parsePly(headerOf("ascii", 4, 2) + square + "4 0 1 2 3\n"); },
                ThrowsMessage<CloudFault>(StrEq("line 14: the file ends after 1 of 2 faces")));
}

TEST(PlyMesh, FaceOfAPointThatIsNotThereIsRefused)
{
    expectFault(headerOf("ascii", 4, 1) + square + "3 0 1 4\n", "line 14: a face with vertex 4 where there are 4");
    expectFault(headerOf("ascii", 4, 1) + square + "3 0 -1 2\n", "line 14: a face with vertex -1 where there are 4");
}

TEST(PlyMesh, TrianglesAtPointsThatAreNowhereAreLeftOutAndTheOthersKeepTheirCorners)
{
    const PlyTriangles read =
        parsePlyMesh(headerOf("ascii", 4, 2) + "0 0 0\nnan 0 0\n1 1 0\n0 1 0\n" + "3 0 1 2\n3 0 2 3\n");

    EXPECT_EQ(read.leftOut, 1u);
    ASSERT_THAT(read.mesh.indices, ElementsAre(0, 1, 2));
    EXPECT_EQ(read.mesh.points.at(1), rob::Posf(1, 1, 0));
}

TEST(PlyMesh, EdgesOfACubeStaySharp)
{
    const geometry::TriangleMesh mesh = parsePlyMesh(cube()).mesh;

    EXPECT_EQ(mesh.points.size(), 24u) << "each corner of each side has a normal of its own";
    for (const rob::Vec3f& n : mesh.normals)
        EXPECT_EQ(std::abs(n.x) + std::abs(n.y) + std::abs(n.z), 1);
}

TEST(PlyMesh, TubeIsSmoothAroundAndSharpWhereItHasFewSides)
{
    EXPECT_EQ(parsePlyMesh(tube(24)).mesh.points.size(), 48u);
    EXPECT_EQ(parsePlyMesh(tube(6)).mesh.points.size(), 24u);
    const geometry::TriangleMesh smooth = parsePlyMesh(tube(24)).mesh;
    for (std::size_t i = 0; i < smooth.points.size(); ++i) {
        EXPECT_NEAR(smooth.normals[i].x, smooth.points[i].x, 0.02);
        EXPECT_NEAR(smooth.normals[i].y, smooth.points[i].y, 0.02);
    }
}

TEST(PlyMesh, PointsThatAreThereTwiceCountAsOneForTheNormals)
{
    // Two triangles of a square, each with corners of its own, bent by 11 degrees.
    const PlyTriangles read =
        parsePlyMesh(headerOf("ascii", 6, 2) + "0 0 0\n1 0 0\n0 1 0\n1 0 0\n1 1 0.2\n0 1 0\n3 0 1 2\n3 3 4 5\n");

    EXPECT_EQ(read.mesh.points.size(), 6u);
    EXPECT_EQ(read.mesh.normals.at(1), read.mesh.normals.at(3));
    EXPECT_NE(read.mesh.normals.at(0), read.mesh.normals.at(4));
}

TEST(PlyMesh, FanOfManyTrianglesTakesNoSquareOfTheirNumber)
{
    constexpr int sides = 200000;
    std::string text = headerOf("ascii", sides + 1, sides) + "0 0 1\n";
    for (int i = 0; i < sides; ++i)
        text += std::to_string(std::cos(i * 3.14e-5)) + " " + std::to_string(std::sin(i * 3.14e-5)) + " 0\n";
    for (int i = 0; i < sides; ++i)
        text += "3 0 " + std::to_string(i + 1) + " " + std::to_string((i + 1) % sides + 1) + "\n";

    EXPECT_EQ(parsePlyMesh(text).mesh.indices.size(), 3u * sides); // would take hours
}

TEST(PlyMesh, NormalsOfTheFileAreKeptUnlessOneIsMissing)
{
    const std::string normals = "property float nx\nproperty float ny\nproperty float nz\n";
    const auto file = [&](const std::string& last) {
        return headerOf("ascii", 3, 1, normals) + "0 0 0 1 0 0\n1 0 0 1 0 0\n0 1 0 " + last + "\n3 0 1 2\n";
    };

    EXPECT_EQ(parsePlyMesh(file("1 0 0")).mesh.normals.at(0), rob::Vec3f(1, 0, 0));
    EXPECT_EQ(parsePlyMesh(file("0 0 0")).mesh.normals.at(0), rob::Vec3f(0, 0, 1));
}

TEST(PlyMesh, WhatIsWrittenIsReadAgain)
{
    geometry::TriangleMesh mesh = parsePlyMesh(cube(), {}, 25.4).mesh;
    mesh.colors.assign(mesh.points.size(), PointColor{7, 8, 9});

    const geometry::TriangleMesh read = parsePlyMesh(plyOf(mesh)).mesh;

    EXPECT_EQ(read.points, mesh.points);
    EXPECT_EQ(read.normals, mesh.normals);
    EXPECT_EQ(read.colors, mesh.colors);
    EXPECT_EQ(read.indices, mesh.indices);
    EXPECT_EQ(read.points.back(), rob::Posf(25.4f, 25.4f, 25.4f));
}

TEST(PlyMesh, HeaderTellsWhetherThereAreFaces)
{
    EXPECT_TRUE(holdsFaces(headerOf("ascii", 4, 1)));
    EXPECT_FALSE(holdsFaces(headerOf("ascii", 4, 0)));
    EXPECT_FALSE(holdsFaces(headerOf("ascii", 4, 1, "", "texture_indices")));
    EXPECT_FALSE(holdsFaces("ply\nformat ascii 1.0\nelement vertex 1\nproperty float x\nend_header\n"));
    EXPECT_FALSE(holdsFaces("solid box"));
    EXPECT_FALSE(holdsFaces(""));
}

TEST(PlyMesh, EachTruncationIsRefusedOrWhole)
{
    const std::string whole = plyOf(parsePlyMesh(cube()).mesh);
    for (std::size_t size = 0; size < whole.size(); size += 7)
        EXPECT_THROW(parsePlyMesh(whole.substr(0, size)), CloudFault) << size;
}

} // namespace
} // namespace vrk::station
