#include "PlainWindow.h"

#include "selection/geometry/Result.h"
#include "selection/region/RegionQuery.h"
#include "view/Navigator.h"
#include "view/RenderFrame.h"
#include "view/ViewTools.h"
#include "view/WindowTarget.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <random>
#include <string>

namespace vrk::visual {
namespace {

using rob::Posd;
using rob::Posed;

constexpr int usualSeconds = 15;
constexpr int eventsOfASecond = 125; // as fast as a mouse tells
constexpr int eventsOfAFrame = 2;

/// Of a hand, not of the clock: a slow machine takes longer over the same events.
int secondsOfInput()
{
    const char* wanted = std::getenv("VRK_RANDOM_INPUT_SECONDS");
    return wanted ? std::atoi(wanted) : usualSeconds;
}

/// A navigator in a window, over two boxes and a cloud that lie apart.
class NavigatorInput : public test::SceneFixture {
protected:
    NavigatorInput()
        : camera(*Camera::Get()), window(320, 240), target(window.id, 320, 240, 0), navigator(camera), random(20265)
    {
        window.show();
        camera.setRenderTarget(target.renderTarget());
        test::addPickedBox(world, {-50, -50, -50}, {100, 100, 100});
        test::addPickedBox(world, {180, -20, -50}, {60, 120, 30});
        test::addPickedCloud(world, {{-120, 0, 0}, {-120, 10, 10}});
        test::lookAlong(camera, {60, -500, 0}, {0, 1, 0});
        navigator.onClick = [this](const selection::Result& hit) { hits += hit.hit ? 1 : 0; };
        navigator.onHover = navigator.onClick;
        navigator.onRegion = [this](const selection::RegionAnswer& answer) { taken += answer.bodies.size(); };
        bounds = ViewBounds::OfScene();
    }
    ~NavigatorInput() override { camera.setRenderTarget(nullptr); }

    int below(int most) { return std::uniform_int_distribution(0, most - 1)(random); }
    void doSomething()
    {
        const auto button = static_cast<Navigator::Button>(below(3));
        switch (below(12)) {
        case 0:
            navigator.press(button, x, y, below(2) == 0);
            break;
        case 1:
            navigator.release(button, x, y);
            break;
        case 2:
            navigator.turnWheel(x, y, below(81) / 4.0 - 10);
            break;
        case 3: // anywhere, also beyond the window
            x = below(640) - 160;
            y = below(480) - 120;
            navigator.move(x, y);
            break;
        case 4:
            if (below(20) == 0)
                resize();
            else if (below(10) == 0)
                navigator.cancel();
            break;
        default:
            x = std::clamp(x + below(81) - 40, -60, 380);
            y = std::clamp(y + below(81) - 40, -60, 300);
            navigator.move(x, y);
        }
    }
    void resize()
    {
        const auto width = static_cast<unsigned>(100 + below(300)), height = static_cast<unsigned>(100 + below(200));
        window.resize(width, height);
        target.resize(width, height);
        if (!isInView()) // a lower picture shows less, and nobody navigated
            test::lookAlong(camera, {60, -500, 0}, {0, 1, 0});
    }
    bool isInView() const { return bounds.isInView(camera.getSnapshot(), Posed(camera.getWorldPose())); }
    void expectNear() const
    {
        const Posd eye(camera.getWorldPosition());
        const rob::Vec3d way = eye - bounds.getMiddle();
        EXPECT_TRUE(eye.isFinite());
        EXPECT_TRUE(isInView());
        EXPECT_LE(std::max({std::abs(way.x), std::abs(way.y), std::abs(way.z)}), bounds.getRoom() * 1.001);
    }
    /// How much of the picture is not as a corner of an empty one.
    long drawnPixels()
    {
        const test::Picture picture{target.getWidth(), target.getHeight(), target.read()};
        long count = 0;
        for (unsigned row = 0; row < picture.height; ++row)
            for (unsigned column = 0; column < picture.width; ++column)
                count += test::isNear(picture.at(column, row), {115, 115, 115}, 20) ? 0 : 1;
        return count;
    }

    Camera& camera;
    test::PlainWindow window;
    WindowTarget target;
    Navigator navigator;
    std::mt19937 random;
    ViewBounds bounds;
    int x = 160, y = 120;
    long hits = 0;
    std::size_t taken = 0;
};

/// As much as in 15 seconds of a mouse, or in as many as VRK_RANDOM_INPUT_SECONDS says.
TEST_F(NavigatorInput, WhateverTheHandDoesSomethingStaysInView)
{
    int filled = 0;
    const int seconds = secondsOfInput();
    for (int second = 1; second <= seconds && !HasFailure(); ++second) {
        SCOPED_TRACE(testing::Message() << "second " << second);
        for (int event = 0; event < eventsOfASecond; ++event) {
            ASSERT_NO_THROW(doSomething()) << event;
            if (event % eventsOfAFrame == 0)
                renderFrame();
        }
        expectNear();
        filled += drawnPixels() > 10 ? 1 : 0;
    }
    EXPECT_GT(hits, seconds) << "it did meet something";
    EXPECT_GT(taken, 0u);
    EXPECT_GE(filled, seconds * 2 / 3) << "the box around everything has empty corners, and one may look out of a body";
    RecordProperty("filled", filled);
}

} // namespace
} // namespace vrk::visual
