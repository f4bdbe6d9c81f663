#include "mesh/TextMesh.h"

#include "mesh/GlyphTable.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <set>

namespace vrk::visual {
namespace {

using testing::IsEmpty;
using testing::SizeIs;

const Glyph& glyphOf(char c)
{
    return glyphTable[c - firstGlyph];
}

std::vector<rob::Posf> verticesOf(const std::string& text)
{
    return makeTextMesh(text)->vertices;
}

/// How far the second half of the vertices, those of the second of two equal characters, lies from the first half.
rob::Vec3f stepBetweenEqualGlyphs(const std::string& text)
{
    const std::vector<rob::Posf> vertices = verticesOf(text);
    return vertices.at(vertices.size() / 2) - vertices.at(0);
}

double areaOf(const Glyph& glyph, int triangle)
{
    const auto& [a, b, c] = glyph.triangles[triangle];
    const auto& v = glyph.vertices;
    return 0.5 * ((v[b][0] - v[a][0]) * (v[c][1] - v[a][1]) - (v[b][1] - v[a][1]) * (v[c][0] - v[a][0]));
}

TEST(TextMesh, EmptyTextIsAnEmptyMeshWithoutName)
{
    const auto mesh = makeTextMesh("");

    EXPECT_THAT(mesh->name, IsEmpty());
    EXPECT_THAT(mesh->vertices, IsEmpty());
    EXPECT_THAT(mesh->normals, IsEmpty());
    EXPECT_THAT(mesh->indices, IsEmpty());
}

TEST(TextMesh, IsNamedByItsText)
{
    EXPECT_EQ(makeTextMesh("Home 1\nB")->name, "Home 1\nB");
}

TEST(TextMesh, OneCharacterIsItsGlyphAtTheOrigin)
{
    const Glyph& glyph = glyphOf('A');

    const auto mesh = makeTextMesh("A");

    ASSERT_THAT(mesh->vertices, SizeIs(glyph.vertexCount));
    ASSERT_THAT(mesh->indices, SizeIs(3 * glyph.triangleCount));
    for (int i = 0; i < glyph.vertexCount; ++i)
        EXPECT_EQ(mesh->vertices[i], rob::Posf(glyph.vertices[i][0], glyph.vertices[i][1], 0));
    for (int i = 0; i < 3 * glyph.triangleCount; ++i)
        EXPECT_EQ(mesh->indices[i], glyph.triangles[i / 3][i % 3]);
}

TEST(TextMesh, FacesTheViewerOfThePlaneAndHasNoColours)
{
    const auto mesh = makeTextMesh("Ag");

    ASSERT_THAT(mesh->normals, SizeIs(mesh->vertices.size()));
    for (const auto& normal : mesh->normals)
        EXPECT_EQ(normal, rob::Vec3f(0, 0, 1));
    EXPECT_THAT(mesh->colors, IsEmpty());
}

TEST(TextMesh, NextCharacterStandsAtTheAdvanceOfTheOneBefore)
{
    const auto mesh = makeTextMesh("WW");

    EXPECT_FLOAT_EQ(stepBetweenEqualGlyphs("WW").x, glyphOf('W').advance);
    const auto half = mesh->indices.size() / 2;
    for (std::size_t i = 0; i < half; ++i)
        EXPECT_EQ(mesh->indices[half + i], mesh->indices[i] + static_cast<unsigned>(glyphOf('W').vertexCount));
}

TEST(TextMesh, LineFeedGoesBackToTheLeftAndOneLineDown)
{
    const std::vector<rob::Posf> vertices = verticesOf("A\nB");

    const rob::Posf first = vertices.at(glyphOf('A').vertexCount);
    EXPECT_FLOAT_EQ(first.x, glyphOf('B').vertices[0][0]);
    EXPECT_FLOAT_EQ(first.y, glyphOf('B').vertices[0][1] - 1.4f);
}

TEST(TextMesh, EachLineFeedGoesOneLineFurtherDown)
{
    EXPECT_FLOAT_EQ(stepBetweenEqualGlyphs("B\n\nB").y, -2.8f);
    EXPECT_FLOAT_EQ(stepBetweenEqualGlyphs("B \n\nB").x, 0);
}

TEST(TextMesh, FirstAndLastCharacterOfTheTableArePlaced)
{
    EXPECT_THAT(verticesOf("!"), SizeIs(glyphOf('!').vertexCount));
    EXPECT_THAT(verticesOf("~"), SizeIs(glyphOf('~').vertexCount));
}

TEST(TextMesh, TwoSpacesMoveThePenByTwiceTheirWidth)
{
    EXPECT_FLOAT_EQ(stepBetweenEqualGlyphs("I  I").x, glyphOf('I').advance + 0.8f);
}

TEST(TextMesh, TrailingSpacesChangeNoVertex)
{
    EXPECT_EQ(verticesOf("A  "), verticesOf("A"));
}

TEST(TextMesh, OtherBytesLeaveNoTrace)
{
    EXPECT_EQ(verticesOf("A\tA"), verticesOf("AA"));
    EXPECT_EQ(verticesOf("A\x7f\xc3\xa4\x80\xff\x01\rA"), verticesOf("AA"));
    EXPECT_EQ(verticesOf(std::string("A\0A", 3)), verticesOf("AA"));
}

TEST(GlyphTable, CapitalStandsAboutOneHigh)
{
    float low = std::numeric_limits<float>::max();
    float high = std::numeric_limits<float>::lowest();
    const Glyph& glyph = glyphOf('A');
    for (int i = 0; i < glyph.vertexCount; ++i) {
        low = std::min(low, glyph.vertices[i][1]);
        high = std::max(high, glyph.vertices[i][1]);
    }

    EXPECT_NEAR(low, -0.07f, 0.01f);
    EXPECT_NEAR(high, 1.03f, 0.01f);
}

TEST(GlyphTable, IsProportional)
{
    EXPECT_LT(glyphOf('!').advance, glyphOf('1').advance);
    EXPECT_LT(glyphOf('1').advance, glyphOf('A').advance);
    EXPECT_LT(glyphOf('A').advance, glyphOf('%').advance);
}

TEST(GlyphTable, IsSmall)
{
    int vertices = 0;
    for (const Glyph& glyph : glyphTable) {
        EXPECT_LT(glyph.vertexCount, 200);
        vertices += glyph.vertexCount;
    }
    EXPECT_LT(vertices, 4000);
}

class EachGlyph : public testing::TestWithParam<int> {};

TEST_P(EachGlyph, IsWholeAndFacesTheViewer)
{
    const Glyph& glyph = glyphTable[GetParam()];

    ASSERT_GE(glyph.vertexCount, 3);
    EXPECT_GT(glyph.advance, 0.2f);
    EXPECT_LT(glyph.advance, 2.0f);
    for (int i = 0; i < glyph.vertexCount; ++i) {
        EXPECT_THAT(glyph.vertices[i][0], testing::AllOf(testing::Ge(-0.2f), testing::Le(glyph.advance + 0.1f)));
        EXPECT_THAT(glyph.vertices[i][1], testing::AllOf(testing::Ge(-0.5f), testing::Le(1.2f)));
    }
    std::set<unsigned> used;
    double area = 0;
    for (int i = 0; i < glyph.triangleCount; ++i) {
        for (const unsigned index : glyph.triangles[i]) {
            ASSERT_LT(index, static_cast<unsigned>(glyph.vertexCount));
            used.insert(index);
        }
        EXPECT_GT(areaOf(glyph, i), 0) << "triangle " << i;
        area += areaOf(glyph, i);
    }
    EXPECT_THAT(used, SizeIs(glyph.vertexCount)) << "a vertex is in no triangle";
    EXPECT_GT(area, 0.02) << "thinner than a dot";
}

INSTANTIATE_TEST_SUITE_P(Table, EachGlyph, testing::Range(0, glyphCount),
                         [](const auto& info) { return "Code" + std::to_string(firstGlyph + info.param); });

} // namespace
} // namespace vrk::visual
