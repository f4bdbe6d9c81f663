#include "view/WindowTarget.h"

#include "PlainWindow.h"

#include "support/TempFolder.h"
#include "view/OffscreenTarget.h"
#include "view/RenderFrame.h"
#include "view/ViewTools.h"

#include <cstdlib>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <stdexcept>

namespace vrk::visual {
namespace {

using test::PlainWindow;
using testing::AllOf;
using testing::HasSubstr;
using testing::StrEq;
using testing::ThrowsMessage;

std::string textOf(const std::function<void()>& work)
{
    try {
        work();
    } catch (const std::logic_error& failure) {
        return failure.what();
    }
    return "nothing was thrown";
}

// Read while the program starts, ahead of the library.
const std::string textOfFrameBeforeTheStart = textOf(renderFrame);
const std::string textOfWindowBeforeTheStart = textOf([] { const WindowTarget target(1, 2, 2, 0); });

const test::Pixel background{115, 115, 115};

test::Picture pictureOf(WindowTarget& target)
{
    return {target.getWidth(), target.getHeight(), target.read()};
}

/// A camera that has a box in the middle of its view, and one that has nothing.
class WindowTargetTest : public test::RenderTest {
protected:
    WindowTargetTest() : main(*Camera::Get()), other(std::make_unique<Camera>("camera of a window", &scene))
    {
        const TopoDS_Shape shape = test::meshedBox(100, 100, 100);
        const auto body = test::addModelBody(shape, "box in a window", "#FF2010");
        SolidVisual::Build(world, body.get(), shape);
        Scene::GetVisual(body->getId())->setPosition({-50, -50, -50});
        test::lookAlong(main, {0, -400, 0}, {0, 1, 0});
        test::lookAlong(*other, {0, -400, 0}, {0, -1, 0});
        drain();
    }
    ~WindowTargetTest() override { main.setRenderTarget(nullptr); }

    static void expectBox(const test::Picture& picture)
    {
        const test::Pixel middle = picture.at(picture.width / 2, picture.height / 2);
        EXPECT_GT(middle.r - middle.g, 40);
        EXPECT_TRUE(test::isNear(picture.at(1, 1), background));
        EXPECT_TRUE(test::isNear(picture.at(picture.width - 2, picture.height - 2), background));
    }
    static void expectEmpty(const test::Picture& picture)
    {
        EXPECT_TRUE(test::isNear(picture.at(picture.width / 2, picture.height / 2), background));
    }

    Camera& main;
    std::unique_ptr<Camera> other;
};

TEST_F(WindowTargetTest, HasTheSizeThatItWasMadeWith)
{
    const PlainWindow window(200, 150);

    const WindowTarget target(window.id, 120, 90, 4);
    main.setRenderTarget(target.renderTarget());

    EXPECT_EQ(target.getWidth(), 120u);
    EXPECT_EQ(target.getHeight(), 90u);
    EXPECT_EQ(main.viewportWidth(), 120u);
    EXPECT_EQ(main.viewportHeight(), 90u);
    EXPECT_EQ(window.childCount(), 1);
    EXPECT_NE(target.nativeHandle(), 0u);
    EXPECT_NE(target.nativeHandle(), window.id);
}

TEST_F(WindowTargetTest, TwoWindowsShowEachItsOwnView)
{
    PlainWindow first(200, 150);
    PlainWindow second(160, 120, 300);
    first.show();
    second.show();
    WindowTarget left(first.id, 200, 150, 4);
    WindowTarget right(second.id, 160, 120, 0);
    main.setRenderTarget(left.renderTarget());
    other->setRenderTarget(right.renderTarget());

    renderFrame();

    expectBox(first.onScreen());
    expectEmpty(second.onScreen());
    expectBox(pictureOf(left));
    expectEmpty(pictureOf(right));

    test::lookAlong(*other, {0, -400, 0}, {0, 1, 0});
    renderFrame();
    expectBox(first.onScreen());
    expectBox(second.onScreen());
}

TEST_F(WindowTargetTest, DrawDrawsThisOneAlone)
{
    PlainWindow first(200, 150);
    PlainWindow second(160, 120, 300);
    first.show();
    second.show();
    WindowTarget left(first.id, 200, 150, 0);
    const WindowTarget right(second.id, 160, 120, 0);
    main.setRenderTarget(left.renderTarget());
    other->setRenderTarget(right.renderTarget());
    renderFrame();
    test::lookAlong(main, {0, -400, 0}, {0, -1, 0});
    test::lookAlong(*other, {0, -400, 0}, {0, 1, 0});

    left.draw();

    expectEmpty(first.onScreen());
    expectEmpty(second.onScreen());
}

TEST_F(WindowTargetTest, ReadingShowsNothing)
{
    PlainWindow window(200, 150);
    window.show();
    WindowTarget target(window.id, 200, 150, 0);
    main.setRenderTarget(target.renderTarget());
    target.draw();
    test::lookAlong(main, {0, -400, 0}, {0, -1, 0});

    expectEmpty(pictureOf(target));

    expectBox(window.onScreen());
}

TEST_F(WindowTargetTest, SizeThatItHasAlreadyShowsNothingElse)
{
    PlainWindow window(200, 150);
    window.show();
    WindowTarget target(window.id, 200, 150, 0);
    main.setRenderTarget(target.renderTarget());
    target.draw();
    test::lookAlong(main, {0, -400, 0}, {0, -1, 0});
    target.read(); // what lies behind what is shown

    target.resize(200, 150);

    expectBox(window.onScreen());
}

/// How many pixels the display has filled with the black of nothing.
int blackPixels(const test::Picture& picture)
{
    int black = 0;
    for (unsigned y = 0; y < picture.height; ++y)
        for (unsigned x = 0; x < picture.width; ++x)
            black += test::isNear(picture.at(x, y), {0, 0, 0}, 3) ? 1 : 0;
    return black;
}

TEST_F(WindowTargetTest, IsGreyUntilItsFirstPicture)
{
    PlainWindow window(200, 150);
    const WindowTarget target(window.id, 200, 150, 0);

    window.show();

    expectEmpty(window.onScreen());
    EXPECT_EQ(blackPixels(window.onScreen()), 0);
}

TEST_F(WindowTargetTest, OneThatIsShownIsGreyAtOnce)
{
    PlainWindow window(200, 150);
    window.show();

    const WindowTarget target(window.id, 200, 150, 0);

    EXPECT_EQ(blackPixels(window.onScreen()), 0);
}

TEST_F(WindowTargetTest, KeepsItsPictureWhileItsSizeChanges)
{
    PlainWindow window(200, 150);
    window.fill({90, 90, 90});
    window.show();
    WindowTarget target(window.id, 200, 150, 0);
    main.setRenderTarget(target.renderTarget());
    target.draw();
    expectBox(window.onScreen());

    for (const auto& [width, height] : {std::pair{260u, 190u}, {140u, 120u}, {300u, 100u}, {320u, 240u}}) {
        SCOPED_TRACE(testing::Message() << width << " x " << height);
        window.resize(width, height);
        EXPECT_EQ(blackPixels(window.onScreen()), 0) << "the inner window is as it was";
        target.resize(width, height);
        const test::Picture between = window.onScreen();
        EXPECT_EQ(blackPixels(between), 0);
        target.draw();
        expectBox(window.onScreen());
    }
}

TEST_F(WindowTargetTest, WhatAnotherWindowUncoversIsNotFilled)
{
    PlainWindow window(200, 150);
    window.show();
    WindowTarget target(window.id, 200, 150, 0);
    main.setRenderTarget(target.renderTarget());
    target.draw();
    {
        PlainWindow dialog(100, 75, 50);
        dialog.fill({20, 200, 40});
        dialog.show();
    }

    const test::Picture uncovered = window.onScreen();

    EXPECT_EQ(blackPixels(uncovered), 0);
    EXPECT_TRUE(test::isNear(uncovered.at(60, 30), {20, 200, 40})) << "until the next picture";
    target.draw();
    expectBox(window.onScreen());
}

TEST_F(WindowTargetTest, PictureIsThatOfAnOffscreenTarget)
{
    PlainWindow window(101, 75); // rows that end within a word
    window.show();
    test::lookAlong(main, {30, -400, 20}, {0, 1, 0}); // another picture upside down
    const OffscreenTarget offscreen(101, 75, 0);
    main.setRenderTarget(offscreen.renderTarget());
    renderFrame();
    const test::Picture expected{101, 75, offscreen.read()};

    WindowTarget target(window.id, 101, 75, 0);
    main.setRenderTarget(target.renderTarget());

    EXPECT_LE(test::largestDifference(pictureOf(target), expected), 1);
    expectBox(expected);
}

TEST_F(WindowTargetTest, WindowThatIsNotShownIsReadAllTheSame)
{
    const PlainWindow window(200, 150);
    WindowTarget target(window.id, 200, 150, 0);
    main.setRenderTarget(target.renderTarget());

    expectBox(pictureOf(target));
}

TEST_F(WindowTargetTest, ReadingWithoutACameraIsRefused)
{
    const PlainWindow window(200, 150);
    WindowTarget target(window.id, 200, 150, 0);

    EXPECT_THAT([&] { target.read(); }, ThrowsMessage<std::logic_error>(StrEq("No camera draws into the window.")));
    EXPECT_NO_THROW(target.draw());
    EXPECT_NO_THROW(renderFrame());
}

TEST_F(WindowTargetTest, CamerasFitTheirAnglesToANewSize)
{
    PlainWindow window(200, 150);
    window.show();
    WindowTarget target(window.id, 200, 150, 0);
    main.setRenderTarget(target.renderTarget());
    window.resize(300, 100);

    target.resize(300, 100);

    EXPECT_EQ(target.getWidth(), 300u);
    EXPECT_EQ(target.getHeight(), 100u);
    EXPECT_EQ(main.viewportWidth(), 300u);
    EXPECT_EQ(main.viewportHeight(), 100u);
    EXPECT_FLOAT_EQ(main.getAspectRatio(), 3);
    EXPECT_EQ(Camera::Published()->width, 300u);
    target.draw();
    expectBox(window.onScreen());
    expectBox(pictureOf(target));
}

TEST_F(WindowTargetTest, WindowThatIsNotShownTakesASize)
{
    const PlainWindow window(200, 150);
    WindowTarget target(window.id, 200, 150, 0);

    target.resize(80, 60);

    EXPECT_EQ(target.getWidth(), 80u);
    EXPECT_EQ(target.getHeight(), 60u);
}

TEST_F(WindowTargetTest, SizeWithoutAreaIsRefusedAndTheWindowStays)
{
    const PlainWindow window(200, 150);
    WindowTarget target(window.id, 200, 150, 0);
    const auto refused = [](const char* size) { return ThrowsMessage<std::runtime_error>(HasSubstr(size)); };

    EXPECT_THAT([&] { const WindowTarget none(window.id, 0, 150, 0); }, refused("0 x 150 pixels"));
    EXPECT_THAT([&] { const WindowTarget none(window.id, 200, 0, 0); }, refused("200 x 0 pixels"));
    EXPECT_THAT([&] { const WindowTarget none(window.id, 16385, 1, 0); }, refused("16385 x 1 pixels"));
    EXPECT_THAT([&] { target.resize(0, 90); }, refused("0 x 90 pixels"));
    EXPECT_THAT([&] { target.resize(90, 100000); }, refused("90 x 100000 pixels"));

    EXPECT_EQ(target.getWidth(), 200u);
    EXPECT_EQ(target.getHeight(), 150u);
    EXPECT_EQ(window.childCount(), 1);
}

TEST_F(WindowTargetTest, HandleThatIsNoWindowIsRefused)
{
    PlainWindow gone(20, 20);
    gone.destroy();
    const PlainWindow unseen(20, 20, 0, XCB_WINDOW_CLASS_INPUT_ONLY);
    const PlainWindow window(20, 20);
    const std::uintptr_t wide = window.id + (std::uintptr_t{1} << 32);

    for (const std::uintptr_t handle : {std::uintptr_t{0}, std::uintptr_t{gone.id}, std::uintptr_t{unseen.id}, wide})
        EXPECT_THAT([&] { const WindowTarget none(handle, 20, 20, 0); },
                    ThrowsMessage<std::runtime_error>(
                        AllOf(HasSubstr(std::to_string(handle)), HasSubstr("no window of this display"))));
    EXPECT_NO_THROW(const WindowTarget target(window.id, 20, 20, 0));
}

TEST_F(WindowTargetTest, PixelRatioIsKept)
{
    const PlainWindow window(20, 20);
    WindowTarget target(window.id, 20, 20, 0);
    EXPECT_EQ(target.getDevicePixelRatio(), 1);

    target.setDevicePixelRatio(1.5);

    EXPECT_EQ(target.getDevicePixelRatio(), 1.5);
    EXPECT_EQ(target.getWidth(), 20u);
    for (const double ratio : {0.0, -1.0, std::numeric_limits<double>::infinity(), std::nan("")})
        EXPECT_THAT(
            [&] { target.setDevicePixelRatio(ratio); },
            ThrowsMessage<std::invalid_argument>(StrEq("The pixel ratio of a window must be above 0 and finite")));
    EXPECT_EQ(target.getDevicePixelRatio(), 1.5);
}

TEST_F(WindowTargetTest, EndsWithItsInnerWindowAndLeavesItsCamera)
{
    PlainWindow window(200, 150);
    window.show();
    {
        WindowTarget target(window.id, 200, 150, 0);
        main.setRenderTarget(target.renderTarget());
        target.draw();
    }

    EXPECT_EQ(window.childCount(), 0);
    EXPECT_FALSE(main.isRenderTargetValid());
    EXPECT_EQ(main.ogreCamera()->getViewport(), nullptr);
    EXPECT_FALSE(Camera::Published()->hasPixels());
    EXPECT_NO_THROW(renderFrame());

    WindowTarget next(window.id, 200, 150, 0);
    main.setRenderTarget(next.renderTarget());
    renderFrame();
    expectBox(window.onScreen());
}

TEST_F(WindowTargetTest, CameraThatDiesFirstLeavesTheWindowToTheNext)
{
    PlainWindow window(200, 150);
    window.show();
    WindowTarget target(window.id, 200, 150, 0);
    other->setRenderTarget(target.renderTarget());
    renderFrame();

    other.reset();

    EXPECT_NO_THROW(renderFrame());
    main.setRenderTarget(target.renderTarget());
    renderFrame();
    expectBox(window.onScreen());
}

TEST_F(WindowTargetTest, WindowsEndInAnyOrder)
{
    PlainWindow first(200, 150);
    PlainWindow second(200, 150, 300);
    first.show();
    second.show();
    for (const bool isFirstGone : {true, false}) {
        SCOPED_TRACE(isFirstGone);
        std::optional<WindowTarget> left(std::in_place, first.id, 200u, 150u, 0u);
        std::optional<WindowTarget> right(std::in_place, second.id, 200u, 150u, 0u);
        main.setRenderTarget((isFirstGone ? right : left)->renderTarget());
        other->setRenderTarget((isFirstGone ? left : right)->renderTarget());
        scene.setBorderHighlightEnabled(true);
        renderFrame();

        (isFirstGone ? left : right).reset();

        EXPECT_FALSE(other->isRenderTargetValid());
        renderFrame();
        expectBox((isFirstGone ? second : first).onScreen());
        scene.setBorderHighlightEnabled(false);
    }
}

TEST_F(WindowTargetTest, OffscreenTargetOutlivesTheWindowThatWasDrawnWhenItWasMade)
{
    PlainWindow window(200, 150);
    window.show();
    std::optional<WindowTarget> shown(std::in_place, window.id, 200u, 150u, 0u);
    main.setRenderTarget(shown->renderTarget());
    shown->draw(); // its context is the present one from here on
    const OffscreenTarget offscreen(200, 150, 4);
    other->setRenderTarget(offscreen.renderTarget());
    test::lookAlong(*other, {0, -400, 0}, {0, 1, 0});
    renderFrame();

    shown.reset();

    renderFrame();
    expectBox({200, 150, offscreen.read()});
}

TEST_F(WindowTargetTest, PictureIsSavedAsAPng)
{
    const test::TempFolder folder;
    const PlainWindow window(101, 75);
    WindowTarget target(window.id, 101, 75, 0);
    main.setRenderTarget(target.renderTarget());

    target.savePng(folder / "view.png");

    const test::Picture saved = test::readPng(folder / "view.png");
    EXPECT_EQ(saved.width, 101u);
    EXPECT_EQ(saved.height, 75u);
    EXPECT_EQ(saved.rgb, target.read());
}

TEST_F(WindowTargetTest, PictureOfAnOffscreenTargetIsSavedAsAPng)
{
    const test::TempFolder folder;
    const OffscreenTarget target(101, 75, 0);
    main.setRenderTarget(target.renderTarget());
    renderFrame();

    target.savePng(folder / "view.png");

    const test::Picture saved = test::readPng(folder / "view.png");
    EXPECT_EQ(saved.width, 101u);
    expectBox(saved);
    EXPECT_EQ(saved.rgb, target.read());
}

TEST_F(WindowTargetTest, FileThatCannotBeWrittenIsNamed)
{
    const test::TempFolder folder;
    const OffscreenTarget target(20, 20, 0);
    const std::filesystem::path file = folder / "missing" / "view.png";

    EXPECT_THAT([&] { target.savePng(file); }, ThrowsMessage<std::runtime_error>(HasSubstr(file.string())));
    std::filesystem::create_directories(file);
    EXPECT_THAT([&] { target.savePng(file); }, ThrowsMessage<std::runtime_error>(HasSubstr(file.string())));
    EXPECT_TRUE(std::filesystem::is_directory(file));
}

TEST_F(WindowTargetTest, NothingIsDrawnBeforeTheStart)
{
    EXPECT_EQ(textOfFrameBeforeTheStart, "The library has not been started.");
    EXPECT_EQ(textOfWindowBeforeTheStart, "The library has not been started.");
}

} // namespace
} // namespace vrk::visual
