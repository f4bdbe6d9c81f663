#include "view/Navigator.h"

#include "selection/geometry/Result.h"
#include "selection/region/RegionQuery.h"
#include "view/OffscreenTarget.h"
#include "view/ViewTools.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <optional>
#include <random>
#include <vector>

namespace vrk::visual {
namespace {

using Button = Navigator::Button;
using rob::Posd;
using rob::Posed;
using rob::Vec3d;

/// A box of 100 about the origin in a picture of 400 x 300, seen from the front.
class NavigatorTest : public test::RenderTest {
protected:
    NavigatorTest() : camera(*Camera::Get()), navigator(camera)
    {
        box = test::addPickedBox(world, {-50, -50, -50}, {100, 100, 100});
        test::lookAlong(camera, {0, -400, 0}, {0, 1, 0});
        navigator.onClick = [this](const selection::Result& hit) { clicked.push_back(hit.hit ? hit.visual : nullptr); };
        navigator.onHover = [this](const selection::Result& hit) { hovered.push_back(hit.hit ? hit.visual : nullptr); };
    }

    Posed pose() const { return Posed(camera.getWorldPose()); }
    /// Near the middle of the picture, over the front of the box.
    static constexpr double middleX = 190, middleY = 141;
    /// What is there in the view from the start.
    Posd front() const
    {
        const double unit = camera.getSnapshot().unitsPerPixel(350);
        return Posd((middleX - 200) * unit, -50, (150 - middleY) * unit);
    }
    /// Where the camera shows a place.
    std::pair<double, double> seen(const Posd& place) const
    {
        const Posd local = pose().inverse() * place;
        const double unit = camera.getSnapshot().unitsPerPixel(static_cast<float>(-local.z));
        return {200 + local.x / unit, 150 - local.y / unit};
    }

    Camera& camera;
    Navigator navigator;
    Visual* box = nullptr;
    std::vector<const Visual*> clicked, hovered;
};

TEST_F(NavigatorTest, MiddleButtonOrbitsAboutThePlaceUnderTheMouse)
{
    const Posd place = front();
    const double before = (pose().position - place).length();

    navigator.press(Button::Middle, middleX, middleY);
    EXPECT_TRUE(navigator.isDragging());
    navigator.move(middleX + 100, middleY + 40);
    navigator.release(Button::Middle, middleX + 100, middleY + 40);

    EXPECT_FALSE(navigator.isDragging());
    EXPECT_NEAR((pose().position - place).length(), before, 0.01);
    EXPECT_GT((pose().position - Posd(0, -400, 0)).length(), 50);
    const auto [x, y] = seen(place);
    EXPECT_NEAR(x, middleX, 0.1);
    EXPECT_NEAR(y, middleY, 0.1);
}

TEST_F(NavigatorTest, RightButtonAndShiftPanSoThatThePlaceFollowsTheMouse)
{
    for (const bool isShift : {false, true}) {
        test::lookAlong(camera, {0, -400, 0}, {0, 1, 0});
        const Posd place = front();
        const Button button = isShift ? Button::Middle : Button::Right;
        navigator.press(button, middleX, middleY, isShift);
        navigator.move(middleX + 60, middleY - 25);
        navigator.release(button, middleX + 60, middleY - 25);
        const auto [x, y] = seen(place);
        EXPECT_NEAR(x, middleX + 60, 0.2) << isShift;
        EXPECT_NEAR(y, middleY - 25, 0.2) << isShift;
    }
}

TEST_F(NavigatorTest, NotchOfTheWheelGoesASixthOfTheWayAndBack)
{
    navigator.turnWheel(middleX, middleY, 1);
    EXPECT_NEAR(pose().position.y, -50 - 350 * 5 / 6.0, 0.05);
    navigator.turnWheel(middleX, middleY, -1);
    EXPECT_NEAR(pose().position.y, -400, 0.1);
}

TEST_F(NavigatorTest, WheelNeverLeadsThroughTheSurface)
{
    for (int i = 0; i < 200; ++i)
        navigator.turnWheel(middleX, middleY, 5);
    EXPECT_LT(pose().position.y, -50);
    EXPECT_GT(pose().position.y, -53);
}

TEST_F(NavigatorTest, EyeStaysWithinTenTimesWhatIsShown)
{
    const double half = 10 * std::sqrt(3) * 50;
    for (int i = 0; i < 200; ++i)
        navigator.turnWheel(middleX, middleY, -20);
    EXPECT_NEAR(pose().position.y, -half, 1);
    navigator.press(Button::Right, middleX, middleY);
    for (int i = 0; i < 500; ++i)
        navigator.move(i % 2 == 0 ? 1e5 : 0, 50.0 * i);
    const Posd eye = pose().position;
    for (const double each : {eye.x, eye.y, eye.z})
        EXPECT_LE(std::abs(each), half * 1.001);
}

/// There the prescribed pan takes a place of the ground that lies farther and farther away.
TEST_F(NavigatorTest, PanNearTheHorizonStaysSlow)
{
    test::lookAlong(camera, {0, -400, 30}, {0, 1, 0.05f});
    navigator.press(Button::Right, 10, 140);
    Posd last = pose().position;
    for (int i = 1; i <= 300; ++i) {
        navigator.move(10 + i, 140);
        EXPECT_LT((pose().position - last).length(), 30) << i;
        last = pose().position;
    }
}

TEST_F(NavigatorTest, ClickTellsWhatIsThereAndADragIsNone)
{
    navigator.press(Button::Left, middleX, middleY);
    navigator.release(Button::Left, middleX + 2, middleY - 2);
    navigator.press(Button::Left, 5, 5);
    navigator.release(Button::Left, 5, 5);
    navigator.press(Button::Left, middleX, middleY);
    navigator.move(middleX + 50, middleY);
    navigator.release(Button::Left, middleX + 50, middleY);
    EXPECT_THAT(clicked, testing::ElementsAre(box, nullptr));
}

TEST_F(NavigatorTest, MoveWithoutAButtonTellsWhatIsUnderTheMouse)
{
    const Posed before = pose();
    navigator.move(middleX, middleY);
    navigator.move(5, 5);
    EXPECT_THAT(hovered, testing::ElementsAre(box, nullptr));
    EXPECT_EQ(pose(), before);
}

TEST_F(NavigatorTest, OneButtonAtATimeAndCancelEndsTheDrag)
{
    navigator.press(Button::Left, middleX, middleY);
    navigator.press(Button::Middle, middleX, middleY);
    navigator.release(Button::Middle, middleX, middleY);
    EXPECT_TRUE(navigator.isDragging()) << "by the left one";
    navigator.cancel();
    navigator.release(Button::Left, middleX, middleY);
    EXPECT_THAT(clicked, testing::IsEmpty());
}

TEST_F(NavigatorTest, NumbersThatAreNoneDoNothing)
{
    const Posed before = pose();
    const double nan = std::numeric_limits<double>::quiet_NaN(), far = std::numeric_limits<double>::infinity();
    navigator.press(Button::Middle, nan, 5);
    EXPECT_FALSE(navigator.isDragging());
    navigator.turnWheel(middleX, middleY, nan);
    navigator.turnWheel(far, middleY, 1);
    navigator.press(Button::Middle, middleX, middleY);
    navigator.move(nan, middleY);
    navigator.move(middleX, -far);
    navigator.cancel();
    EXPECT_EQ(pose(), before);
}

TEST_F(NavigatorTest, CameraWithoutATargetIsLeftAsItIs)
{
    camera.setRenderTarget(nullptr);
    const Posed before = pose();
    navigator.press(Button::Middle, 5, 5);
    navigator.move(50, 50);
    navigator.turnWheel(5, 5, 3);
    navigator.release(Button::Middle, 50, 50);
    EXPECT_EQ(pose(), before);
    EXPECT_THAT(clicked, testing::IsEmpty());
    EXPECT_THAT(hovered, testing::IsEmpty());
}

TEST_F(NavigatorTest, WithoutAnythingShownItIsBoundedToo)
{
    scene.deleteVisual(box);
    for (int i = 0; i < 100; ++i)
        navigator.turnWheel(30, 40, -20);
    EXPECT_LT(Vec3d(pose().position - Posd()).length(), 1e4);
    for (int i = 0; i < 100; ++i)
        navigator.turnWheel(30, 40, 20);
    EXPECT_TRUE(pose().position.isFinite());
}

// Rectangles

/// The same with a second box to the right of the first, and ears for rectangles.
class NavigatorRectangle : public NavigatorTest {
protected:
    NavigatorRectangle()
    {
        right = test::addPickedBox(world, {80, -50, -50}, {40, 100, 100});
        navigator.onRegion = [this](const selection::RegionAnswer& answer) {
            answers.push_back(answer);
            drawnAtAnswer = shown;
        };
        navigator.onRectangle = [this](const std::optional<Navigator::Rectangle>& rectangle) {
            shown = rectangle;
            ++told;
        };
    }

    void dragRectangle(double fromX, double fromY, double toX, double toY)
    {
        navigator.press(Button::Left, fromX, fromY, true);
        navigator.move((fromX + toX) / 2, (fromY + toY) / 2);
        navigator.move(toX, toY);
        navigator.release(Button::Left, toX, toY);
    }
    std::vector<const Visual*> bodies() const
    {
        std::vector<const Visual*> all;
        if (!answers.empty())
            for (const selection::RegionAnswer::Whole& body : answers.back().bodies)
                all.push_back(body.visual);
        return all;
    }
    test::Picture seen() { return render({.eye = {0, -400, 0}, .target = {0, 0, 0}}); }

    // Around the first box, whose front reaches from x = 150 to 250, and within it
    static constexpr double left = 120, top = 60, low = 240, between = 262;
    Visual* right = nullptr;
    std::vector<selection::RegionAnswer> answers;
    std::optional<Navigator::Rectangle> shown, drawnAtAnswer;
    int told = 0;
};

TEST_F(NavigatorRectangle, DrawnToTheRightItTakesWhatLiesWhollyInside)
{
    dragRectangle(left, top, between, low);
    EXPECT_THAT(bodies(), testing::ElementsAre(box));
    dragRectangle(left, top, 395, low);
    EXPECT_THAT(bodies(), testing::UnorderedElementsAre(box, right));
    dragRectangle(180, 120, 220, 160);
    EXPECT_THAT(bodies(), testing::IsEmpty());
    EXPECT_EQ(answers.size(), 3u);
    EXPECT_THAT(clicked, testing::IsEmpty());
}

TEST_F(NavigatorRectangle, DrawnToTheLeftItTakesWhatItTouches)
{
    dragRectangle(220, 160, 180, 120);
    EXPECT_THAT(bodies(), testing::ElementsAre(box));
    dragRectangle(300, 160, 180, 120);
    EXPECT_THAT(bodies(), testing::UnorderedElementsAre(box, right));
    dragRectangle(50, 20, 5, 5);
    EXPECT_THAT(bodies(), testing::IsEmpty());
    EXPECT_EQ(answers.size(), 3u);
}

TEST_F(NavigatorRectangle, PointsOfCloudsAreTakenToo)
{
    test::addPickedCloud(world, {{-100, -50, 0}, {-110, -50, 0}, {-100, -50, 90}});
    dragRectangle(70, 130, 110, 170);
    ASSERT_EQ(answers.back().clouds.size(), 1u);
    EXPECT_THAT(answers.back().clouds[0].points, testing::ElementsAre(0u, 1u));
}

TEST_F(NavigatorRectangle, IsToldWhileItIsDrawnAndItsEndAheadOfTheAnswer)
{
    navigator.press(Button::Left, 100, 50, true);
    navigator.move(102, 51);
    EXPECT_EQ(told, 0) << "a hand that trembles";
    navigator.move(160, 90);
    EXPECT_EQ(shown, (Navigator::Rectangle{100, 50, 160, 90}));
    EXPECT_FALSE(shown->takesWhatIsTouched());
    navigator.move(60, 90);
    EXPECT_EQ(shown, (Navigator::Rectangle{100, 50, 60, 90}));
    EXPECT_TRUE(shown->takesWhatIsTouched());
    EXPECT_TRUE(answers.empty());
    navigator.release(Button::Left, 60, 90);
    EXPECT_EQ(shown, std::nullopt);
    EXPECT_EQ(answers.size(), 1u);
    EXPECT_EQ(drawnAtAnswer, std::nullopt);
    EXPECT_EQ(told, 3);
    EXPECT_FALSE(navigator.isDragging());
}

TEST_F(NavigatorRectangle, IsDrawnOverThePictureUntilItEnds)
{
    const test::Picture before = seen();
    const auto blueness = [](const test::Pixel& pixel) { return pixel.b - pixel.r; };
    for (const bool isCancelled : {false, true}) {
        navigator.press(Button::Left, 20, 20, true);
        navigator.move(100, 100);
        EXPECT_GT(blueness(seen().at(20, 60)), blueness(before.at(20, 60)) + 80);
        if (isCancelled)
            navigator.cancel();
        else
            navigator.release(Button::Left, 100, 100);
        EXPECT_EQ(test::largestDifference(seen(), before), 0) << isCancelled;
    }
    EXPECT_EQ(answers.size(), 1u) << "of the first one alone";
    EXPECT_EQ(shown, std::nullopt);
}

TEST_F(NavigatorRectangle, MovesNoCameraAndTellsOfNothingUnderTheMouse)
{
    const Posed before = pose();
    dragRectangle(left, top, between, low);
    EXPECT_EQ(pose(), before);
    EXPECT_THAT(hovered, testing::IsEmpty());
}

TEST_F(NavigatorRectangle, ShiftClickIsAClickAndADragWithoutAListenerNothing)
{
    navigator.press(Button::Left, middleX, middleY, true);
    navigator.release(Button::Left, middleX + 1, middleY);
    EXPECT_THAT(clicked, testing::ElementsAre(box));

    navigator.onRegion = nullptr;
    dragRectangle(left, top, between, low);
    EXPECT_EQ(told, 0);
    EXPECT_EQ(clicked.size(), 1u);
}

TEST_F(NavigatorRectangle, IsOfItsOwnCamera)
{
    auto other = std::make_unique<Camera>("camera of a rectangle", &scene);
    const OffscreenTarget target(400, 300, 0);
    other->setRenderTarget(target.renderTarget());
    test::lookAlong(*other, {100, -400, 0}, {0, 1, 0});
    Navigator ofOther(*other);
    ofOther.onRegion = navigator.onRegion;
    ofOther.press(Button::Left, 155, 60, true);
    ofOther.move(250, 240);
    ofOther.release(Button::Left, 250, 240);
    EXPECT_THAT(bodies(), testing::ElementsAre(right))
        << "in the middle there, and at the side in the main camera's view";
}

TEST_F(NavigatorRectangle, CameraThatLosesItsTargetMeanwhileTakesNothing)
{
    navigator.press(Button::Left, left, top, true);
    navigator.move(between, low);
    camera.setRenderTarget(nullptr);
    navigator.release(Button::Left, between, low);
    EXPECT_TRUE(answers.empty());
    EXPECT_EQ(shown, std::nullopt);
    EXPECT_FALSE(navigator.isDragging());
}

/// As much as a hand does in minutes: whatever it does, the scene is in reach and the picture has a pose.
TEST_F(NavigatorTest, AnyInputLeavesTheEyeNearWhatIsShown)
{
    std::mt19937 random(20261);
    const auto below = [&random](double most) { return std::uniform_real_distribution<double>(0, most)(random); };
    const double half = 10 * std::sqrt(3) * 50 * 1.001;
    for (int i = 0; i < 20000; ++i) {
        const double x = below(400), y = below(300);
        const auto button = static_cast<Button>(random() % 3);
        switch (random() % 6) {
        case 0:
            navigator.press(button, x, y, random() % 2 == 0);
            break;
        case 1:
            navigator.release(button, x, y);
            break;
        case 2:
            navigator.turnWheel(x, y, below(40) - 20);
            break;
        default:
            navigator.move(x, y);
        }
        const Posed now = pose();
        ASSERT_TRUE(now.position.isFinite()) << i;
        ASSERT_LE(std::max({std::abs(now.position.x), std::abs(now.position.y), std::abs(now.position.z)}), half) << i;
        const auto& turn = now.orientation;
        ASSERT_NEAR(turn.w * turn.w + turn.x * turn.x + turn.y * turn.y + turn.z * turn.z, 1, 1e-3) << i;
    }
}

} // namespace
} // namespace vrk::visual
