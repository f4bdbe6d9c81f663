#include "scene/core/SceneCore.h"
#include "support/SceneFixture.h"
#include "task/bands/BandShapes.h"
#include "task/bands/VectorBandVisual.h"

namespace vrk::visual {
namespace {

using test::Picture;
using test::Pixel;

class BandPicture : public test::RenderTest {
protected:
    VectorBandVisual* addBand()
    {
        auto* band = new VectorBandVisual(shape.getId(), world, shape);
        SceneCore::Get()->visuals.enter(band);
        return band;
    }

    const test::View front{{60, -220, 120}, {75, 10, 8}, {0, 0, 1}};
    const test::View behind{{60, 260, 120}, {75, 10, 8}, {0, 0, 1}};
    const std::unique_ptr<task::EdgeMfgShape> seam = test::seamShape();
    task::EdgeMfgShape& shape = *seam;
};

TEST_F(BandPicture, RibbonIsSeenFromBothSidesInItsColour)
{
    addBand();

    for (const test::View& view : {front, behind}) {
        const Picture picture = render(view);
        const Pixel bare = pixelAt(picture, {50, 0, 60});
        for (const float x : {10.0f, 30.0f, 45.0f}) {
            const Pixel on = pixelAt(picture, {x, 0, 15});
            EXPECT_GT(on.g - on.r, bare.g - bare.r + 40) << x;
            EXPECT_GT(on.b - on.r, bare.b - bare.r + 40) << x;
        }
    }
}

TEST_F(BandPicture, BodyBehindIsSeenThrough)
{
    addBand();
    const Pixel without = pixelAt(render(front), {30, 0, 15});

    auto* wall = new VectorBandVisual(901, world, *test::straightShape({{50, {0, 0, 1}}}));
    wall->setPosition(0, 5, 0); // another ribbon, right behind
    wall->setRegionReorderSelected();

    const Pixel with = pixelAt(render(front), {30, 0, 15});
    EXPECT_GT(with.r, without.r + 20);
}

TEST_F(BandPicture, LooksAreToldApart)
{
    VectorBandVisual* band = addBand();
    std::vector<Pixel> seen;
    const auto look = [&](const auto& set) {
        set();
        seen.push_back(pixelAt(render(front), {30, 0, 15}));
    };
    look([&] { band->resetAppearance(); });
    look([&] { band->setSelected(); });
    look([&] { band->setHighlighted(); });
    look([&] { band->setRegionReorderCandidate(); });
    look([&] { band->setRegionReorderSelected(); });
    band->resetAppearance();
    look([&] { band->selectRange(shape, {0, 5}, {0, 70}); });

    for (std::size_t i = 0; i < seen.size(); ++i)
        for (std::size_t k = i + 1; k < seen.size(); ++k)
            EXPECT_GT(difference(seen[i], seen[k]), 25) << i << " and " << k;
}

TEST_F(BandPicture, VectorsAreDrawnInTheirParameterWhateverTheirState)
{
    VectorBandVisual* band = addBand();
    band->selectVector(shape, {0, 20});
    const Pixel selected = pixelAt(render(front), {20, 0, 24});
    EXPECT_TRUE(isNear(selected, {227, 144, 206}, 12));

    band->previewVector(shape, {0, 40});
    const rob::Posf tip = band->getPreviewVector()->getLines()[0]->getPoints()[1];
    const rob::Posf high(40, tip.y * 0.9f, tip.z * 0.9f);
    EXPECT_TRUE(isNear(pixelAt(render(front), high), {0, 0, 255}, 12));
}

TEST_F(BandPicture, SelectedRangeCoversTheBandFromEverySide)
{
    VectorBandVisual* band = addBand();
    for (const auto& [from, to] :
         {std::pair<task::EdgeMfgShape::PathPoint, task::EdgeMfgShape::PathPoint>{{0, 25}, {1, 1}},
          {{0, 0}, {0, 60}}}) {
        band->selectRange(shape, from, to);
        for (const test::View& view : {front, behind}) {
            const Pixel pixel = pixelAt(render(view), {40, 0, 12});
            EXPECT_GT(pixel.r, pixel.b) << "the range is red, the band is not";
        }
    }
}

TEST_F(BandPicture, SeamWithASelectedRangeAndAVector)
{
    VectorBandVisual* band = addBand();
    band->selectRange(shape, {0, 60}, {1, 0.4});
    band->selectVector(shape, {0, 20});
    band->previewVector(shape, {1, 1.2});

    EXPECT_TRUE(matchesBaseline(render(front), "band_of_a_seam"));
}

} // namespace
} // namespace vrk::visual
