#include "view/BandedPicture.h"

#include "scene/ViewLook.h"
#include "view/OffscreenTarget.h"
#include "view/ViewTools.h"

#include <BRepAlgoAPI_Cut.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>
#include <BRepPrimAPI_MakeSphere.hxx>

#include <algorithm>
#include <stdexcept>
#include <vector>

namespace vrk::visual {
namespace {

using rob::Posf;
using test::Picture;
using test::View;

const View above{{300, -500, 420}, {0, 0, -20}, {0, 0, 1}};

class BandedPictures : public test::RenderTest {
protected:
    // Two bands, of which the lower one is smaller, and rows of which there is no even part.
    static constexpr unsigned width = 1804;
    static constexpr unsigned height = 1778;

    BandedPictures()
    {
        test::addPickedSolid(
            world,
            test::meshed(BRepAlgoAPI_Cut(test::meshedBox(200, 200, 60),
                                         BRepPrimAPI_MakeCylinder(gp_Ax2(gp_Pnt(60, 60, 10), gp_Dir(0, 0, 1)), 24, 60))
                             .Shape()),
            "block with hole");
        ball = test::addPickedSolid(world, test::meshed(BRepPrimAPI_MakeSphere(50).Shape()), "ball");
        ball->setPosition({-60, -40, 40});
        SetBackground({0.2f, 0.25f, 0.3f}, {0.7f, 0.75f, 0.8f});
        showCornerAxes(true);
    }
    ~BandedPictures() override
    {
        SetDepthShade(false);
        ResetBackground();
        RemoveGroundShadow();
        SetLineLook(LineLook::None);
        scene.setBorderHighlightEnabled(false);
        showCornerAxes(false);
    }

    /// From where the camera stood last.
    static Picture draw(BandedPicture& banded)
    {
        Picture picture{banded.getWidth(), banded.getHeight(), {}};
        banded.draw([&picture](unsigned firstRow, std::span<const std::uint8_t> pixels) {
            EXPECT_EQ(picture.rgb.size(), std::size_t{3} * firstRow * picture.width);
            picture.rgb.insert(picture.rgb.end(), pixels.begin(), pixels.end());
        });
        return picture;
    }
    Picture drawnWhole(unsigned samples = 4)
    {
        setSize(width, height, samples);
        return render(above);
    }
    static Picture drawnInBands(unsigned samples = 4)
    {
        BandedPicture banded(*Camera::Get(), width, height, samples);
        EXPECT_LT(banded.getRows(), height);
        return draw(banded);
    }
    /// Up to pixels here and there at edges, which are rounded in another way.
    static void expectSame(const Picture& picture, const Picture& expected)
    {
        ASSERT_EQ(picture.rgb.size(), expected.rgb.size());
        const test::Deviation deviation = test::deviationOf(picture, expected);
        EXPECT_LT(deviation.mean, 0.01);
        EXPECT_LT(deviation.worstTile, 1) << deviation.column << ", " << deviation.row;
    }

    SolidVisual* ball;
};

TEST_F(BandedPictures, AreTheOnesOfATargetOfTheirWholeSize)
{
    const Picture whole = drawnWhole();
    expectSame(drawnInBands(), whole);
    EXPECT_GT(test::difference(pixelAt(whole, {0, 0, 60}), whole.at(5, 5)), 40) << "there is something to be seen";
}

TEST_F(BandedPictures, HaveTheShadeAndTheShadowOfTheWholePicture)
{
    const Picture plain = drawnWhole();
    SetDepthShade(true);
    TakeGroundShadow();
    const Picture whole = drawnWhole();
    expectSame(drawnInBands(), whole);
    EXPECT_GT(test::largestDifference(plain, whole), 30);
}

TEST_F(BandedPictures, HaveTheOutlineOfWhatIsSelectedWithTheShadeAndWithout)
{
    scene.setBorderHighlightEnabled(true);
    scene.setVisualsSelected({ball->getId()});
    for (const bool isShaded : {false, true}) {
        SetDepthShade(isShaded);
        const Picture whole = drawnWhole();
        expectSame(drawnInBands(), whole);
    }
    scene.clearSelectedVisuals();
    drain();
}

TEST_F(BandedPictures, HaveDashesThatGoOnFromBandToBand)
{
    SetLineLook(LineLook::WithHidden);
    const Picture whole = drawnWhole();
    expectSame(drawnInBands(), whole);
}

TEST_F(BandedPictures, AreMeasuredAnewEachTime)
{
    SetDepthShade(true);
    drawnWhole(); // which places the camera
    BandedPicture banded(*Camera::Get(), width, height, 4);
    const Picture before = draw(banded);
    ball->setPosition({60, 60, 40});
    const Picture after = draw(banded);

    EXPECT_GT(test::deviationOf(before, after).mean, 0.5);
    expectSame(after, drawnWhole());
}

TEST_F(BandedPictures, LeaveTheShadeOfOtherPicturesAsItIs)
{
    SetDepthShade(true);
    const Picture before = drawnWhole();
    drawnInBands();
    ball->setPosition({60, 60, 40});
    const Picture moved = drawnWhole();
    ball->setPosition({-60, -40, 40});

    EXPECT_GT(test::deviationOf(before, moved).mean, 0.5);
    EXPECT_EQ(test::largestDifference(drawnWhole(), before), 0);
}

TEST_F(BandedPictures, HaveTheirWholeSizeForTheCamera)
{
    drawnWhole();
    const rob::Vec2f place = test::pixelOf(*Camera::Get(), {0, 0, 60});
    const BandedPicture banded(*Camera::Get(), width, height, 0);
    Camera::Get()->setHFOV(Camera::Get()->getHFOV()); // which fits the viewport to the target

    EXPECT_EQ(Camera::Get()->viewportWidth(), width);
    EXPECT_EQ(Camera::Get()->viewportHeight(), height);
    EXPECT_NEAR((test::pixelOf(*Camera::Get(), {0, 0, 60}) - place).length(), 0, 1e-3);
}

TEST_F(BandedPictures, HaveOneBandWhereTheyAreSmall)
{
    const BandedPicture banded(*Camera::Get(), 401, 301, 0);
    EXPECT_EQ(banded.getRows(), 301u);
}

TEST_F(BandedPictures, GoOnAfterSomebodyThrewWhoTookThem)
{
    const Picture whole = drawnWhole();
    BandedPicture banded(*Camera::Get(), width, height, 4);
    EXPECT_THROW(banded.draw([](unsigned, std::span<const std::uint8_t>) { throw std::runtime_error("full"); }),
                 std::runtime_error);
    expectSame(draw(banded), whole);
}

TEST_F(BandedPictures, CannotBeDrawnWhileTheCameraDrawsElsewhere)
{
    BandedPicture banded(*Camera::Get(), width, height, 0);
    const OffscreenTarget other(64, 48, 0);
    Camera::Get()->setRenderTarget(other.renderTarget());
    EXPECT_THROW(banded.draw([](unsigned, std::span<const std::uint8_t>) {}), std::logic_error);
    Camera::Get()->setRenderTarget(nullptr);
}

} // namespace
} // namespace vrk::visual
