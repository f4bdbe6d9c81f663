#include "view/RegionOutline.h"

#include "view/OffscreenTarget.h"
#include "view/RenderFrame.h"
#include "view/ViewTools.h"

#include <gmock/gmock.h>

#include <array>
#include <memory>

namespace vrk::visual {
namespace {

using Look = RegionOutline::Look;
using Place = RegionOutline::Place;

const test::Pixel background{115, 115, 115};

/// Over an empty picture of 400 x 300.
class RegionOutlineTest : public test::RenderTest {
protected:
    RegionOutlineTest() : camera(*Camera::Get()), outline(camera) {}

    test::Picture seen() { return render(test::lookingAtOrigin(500)); }
    static int blueness(const test::Pixel& pixel) { return pixel.b - pixel.r; }
    static int greenness(const test::Pixel& pixel) { return pixel.g - pixel.b; }

    Camera& camera;
    RegionOutline outline;
};

TEST_F(RegionOutlineTest, RectangleOfALineHasABlueBorderAndGround)
{
    outline.showRectangle({300, 60}, {100, 200}, Look::Line);

    const test::Picture picture = seen();

    EXPECT_TRUE(outline.isShown());
    for (const unsigned y : {80u, 130u, 180u}) {
        EXPECT_GT(blueness(picture.at(100, y)), 120) << y;
        EXPECT_GT(blueness(picture.at(300, y)), 120) << y;
    }
    EXPECT_GT(blueness(picture.at(200, 130)), 10);
    EXPECT_LT(blueness(picture.at(200, 130)), 60);
    EXPECT_TRUE(test::isNear(picture.at(90, 130), background));
    EXPECT_TRUE(test::isNear(picture.at(200, 50), background));
}

TEST_F(RegionOutlineTest, RectangleOfDashesIsGreenAndHasGaps)
{
    outline.showRectangle({300, 60}, {100, 200}, Look::Dashes);

    const test::Picture picture = seen();

    int dashes = 0, gaps = 0;
    for (unsigned y = 70; y < 190; ++y)
        ++(greenness(picture.at(100, y)) > 60 ? dashes : gaps);
    EXPECT_GT(dashes, 40);
    EXPECT_GT(gaps, 20);
    EXPECT_GT(greenness(picture.at(200, 130)), 4);
}

TEST_F(RegionOutlineTest, OpenOutlineHasItsLastSideDashed)
{
    const std::array corners = {Place(100, 60), Place(300, 60), Place(300, 200)};
    outline.show(corners, false, Look::Line);

    const test::Picture picture = seen();

    int whole = 0, onTheWayBack = 0;
    for (unsigned i = 10; i < 130; ++i) {
        whole += blueness(picture.at(300, 60 + i)) > 120 ? 1 : 0;
        onTheWayBack += blueness(picture.at(100 + i * 200 / 140, 60 + i)) > 60 ? 1 : 0;
    }
    EXPECT_EQ(whole, 120);
    EXPECT_GT(onTheWayBack, 30);
    EXPECT_LT(onTheWayBack, 110);
    EXPECT_TRUE(test::isNear(picture.at(250, 90), background)) << "no ground";
}

TEST_F(RegionOutlineTest, PictureIsAsBeforeOnceItIsHidden)
{
    const test::Picture before = seen();
    outline.showRectangle({10, 10}, {50, 50}, Look::Line);
    EXPECT_GT(test::largestDifference(seen(), before), 50);

    outline.hide();

    EXPECT_FALSE(outline.isShown());
    EXPECT_EQ(test::largestDifference(seen(), before), 0);
}

TEST_F(RegionOutlineTest, OneThatDiesIsGone)
{
    const test::Picture before = seen();
    auto other = std::make_unique<RegionOutline>(camera);
    other->showRectangle({10, 10}, {50, 50}, Look::Line);

    other.reset();

    EXPECT_EQ(test::largestDifference(seen(), before), 0);
}

TEST_F(RegionOutlineTest, OtherCamerasDoNotShowIt)
{
    auto other = std::make_unique<Camera>("camera without an outline", &scene);
    const OffscreenTarget target(400, 300, 0);
    other->setRenderTarget(target.renderTarget());
    outline.showRectangle({50, 50}, {350, 250}, Look::Line);

    const test::Picture first = seen();
    const test::Picture second{400, 300, target.read()};

    EXPECT_GT(blueness(first.at(50, 150)), 120);
    EXPECT_TRUE(test::isNear(second.at(50, 150), background)) << "drawn, but without it";
}

TEST_F(RegionOutlineTest, NothingOfOneCornerOrWithoutPixels)
{
    const std::array corner = {Place(10, 10)};
    outline.show(corner, true, Look::Line);
    EXPECT_FALSE(outline.isShown());

    Camera blind("camera without a target", &scene);
    RegionOutline unseen(blind);
    unseen.showRectangle({10, 10}, {50, 50}, Look::Line);
    EXPECT_FALSE(unseen.isShown());
}

} // namespace
} // namespace vrk::visual
