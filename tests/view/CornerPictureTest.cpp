#include "PlainWindow.h"

#include "platform/broker/SignalBroker.h"
#include "scene/ViewLook.h"
#include "view/OffscreenTarget.h"
#include "view/RenderFrame.h"
#include "view/ViewTools.h"
#include "view/WindowTarget.h"

#include <array>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace vrk::visual {
namespace {

using test::isNear;
using test::Picture;
using test::Pixel;
using test::PlainWindow;
using testing::StrEq;
using testing::ThrowsMessage;

// Read while the program starts, ahead of the library.
const std::string textBeforeTheStart = [] {
    try {
        ResetCornerPicture();
    } catch (const std::logic_error& failure) {
        return std::string(failure.what());
    }
    return std::string("nothing was thrown");
}();

const Pixel background{115, 115, 115};
const Pixel red{255, 0, 0};
const Pixel green{0, 255, 0};
const Pixel redHalf{185, 57, 57}; // over the background

constexpr unsigned pictureWidth = 40;
constexpr unsigned pictureHeight = 20;
constexpr unsigned margin = 10;

/// Red with one green pixel, its first; the right half lets half of what is behind through.
std::vector<std::uint8_t> flag()
{
    std::vector<std::uint8_t> rgba;
    for (unsigned i = 0; i < pictureWidth * pictureHeight; ++i) {
        const std::uint8_t alpha = i % pictureWidth < pictureWidth / 2 ? 255 : 128;
        rgba.insert(rgba.end(), {alpha, 0, 0, alpha});
    }
    std::ranges::copy(std::array<std::uint8_t, 4>{0, 255, 0, 255}, rgba.begin());
    return rgba;
}

void showFlag()
{
    SetCornerPicture(flag(), pictureWidth, pictureHeight, margin);
}

/// Where the picture ought to be, and nowhere else.
void expectFlag(const Picture& seen)
{
    const unsigned left = seen.width - margin - pictureWidth, top = seen.height - margin - pictureHeight;
    const unsigned right = seen.width - margin - 1, bottom = seen.height - margin - 1;
    EXPECT_TRUE(isNear(seen.at(left, top), green));
    EXPECT_TRUE(isNear(seen.at(left + 1, top), red));
    EXPECT_TRUE(isNear(seen.at(left, bottom), red));
    EXPECT_TRUE(isNear(seen.at(right, top), redHalf));
    EXPECT_TRUE(isNear(seen.at(right, bottom), redHalf));
    EXPECT_TRUE(isNear(seen.at(left - 1, top), background));
    EXPECT_TRUE(isNear(seen.at(left, top - 1), background));
    EXPECT_TRUE(isNear(seen.at(right + 1, bottom), background));
    EXPECT_TRUE(isNear(seen.at(right, bottom + 1), background));
}

int redPixels(const Picture& seen)
{
    int count = 0;
    for (unsigned y = 0; y < seen.height; ++y)
        for (unsigned x = 0; x < seen.width; ++x)
            count += isNear(seen.at(x, y), red) ? 1 : 0;
    return count;
}

/// A window with nothing in its view.
class CornerPictureTest : public test::RenderTest {
protected:
    CornerPictureTest() : window(200, 150), target(window.id, 200, 150, 4)
    {
        window.show();
        main.setRenderTarget(target.renderTarget());
    }
    ~CornerPictureTest() override
    {
        ResetCornerPicture();
        SetDepthShade(false);
        main.setRenderTarget(nullptr);
    }
    Picture seen()
    {
        renderFrame();
        return window.onScreen();
    }

    Camera& main = *Camera::Get();
    PlainWindow window;
    WindowTarget target;
};

TEST_F(CornerPictureTest, LiesInTheLowerRightCornerPixelForPixel)
{
    showFlag();

    expectFlag(seen());
}

TEST_F(CornerPictureTest, StaysThereInAnySize)
{
    showFlag();
    for (const auto& [width, height] : {std::pair{260u, 190u}, {121u, 77u}, {300u, 240u}}) {
        SCOPED_TRACE(testing::Message() << width << " x " << height);
        window.resize(width, height);
        target.resize(width, height);

        expectFlag(seen());
    }
}

TEST_F(CornerPictureTest, LiesOverTheShadeToo)
{
    SetDepthShade(true);
    showFlag();

    expectFlag(seen());
}

TEST_F(CornerPictureTest, NextOneReplacesIt)
{
    showFlag();
    seen();
    const std::vector<std::uint8_t> single{255, 0, 0, 255};

    SetCornerPicture(single, 1, 1, 3);

    const Picture picture = seen();
    EXPECT_TRUE(isNear(picture.at(196, 146), red));
    EXPECT_EQ(redPixels(picture), 1);
}

TEST_F(CornerPictureTest, ViewIsAsBeforeOnceThereIsNone)
{
    const Picture before = seen();
    showFlag();
    EXPECT_GT(test::largestDifference(seen(), before), 100);

    ResetCornerPicture();

    EXPECT_EQ(test::largestDifference(seen(), before), 0);
}

TEST_F(CornerPictureTest, PicturesThatAreNotOfTheWindowAreWithoutIt)
{
    const OffscreenTarget offscreen(200, 150, 4);
    showFlag();
    main.setRenderTarget(offscreen.renderTarget());
    renderFrame();

    EXPECT_EQ(redPixels({200, 150, offscreen.read()}), 0);
    main.setRenderTarget(target.renderTarget());
    expectFlag(seen());
}

TEST_F(CornerPictureTest, OtherCamerasAreWithoutIt)
{
    PlainWindow second(160, 120, 300);
    second.show();
    WindowTarget besides(second.id, 160, 120, 0);
    const auto other = std::make_unique<Camera>("camera beside the corner", &scene);
    other->setRenderTarget(besides.renderTarget());
    showFlag();

    expectFlag(seen());
    EXPECT_EQ(redPixels(second.onScreen()), 0);
}

TEST_F(CornerPictureTest, EachChangeAsksForAFrame)
{
    int asked = 0;
    const boost::signals2::scoped_connection listening = broker::SignalBroker::onUpdateScene([&asked] { ++asked; });

    ResetCornerPicture();
    EXPECT_EQ(asked, 0) << "there was none";
    showFlag();
    EXPECT_EQ(asked, 1);
    ResetCornerPicture();
    EXPECT_EQ(asked, 2);
}

TEST_F(CornerPictureTest, BytesThatAreNoPictureAreRefusedAndTheOneBeforeStays)
{
    showFlag();
    const auto refused =
        ThrowsMessage<std::invalid_argument>(StrEq("The picture of a corner has four bytes for each of its pixels"));

    EXPECT_THAT([] { SetCornerPicture(flag(), pictureWidth, pictureHeight + 1, 0); }, refused);
    EXPECT_THAT([] { SetCornerPicture({}, 0, 0, 0); }, refused);

    expectFlag(seen());
}

TEST_F(CornerPictureTest, NeedsAStartedLibrary)
{
    EXPECT_EQ(textBeforeTheStart, "The library has not been started.");
}

} // namespace
} // namespace vrk::visual
