#include "canvas/CoarseFrames.h"

#include "FakeInput.h"
#include "WindowFixture.h"
#include "window/Settings.h"

#include "platform/broker/SignalBroker.h"
#include "scene/ViewLook.h"
#include "view/Camera.h"

#include <gmock/gmock.h>

#include <QAction>
#include <QLabel>
#include <QStatusBar>

#include <chrono>
#include <thread>

namespace vrkview::test {
namespace {

using namespace std::chrono_literals;
using testing::HasSubstr;
using vrk::visual::Camera;
using vrk::visual::Coarseness;
using vrk::visual::GetCoarseness;

/// No frame takes less than this, on whatever machine.
class CoarseFramesTest : public WindowFixture {
protected:
    void SetUp() override
    {
        WindowFixture::SetUp();
        start = Camera::Get()->getWorldPose();
        slow = vrk::broker::SignalBroker::onFrameTicked([](double) { std::this_thread::sleep_for(110ms); });
    }
    void TearDown() override
    {
        slow.disconnect();
        Camera::Get()->setWorldPose(start); // the other tests go on from there
        settle();
    }

    /// Draws a frame after this.
    static void drawAfter(const std::function<void()>& change)
    {
        const int before = frames();
        change();
        ASSERT_TRUE(waitFor([before] { return frames() > before; }));
    }
    void moveCamera(int times)
    {
        for (int i = 0; i < times; ++i)
            drawAfter([this] {
                const float aside = ++moves % 2 == 0 ? 0.0f : 20.0f;
                Camera::Get()->setWorldPosition(start.position + vrk::rob::Vec3f(aside, 0, 0));
            });
    }
    static bool waitForWhole()
    {
        return waitFor([] { return GetCoarseness() == Coarseness::Whole; });
    }
    static const QLabel& label() { return *window().statusBar()->findChild<QLabel*>("coarseness"); }
    static QAction& action()
    {
        for (QAction* each : window().findChildren<QAction*>())
            if (each->text() == "Coarser while mo&ving")
                return *each;
        throw std::logic_error("no such action");
    }

    vrk::rob::Posef start;
    int moves = 0;
    boost::signals2::scoped_connection slow;
};

TEST_F(CoarseFramesTest, SlowFramesOfAMovementGetCoarserAndTheStatusLineSaysSo)
{
    EXPECT_FALSE(label().isVisible());
    Coarseness before = Coarseness::Whole;
    for (int i = 0; i < 6; ++i) {
        moveCamera(1);
        EXPECT_GE(GetCoarseness(), before);
        before = GetCoarseness();
        EXPECT_EQ(label().text(), textOf(before));
        EXPECT_EQ(label().isVisible(), before != Coarseness::Whole);
    }
    EXPECT_EQ(before, Coarseness::FewerBodies);
    EXPECT_THAT(label().text().toStdString(), HasSubstr("Coarser while moving: no edges"));
    shoot("coarser_while_moving");
}

TEST_F(CoarseFramesTest, PictureIsWholeAgainAtRest)
{
    settle();
    const QImage before = seen();
    moveCamera(6); // it ends where it began
    ASSERT_EQ(GetCoarseness(), Coarseness::FewerBodies);

    EXPECT_TRUE(waitForWhole()) << "without any event";

    EXPECT_FALSE(label().isVisible());
    EXPECT_EQ(label().text(), "");
    settle();
    EXPECT_EQ(seen(), before);
}

TEST_F(CoarseFramesTest, PictureOfTheViewIsWholeMeanwhile)
{
    settle(); // what is under the mouse has its outline by then
    const QImage before = view().takePicture({400, 300});
    settle();
    moveCamera(6);
    ASSERT_EQ(GetCoarseness(), Coarseness::FewerBodies);
    EXPECT_EQ(view().takePicture({400, 300}), before);
}

TEST_F(CoarseFramesTest, StatusLineDoesNotWidenTheWindow)
{
    const int before = window().minimumSizeHint().width();
    moveCamera(6);
    ASSERT_TRUE(label().isVisible());
    EXPECT_EQ(window().minimumSizeHint().width(), before);
}

TEST_F(CoarseFramesTest, FlightIsAMovement)
{
    typeKey("5");
    EXPECT_TRUE(waitFor([] { return GetCoarseness() != Coarseness::Whole; }));
    EXPECT_TRUE(waitForWhole());
}

TEST_F(CoarseFramesTest, SlowFramesOfACameraThatStandsStillAreWhole)
{
    for (int i = 0; i < 4; ++i) {
        drawAfter([] { view().requestFrame(); });
        EXPECT_EQ(GetCoarseness(), Coarseness::Whole);
    }
}

TEST_F(CoarseFramesTest, MayBeSwitchedOff)
{
    EXPECT_TRUE(action().isChecked());
    moveCamera(6);
    ASSERT_EQ(GetCoarseness(), Coarseness::FewerBodies);
    action().trigger();
    EXPECT_FALSE(window().getSettings().isCoarserWhileMoving());
    for (int i = 0; i < 4; ++i) {
        moveCamera(1);
        EXPECT_EQ(GetCoarseness(), Coarseness::Whole);
        EXPECT_FALSE(label().isVisible());
    }

    action().trigger();
    EXPECT_TRUE(window().getSettings().isCoarserWhileMoving());
    moveCamera(6);
    EXPECT_EQ(GetCoarseness(), Coarseness::FewerBodies);
}

} // namespace
} // namespace vrkview::test
