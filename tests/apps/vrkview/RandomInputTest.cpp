#include "FakeInput.h"
#include "MouseFixture.h"
#include "canvas/Views.h"

#include "view/Camera.h"
#include "view/ViewBounds.h"

#include <QApplication>
#include <QElapsedTimer>

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <random>
#include <set>

namespace vrkview::test {
namespace {

using vrk::rob::Posd;
using vrk::rob::Posed;
using vrk::visual::Camera;
using vrk::visual::ViewBounds;

constexpr int usualSeconds = 15;
constexpr qint64 eventInterval = 8; // milliseconds: as fast as a mouse tells

/// A hand that does anything with mouse and keys over the view, through the display.
class Hand {
public:
    explicit Hand(unsigned seed) : random(seed) {}
    ~Hand() { letGo(); }
    Hand(const Hand&) = delete;
    Hand& operator=(const Hand&) = delete;

    void doSomething(const ViewWidget& view)
    {
        const int what = below(100);
        if (what < 60)
            move(view);
        else if (what < 72)
            pressOrRelease(view);
        else if (what < 82)
            turnWheel(view);
        else if (what < 86)
            doubleClick(view);
        else if (what < 94)
            typeAnyKey();
        else
            holdOrFree();
        ++count;
    }
    void letGo()
    {
        if (held != 0)
            releaseButton(held);
        held = 0;
        modifier.reset();
    }
    int getCount() const { return count; }

private:
    int below(int most) { return std::uniform_int_distribution(0, most - 1)(random); }

    void move(const ViewWidget& view)
    {
        if (below(4) == 0)
            place = anywhere(view);
        else
            place += QPoint(below(121) - 60, below(121) - 60);
        // With a button down also beyond the view.
        const int beyond = held != 0 ? 120 : -2;
        place.setX(std::clamp(place.x(), -beyond, view.width() + beyond));
        place.setY(std::clamp(place.y(), -beyond, view.height() + beyond));
        moveMouse(view, place);
    }
    void backIntoView(const ViewWidget& view)
    {
        if (!view.rect().contains(place))
            moveMouse(view, place = anywhere(view));
    }
    QPoint anywhere(const ViewWidget& view) { return {2 + below(view.width() - 4), 2 + below(view.height() - 4)}; }
    void pressOrRelease(const ViewWidget& view)
    {
        if (held != 0) {
            releaseButton(held);
            held = 0;
            return;
        }
        backIntoView(view);
        held = static_cast<unsigned>(1 + below(3));
        pressButton(held);
    }
    void turnWheel(const ViewWidget& view)
    {
        if (held == 0)
            backIntoView(view);
        const unsigned direction = below(2) == 0 ? 4 : 5;
        for (int i = below(6); i >= 0; --i) {
            pressButton(direction);
            releaseButton(direction);
        }
    }
    void doubleClick(const ViewWidget& view)
    {
        if (held != 0)
            return;
        backIntoView(view);
        clickLeft();
        clickLeft();
    }
    /// None that hides what is shown, opens a dialog or leaves.
    void typeAnyKey()
    {
        static constexpr std::array keys = {"f", "f", "0",    "1",  "2",  "3",  "4",  "5",      "6",     "i",
                                            "g", "n", "t",    "a",  "z",  "u",  "m",  "x",      "d",     "o",
                                            "q", "q", "plus", "F5", "F6", "F7", "F8", "Escape", "Escape"};
        if (!modifier)
            typeKey(keys[static_cast<std::size_t>(below(static_cast<int>(keys.size())))]);
    }
    void holdOrFree()
    {
        static constexpr std::array keys = {"Shift_L", "Control_L", "Alt_L"};
        if (modifier)
            modifier.reset();
        else
            modifier = std::make_unique<HeldKey>(keys[static_cast<std::size_t>(below(3))]);
    }

    std::mt19937 random;
    QPoint place{50, 50};
    unsigned held = 0; // button
    std::unique_ptr<HeldKey> modifier;
    int count = 0;
};

class RandomInputTest : public MouseFixture {
protected:
    void SetUp() override
    {
        MouseFixture::SetUp();
        QObject::connect(&view(), &ViewWidget::failed, &view(),
                         [](const QString& text) { ADD_FAILURE() << text.toStdString(); });
    }

    static int seconds()
    {
        bool isNumber = false;
        const int wanted = qEnvironmentVariableIntValue("VRK_RANDOM_INPUT_SECONDS", &isNumber);
        return isNumber ? wanted : usualSeconds;
    }
    static void come()
    {
        EXPECT_TRUE(waitFor([] {
            window().getFlight().finish();
            return !view().isFrameRequested() && !mouse().isMoveWaiting();
        }));
    }
    /// How far from the middle of what is shown the eye is, by half of the cube that it should be in.
    static double reachOf(const ViewBounds& bounds)
    {
        const Posd eye(camera().position);
        const auto way = eye - bounds.getMiddle();
        return std::max({std::abs(way.x), std::abs(way.y), std::abs(way.z)}) / bounds.getRoom();
    }
    static void expectNearTheStation()
    {
        const ViewBounds bounds = ViewBounds::OfScene();
        EXPECT_TRUE(camera().position.isFinite());
        EXPECT_LE(reachOf(bounds), 1.001);
        EXPECT_TRUE(bounds.isInView(Camera::Get()->getSnapshot(), Posed(camera())));
    }
    static void expectPictureOfTheStation()
    {
        typeKey("f");
        EXPECT_TRUE(waitFor([] {
            window().getFlight().finish();
            return (camera().position - poseForAll().position).length() < 1;
        }));
        come();
        int picked = 0;
        for (int y = 20; y < view().height(); y += 20)
            for (int x = 20; x < view().width(); x += 20)
                picked += pickedAt({x, y}) ? 1 : 0;
        EXPECT_GT(picked, 10);
        std::set<QRgb> colours;
        const QImage picture = seen();
        for (int y = 0; y < picture.height(); y += 4)
            for (int x = 0; x < picture.width(); x += 4)
                colours.insert(picture.pixel(x, y));
        EXPECT_GT(colours.size(), 20u);
    }
};

/// 15 seconds of it, or as many as VRK_RANDOM_INPUT_SECONDS says.
TEST_F(RandomInputTest, WhateverTheHandDoesTheStationStaysInView)
{
    Hand hand(20264);
    for (int second = 1; second <= seconds() && !HasFailure(); ++second) {
        SCOPED_TRACE(testing::Message() << "second " << second << ", " << hand.getCount() << " events");
        QElapsedTimer timer;
        timer.start();
        const int before = hand.getCount();
        while (timer.elapsed() < 1000) {
            while (hand.getCount() - before < timer.elapsed() / eventInterval) // it does not wait for slow frames
                hand.doSomething(view());
            QApplication::processEvents(QEventLoop::AllEvents, 4);
        }
        come();
        expectNearTheStation();
        if (second % 5 != 0)
            continue;
        hand.letGo();
        for (int i = 0; i < 4; ++i) // whatever tool is on
            typeKey("Escape");
        come();
        expectPictureOfTheStation();
        expectNearTheStation();
    }
    EXPECT_GT(hand.getCount(), 20 * seconds());
    RecordProperty("events", hand.getCount());
    shoot("random_input");
}

} // namespace
} // namespace vrkview::test
