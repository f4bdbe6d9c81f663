#include "PreviewFixture.h"

#include "preview/annotation/DimensionsVisual.h"
#include "support/ProcessorTime.h"
#include "view/Camera.h"
#include "visual/text/GlyphAtlas.h"
#include "visual/text/LabelBatch.h"

#include <Ogre.h>

#include <limits>
#include <numbers>

namespace vrk::visual {
namespace {

using Look = DimensionDrawing::Look;

TEST(LettersOfATextTest, AreThoseOfItsBytesInUtf8)
{
    EXPECT_EQ(lettersOf("12.5 mm"), U"12.5 mm");
    EXPECT_EQ(lettersOf("\xC3\x98 90\xC2\xB0 \xE2\x89\x88 \xF0\x9D\x84\x9E"), U"\u00D8 90\u00B0 \u2248 \U0001D11E");
}

TEST(LettersOfATextTest, BytesThatAreNoneBecomeASign)
{
    EXPECT_EQ(lettersOf("a\xFF\x62"), U"a\uFFFD\u0062");
    EXPECT_EQ(lettersOf("\xE2\x89"), U"\uFFFD");
    EXPECT_EQ(lettersOf("\xC3\x41"), U"\uFFFDA");
    EXPECT_EQ(lettersOf("\xF7\xBF\xBF\xBF"), U"\uFFFD") << "beyond the last letter";
}

class GlyphAtlasTest : public test::RenderTest {};

TEST_F(GlyphAtlasTest, DigitsAreAsWideAsEachOtherAndStandOnTheLine)
{
    GlyphAtlas atlas(14);
    const int advance = atlas.get(U'0').advance;
    for (char32_t digit = U'0'; digit <= U'9'; ++digit) {
        const GlyphAtlas::Glyph& glyph = atlas.get(digit);
        EXPECT_EQ(glyph.advance, advance);
        EXPECT_NEAR(glyph.bottom, 0, 1);
        EXPECT_NEAR(glyph.height, atlas.capHeight(), 1);
        EXPECT_GT(glyph.width, 3);
    }
    EXPECT_EQ(atlas.get(U' ').width, 0);
    EXPECT_GT(atlas.get(U' ').advance, 0);
}

TEST_F(GlyphAtlasTest, FullTextureGrowsAndKeepsWhatItHas)
{
    GlyphAtlas atlas(40);
    const GlyphAtlas::Glyph first = atlas.get(U'A');
    const unsigned side = atlas.texture()->getWidth();

    for (char32_t letter = U'!'; letter < U'\u0180'; ++letter)
        atlas.get(letter);

    EXPECT_GE(atlas.texture()->getWidth(), 2 * side);
    EXPECT_EQ(atlas.get(U'A').u, first.u);
    EXPECT_EQ(atlas.get(U'A').v, first.v);
}

TEST_F(GlyphAtlasTest, LetterThatTheFontHasNotIsASignForThat)
{
    GlyphAtlas atlas(14);
    EXPECT_GT(atlas.get(U'\u4E2D').width, 3);
    EXPECT_GT(atlas.get(U'\U0010FFFF').width, 3);
}

TEST_F(GlyphAtlasTest, OtherSizeDrawsThemAnew)
{
    GlyphAtlas atlas(14);
    const int before = atlas.get(U'8').height;
    atlas.setSize(28);
    EXPECT_NEAR(atlas.get(U'8').height, 2 * before, 2);
}

class DimensionsVisualTest : public test::WithPreviews<test::RenderTest> {
protected:
    DimensionsVisualTest()
    {
        setSize(400, 300, 4);
        Camera::Get()->setHFOV(0.47f);
    }
    ~DimensionsVisualTest() override
    {
        dimensions.reset();
        Camera::Get()->setHFOV(std::numbers::pi_v<float> / 3);
    }

    static DimensionDrawing leg(const rob::Posf& from, const rob::Posf& to, const std::string& text)
    {
        const rob::Posf middle((from.x + to.x) / 2, (from.y + to.y) / 2, (from.z + to.z) / 2);
        return {{{from, to}}, {from, to}, text, middle, Look::Plain};
    }
    /// How many pixels are like this one.
    static std::size_t count(const test::Picture& picture, const test::Pixel& wanted, int tolerance = 12)
    {
        std::size_t found = 0;
        for (unsigned y = 0; y < picture.height; ++y)
            for (unsigned x = 0; x < picture.width; ++x)
                found += test::difference(picture.at(x, y), wanted) <= tolerance ? 1 : 0;
        return found;
    }
    SolidVisual* addCrate()
    {
        const TopoDS_Shape shape = test::meshedBox(200, 200, 200);
        body = test::addModelBody(shape, "measured-crate", "#B0B4B8");
        SolidVisual::Build(world, body.get(), shape);
        auto* crate = static_cast<SolidVisual*>(Scene::GetVisual(body->getId()));
        crate->setPosition(-100, -100, -100);
        return crate;
    }

    const test::View view = test::lookingAtOrigin(1500);
    const test::Pixel paper{250, 252, 255};
    const test::Pixel orange{237, 92, 5};
    std::unique_ptr<DimensionsVisual> dimensions = std::make_unique<DimensionsVisual>(world);
    std::shared_ptr<layout::Body> body;
};

TEST_F(DimensionsVisualTest, TextsKeepTheirSizeWhereverTheyAreSeenFrom)
{
    dimensions->setCount(1);
    dimensions->set(0, {{}, {}, "123.45 mm", {0, 0, 0}, Look::Plain});

    const std::size_t near = count(render(test::lookingAtOrigin(500)), paper);
    const std::size_t far = count(render(test::lookingAtOrigin(20000)), paper);

    EXPECT_GT(near, 500u);
    EXPECT_EQ(near, far);
    EXPECT_EQ(count(render({{0, 0, 2000}, {0, 0, 0}, {0, 1, 0}}), paper), near) << "seen from above";
}

TEST_F(DimensionsVisualTest, TextsOfAFinePictureAreAsMuchLarger)
{
    dimensions->setCount(1);
    dimensions->set(0, {{}, {}, "123.45 mm", {0, 0, 0}, Look::Plain});
    const auto ordinary = static_cast<double>(count(render(view), paper));

    dimensions->setPixelRatio(2);
    EXPECT_NEAR(static_cast<double>(count(render(view), paper)) / ordinary, 4, 0.6) << "on a dense screen, too";
    setSize(2880, 2160, 4);
    EXPECT_NEAR(static_cast<double>(count(render(view), paper)) / ordinary, 4, 0.6);
}

TEST_F(DimensionsVisualTest, TextsLieOverBodiesAndLinesAreSeenThroughThem)
{
    const SolidVisual* crate = addCrate();
    ASSERT_TRUE(crate->isVisible());
    const test::Picture without = render(view);
    dimensions->setCount(1);
    dimensions->set(0, leg({-60, 0, 0}, {60, 0, 0}, "12 mm")); // within the crate

    const test::Picture picture = render(view);

    EXPECT_GT(count(picture, paper), 200u);
    const test::Pixel through = pixelAt(picture, {-40, 0, 0});
    const test::Pixel before = pixelAt(without, {-40, 0, 0});
    EXPECT_GT(test::difference(through, before), 15);
    EXPECT_GT(through.r, 60) << "the body is seen, too";
}

TEST_F(DimensionsVisualTest, LookIsToldByColour)
{
    dimensions->setCount(2);
    dimensions->set(0, leg({-100, 0, 60}, {100, 0, 60}, "200.00 mm"));
    dimensions->set(1, leg({-100, 0, -60}, {100, 0, -60}, "200.00 mm"));
    const std::size_t both = count(render(view), paper);
    ASSERT_EQ(count(render(view), orange), 0u);

    dimensions->setLook(1, Look::Selected);

    const test::Picture picture = render(view);
    EXPECT_GT(count(picture, orange), 300u);
    EXPECT_LT(count(picture, paper), both * 2 / 3) << "letters of the selected one are as light";
    dimensions->setLook(1, Look::Plain);
    EXPECT_EQ(count(render(view), paper), both);
}

TEST_F(DimensionsVisualTest, WhatIsTakenOutIsDrawnNoMore)
{
    const test::Picture empty = render(view);
    dimensions->setCount(3);
    for (std::size_t i = 0; i < 3; ++i)
        dimensions->set(i, leg({-100, 0, 40.f * i}, {100, 0, 40.f * i}, "200.00 mm"));
    ASSERT_GT(test::largestDifference(render(view), empty), 100);

    dimensions->setCount(0);
    EXPECT_EQ(test::largestDifference(render(view), empty), 0);
    dimensions->setCount(1);
    EXPECT_EQ(test::largestDifference(render(view), empty), 0) << "a new one draws nothing";
}

TEST_F(DimensionsVisualTest, HiddenWithItsVisual)
{
    const test::Picture empty = render(view);
    dimensions->setCount(1);
    dimensions->set(0, leg({-100, 0, 0}, {100, 0, 0}, "200.00 mm"));
    dimensions->setVisible(false, true);

    EXPECT_EQ(test::largestDifference(render(view), empty), 0);
    EXPECT_FALSE(dimensions->textAt(200, 150));
}

TEST_F(DimensionsVisualTest, NumbersThatAreNoneDrawNothing)
{
    const test::Picture empty = render(view);
    const float none = std::numeric_limits<float>::quiet_NaN();
    const float beyond = std::numeric_limits<float>::infinity();
    dimensions->setCount(1);
    dimensions->set(
        0, {{{rob::Posf(none, 0, 0), rob::Posf(1, 0, 0)}}, {rob::Posf(0, beyond, 0)}, "1", {0, 0, none}, Look::Plain});

    EXPECT_EQ(test::largestDifference(render(view), empty), 0);
}

TEST_F(DimensionsVisualTest, WhatLiesBehindTheEyeIsNotSeen)
{
    const test::View away{{0, -500, 0}, {0, -1000, 0}};
    const test::Picture empty = render(away);
    dimensions->setCount(1);
    dimensions->set(0, leg({-100, 0, 0}, {100, 0, 0}, "200.00 mm"));

    EXPECT_EQ(test::largestDifference(render(away), empty), 0);
    EXPECT_FALSE(dimensions->textAt(200, 150));
}

TEST_F(DimensionsVisualTest, TextIsFoundWhereItIsDrawn)
{
    dimensions->setCount(2);
    dimensions->set(0, {{}, {}, "1.00 mm", {0, 0, 0}, Look::Plain});
    dimensions->set(1, {{}, {}, "one above it", {0, 0, 150}, Look::Plain});
    render(view);

    EXPECT_EQ(dimensions->textAt(200, 150), 0u);
    EXPECT_EQ(dimensions->textAt(222, 150), 0u);
    EXPECT_FALSE(dimensions->textAt(300, 150));
    EXPECT_FALSE(dimensions->textAt(200, 170));
    EXPECT_FALSE(dimensions->textAt(200, 250));
    bool isFound = false;
    for (int y = 0; y < 140; ++y)
        isFound = isFound || dimensions->textAt(200, y) == 1u;
    EXPECT_TRUE(isFound);
}

TEST_F(DimensionsVisualTest, TextThatWouldCoverANearerOneIsLeftOut)
{
    const test::View along{{0, -1000, 0}, {0, 0, 0}};
    dimensions->setCount(3);
    dimensions->set(0, {{}, {}, "far", {0, 100, 0}, Look::Plain});
    const std::size_t one = count(render(along), paper);
    dimensions->set(1, {{}, {}, "nearest of all", {0, -100, 0}, Look::Plain});
    dimensions->set(2, {{}, {}, "near", {0, 0, 0}, Look::Plain});

    render(along);
    EXPECT_EQ(dimensions->textAt(200, 150), 1u);

    dimensions->setLook(0, Look::Selected);
    const test::Picture picture = render(along);
    EXPECT_EQ(dimensions->textAt(200, 150), 0u) << "what is selected comes first";
    EXPECT_LT(count(picture, paper), one);

    dimensions->setLook(0, Look::Plain);
    render(test::View{{1000, 0, 0}, {0, 0, 0}}); // from the side they stand apart
    int seen = 0;
    for (int x = 0; x < 400; ++x)
        seen += dimensions->textAt(x, 150).has_value() &&
                        (x == 0 || dimensions->textAt(x, 150) != dimensions->textAt(x - 1, 150))
                    ? 1
                    : 0;
    EXPECT_EQ(seen, 3);
}

TEST_F(DimensionsVisualTest, MarksAreThereWhetherOrNotTheirTextIs)
{
    const test::View along{{0, -1000, 0}, {0, 0, 0}};
    dimensions->setCount(2);
    dimensions->set(0, {{}, {{60, 100, 40}}, "1", {0, 100, 0}, Look::Plain});
    dimensions->set(1, {{}, {}, "2", {0, 0, 0}, Look::Plain});

    const test::Picture picture = render(along);

    ASSERT_EQ(dimensions->textAt(200, 150), 1u);
    EXPECT_TRUE(test::isNear(pixelAt(picture, {60, 100, 40}), {18, 71, 184}, 30));
}

TEST_F(DimensionsVisualTest, OfMarksOnEachOtherTheOneThatIsSelectedIsSeen)
{
    const test::View along{{0, -1000, 0}, {0, 0, 0}};
    const auto markIs = [&](const test::Picture& picture, const test::Pixel& wanted) {
        return test::isNear(pixelAt(picture, {60, 100, 40}), wanted, 30);
    };
    dimensions->setCount(3);
    for (const std::size_t i : {0u, 1u, 2u})
        dimensions->set(i, {{}, {{60, 100, 40}}, "", {}, Look::Plain});
    dimensions->setLook(2, Look::Outdated);
    EXPECT_TRUE(markIs(render(along), {107, 115, 128})) << "the last";

    dimensions->setLook(0, Look::Selected);
    EXPECT_TRUE(markIs(render(along), {140, 51, 0}));

    dimensions->setLook(0, Look::Plain);
    EXPECT_TRUE(markIs(render(along), {107, 115, 128}));
}

TEST_F(DimensionsVisualTest, MarkAtTheBorderOfThePictureIsDrawnInPart)
{
    const float halfWidth = 1000 * std::tan(0.47f / 2); // of what is seen
    dimensions->setCount(1);
    for (const float side : {-1.f, 1.f}) {
        dimensions->set(0, {{}, {{side * 1.003f * halfWidth, 0, 0}}, "", {}, Look::Plain}); // half a pixel outside
        EXPECT_GT(count(render({{0, -1000, 0}, {0, 0, 0}}), {18, 71, 184}, 60), 0u) << side;
    }
}

TEST_F(DimensionsVisualTest, FitsOfTheViewPassItOver)
{
    addCrate();
    render(view);
    const rob::Posef before = scene.getViewAllPose();
    dimensions->setCount(1);
    dimensions->set(0, leg({-10000, 0, 0}, {90000, 0, 0}, "100 m"));

    render(view);

    EXPECT_EQ(scene.getViewAllPose(), before);
}

TEST_F(DimensionsVisualTest, OneOfAThousandIsBroughtToTheGpuByItself)
{
    dimensions->setCount(1000);
    for (std::size_t i = 0; i < 1000; ++i)
        dimensions->set(i, leg({0, 0, 0.1f * i}, {100, 0, 0.1f * i}, "100.00 mm"));
    render(view);
    const std::size_t all = dimensions->getUploadedBytes();
    ASSERT_GT(all, 1000u * 200);

    dimensions->set(500, leg({0, 0, 0}, {0, 0, 99}, "99.00 mm"));
    render(view);

    EXPECT_LT(dimensions->getUploadedBytes(), all / 300);
    const std::size_t one = dimensions->getUploadedBytes();
    render(view);
    EXPECT_EQ(dimensions->getUploadedBytes(), one) << "a picture without a change brings nothing";
}

TEST_F(DimensionsVisualTest, LongerTextIsDrawnWhole)
{
    dimensions->setCount(2);
    dimensions->set(0, {{}, {}, "1", {-100, 0, 0}, Look::Plain});
    dimensions->set(1, {{}, {}, "1", {100, 0, 0}, Look::Plain});
    const std::size_t before = count(render(view), paper);

    dimensions->set(0, {{}, {}, "1000000.00 mm", {-100, 0, 0}, Look::Plain});

    EXPECT_GT(count(render(view), paper), 3 * before);
    dimensions->set(0, {{}, {}, "1", {-100, 0, 0}, Look::Plain});
    EXPECT_EQ(count(render(view), paper), before);
}

/// What is measured on a crate, as a view of common size and one of a screen with twice the pixels show it.
class DimensionsPicture : public DimensionsVisualTest, public testing::WithParamInterface<unsigned> {};

TEST_P(DimensionsPicture, LegsArcsAndMarks)
{
    setSize(400 * GetParam(), 300 * GetParam(), 4);
    addCrate();
    dimensions->setCount(4);
    dimensions->set(0, {{{rob::Posf(-100, -100, -100), rob::Posf(-100, -140, -100)},
                         {rob::Posf(100, -100, -100), rob::Posf(100, -140, -100)},
                         {rob::Posf(-100, -130, -100), rob::Posf(100, -130, -100)}},
                        {rob::Posf(-100, -130, -100), rob::Posf(100, -130, -100)},
                        "200.00 mm",
                        {0, -130, -100},
                        Look::Plain});
    dimensions->set(1, leg({-100, 100, -100}, {100, -100, 100}, "346.41 mm\nx 200.00  y -200.00  z 200.00"));
    dimensions->set(2, leg({100, -100, -100}, {100, -100, 100}, "90.00\xC2\xB0"));
    dimensions->setLook(2, Look::Selected);
    DimensionDrawing ring{{}, {}, "\xC3\x98 140.00", {0, 0, 101}, Look::Outdated};
    constexpr int parts = 48;
    for (int i = 0; i < parts; ++i) {
        const auto at = [](int part) {
            const float turn = 2 * std::numbers::pi_v<float> * part / parts;
            return rob::Posf(70 * std::cos(turn), 70 * std::sin(turn), 101);
        };
        ring.lines.push_back({at(i), at(i + 1)});
    }
    dimensions->set(3, ring);

    EXPECT_TRUE(
        test::matchesBaseline(render(test::lookingAtOrigin(1150)), "measured_" + std::to_string(GetParam()) + "x"));
}

INSTANTIATE_TEST_SUITE_P(Sizes, DimensionsPicture, testing::Values(1u, 2u, 5u),
                         [](const auto& info) { return std::to_string(info.param) + "x"; });

} // namespace
} // namespace vrk::visual
