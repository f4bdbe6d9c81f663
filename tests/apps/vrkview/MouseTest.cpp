#include "FakeInput.h"
#include "MouseFixture.h"
#include "canvas/Picked.h"

#include "scene/Scene.h"
#include "view/Camera.h"
#include "view/OrbitViewController.h"
#include "visual/SolidVisual.h"

#include <gmock/gmock.h>

#include <QApplication>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

namespace vrkview::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using vrk::rob::Posef;
using vrk::rob::Posf;
using vrk::visual::Camera;
using vrk::visual::Scene;
using vrk::visual::SolidVisual;

constexpr float near = 1e-2f; // model units

float distance(const Posf& a, const Posf& b)
{
    return (a - b).length();
}

class MouseTest : public MouseFixture {
protected:
    static Posf underMouse(const QPoint& place) { return resultAt(place).position; }
    /// The face under the place, with its body.
    static std::pair<unsigned, unsigned> faceAt(const QPoint& place)
    {
        const std::optional<Picked> found = pickedAt(place, PickAim::Face);
        return found ? std::pair(found->candidate.visualId, found->face()) : std::pair(0u, 0u);
    }
    static bool isSelectedFace(const std::pair<unsigned, unsigned>& face)
    {
        auto& solid = dynamic_cast<SolidVisual&>(*Scene::GetVisual(face.first));
        return state().isFaceSelected(face.first, face.second) && Scene::Get()->faceIsSelected(&solid, face.second);
    }
    static void expectStill(const Posef& before) { EXPECT_EQ(camera(), before); }
    static void expectOrbit(const Posef& before, const Posf& about)
    {
        EXPECT_GT(distance(camera().position, before.position), 10);
        EXPECT_NEAR(distance(camera().position, about), distance(before.position, about), 1);
    }
    static void expectPan(const Posef& before)
    {
        EXPECT_GT(distance(camera().position, before.position), 10);
        EXPECT_EQ(camera().rotation(), before.rotation());
    }
};

// Navigation

TEST_F(MouseTest, MiddleDragOrbitsAboutWhatIsUnderTheMouse)
{
    const QPoint place = placeOf("Pedestal");
    const Posf about = underMouse(place);
    const Posef before = camera();

    drag(2, place, place + QPoint(90, 30));

    expectOrbit(before, about);
    EXPECT_LT(distance(Camera::Get()->getViewController()->getFocalPoint(), about), near);
}

TEST_F(MouseTest, LeftDragFromEmptySpaceOrbits)
{
    const Posef before = camera();

    drag(1, emptyPlace(), emptyPlace() + QPoint(80, 40));

    expectOrbit(before, Camera::Get()->getViewController()->getFocalPoint());
    EXPECT_THAT(state().getSelected(), IsEmpty());
}

TEST_F(MouseTest, LeftDragFromAThingNeitherMovesTheCameraNorSelects)
{
    const Posef before = camera();
    const QPoint place = placeOf("Pedestal");

    drag(1, place, place + QPoint(70, 20));

    expectStill(before);
    EXPECT_THAT(state().getSelected(), IsEmpty());
}

TEST_F(MouseTest, PivotIsShownWhileAnOrbitGoesOn)
{
    const QPoint place = placeOf("Pedestal");
    settle();
    const QImage before = seen();
    moveTo(place);
    pressButton(2);
    moveTo(place + QPoint(20, 0));
    moveTo(place); // the view is as before, but for the pivot
    settle();

    const QImage during = seen();
    shoot("orbit");
    releaseButton(2);
    settle();
    leaveView();
    settle();

    EXPECT_NE(during, before);
}

TEST_F(MouseTest, ShiftAndMiddleDragPansWithTheThingUnderTheMouse)
{
    const QPoint place = placeOf("Pedestal");
    const Posf grabbed = underMouse(place);
    const Posef before = camera();

    {
        const HeldKey shift("Shift_L");
        drag(2, place, place + QPoint(60, -40));
    }

    expectPan(before);
    EXPECT_LT(distance(underMouse(place + QPoint(60, -40)), grabbed), 20);
}

TEST_F(MouseTest, WheelZoomsToTheCursorAndBack)
{
    const QPoint place = placeOf("Pedestal");
    const Posf target = underMouse(place);
    const Posef before = camera();

    turnWheel(place, 2);

    const float start = distance(before.position, target);
    EXPECT_NEAR(distance(camera().position, target), start - 2000, 10); // the longest step, twice
    EXPECT_LT(distance(underMouse(place), target), 5);
    turnWheel(place, -2);
    EXPECT_GT(distance(camera().position, target), start * 0.9f);
}

TEST_F(MouseTest, WheelThatNeverStopsEndsNearTheStation)
{
    const vrk::visual::ViewBounds bounds = vrk::visual::ViewBounds::OfScene();
    const QPoint place = emptyPlace();
    for (const int units : {-120 * 1000, 120 * 1000})
        for (int i = 0; i < 8; ++i) {
            QWheelEvent event(place, view().mapToGlobal(place), {}, {0, units}, Qt::NoButton, Qt::NoModifier,
                              Qt::NoScrollPhase, false);
            QApplication::sendEvent(&view(), &event);
            view().drain();
            const auto way = vrk::rob::Posd(camera().position) - bounds.getMiddle();
            EXPECT_LE(std::max({std::abs(way.x), std::abs(way.y), std::abs(way.z)}), bounds.getRoom() * 1.001);
            EXPECT_TRUE(bounds.isInView(Camera::Get()->getSnapshot(), vrk::rob::Posed(camera())));
        }
    settle();
}

TEST_F(MouseTest, PartsOfANotchWaitForTheWhole)
{
    const QPoint place = placeOf("Pedestal");
    const Posef before = camera();
    const auto turn = [&](int units) {
        QWheelEvent event(place, view().mapToGlobal(place), {}, {0, units}, Qt::NoButton, Qt::NoModifier,
                          Qt::NoScrollPhase, false);
        QApplication::sendEvent(&view(), &event);
        view().drain();
    };

    turn(40);
    turn(40);
    expectStill(before);
    turn(40);

    EXPECT_GT(distance(camera().position, before.position), 10);
}

TEST_F(MouseTest, DoubleClickFliesToTheThingAndSelectsIt)
{
    const unsigned cabinet = thing("Controller");
    ASSERT_NE(cabinet, 0u);
    const Posef wanted = Scene::Get()->getVisualFocusPose(cabinet);
    const QPoint place = placeOf("Controller");

    moveTo(place);
    clickLeft();
    clickLeft();

    EXPECT_TRUE(waitFor([] { return window().getFlight().isFlying(); }));
    EXPECT_TRUE(waitFor([] { return !window().getFlight().isFlying(); }));
    settle();
    EXPECT_LT(distance(camera().position, wanted.position), 1);
    EXPECT_THAT(state().getSelected(), ElementsAre(cabinet));
}

TEST_F(MouseTest, DoubleClickInEmptySpaceStaysWhereItIs)
{
    const Posef before = camera();

    moveTo(emptyPlace());
    clickLeft();
    clickLeft();
    settle();

    EXPECT_FALSE(window().getFlight().isFlying());
    expectStill(before);
}

TEST_F(MouseTest, PressStopsTheFlight)
{
    moveTo(emptyPlace());
    typeKey("5");
    ASSERT_TRUE(waitFor([] { return window().getFlight().isFlying(); }));

    pressButton(2);

    EXPECT_TRUE(waitFor([] { return !window().getFlight().isFlying(); }));
    releaseButton(2);
}

// Click and drag

TEST_F(MouseTest, SmallMoveBetweenPressAndReleaseIsAClick)
{
    const QPoint place = placeOf("Pedestal");
    moveTo(place);
    pressButton(1);
    moveTo(place + QPoint(3, 2)); // less than the four pixels of the radius

    releaseButton(1);

    EXPECT_TRUE(waitFor([] { return !state().getSelected().empty(); }));
    EXPECT_THAT(state().getSelected(), ElementsAre(thing("Pedestal")));
}

TEST_F(MouseTest, SmallMoveOfTheMiddleButtonLeavesTheCamera)
{
    const Posef before = camera();
    const QPoint place = placeOf("Pedestal");

    drag(2, place, place + QPoint(2, 2));

    expectStill(before);
}

TEST_F(MouseTest, DragThatComesBackIsNoClick)
{
    const QPoint place = placeOf("Pedestal");
    moveTo(place);
    pressButton(1);
    moveTo(place + QPoint(30, 0));
    moveTo(place);

    releaseButton(1);
    settle();

    EXPECT_THAT(state().getSelected(), IsEmpty());
}

TEST_F(MouseTest, SecondButtonDuringADragIsPassedOver)
{
    const QPoint place = placeOf("Pedestal");
    moveTo(place);
    pressButton(2);
    moveTo(place + QPoint(20, 0));

    pressButton(1);
    releaseButton(1);
    moveTo(place + QPoint(40, 0));

    EXPECT_TRUE(mouse().isDragging());
    releaseButton(2);
    EXPECT_TRUE(waitFor([] { return !mouse().isDragging(); }));
    EXPECT_THAT(state().getSelected(), IsEmpty());
}

// Selection

TEST_F(MouseTest, ClickSelectsThePartThatTheBodyBelongsTo)
{
    clickAt(placeOf("Gear unit"));

    EXPECT_THAT(state().getSelected(), ElementsAre(thing("Gear unit")));
    EXPECT_THAT(Scene::Get()->getSelectedVisuals(), ElementsAre(thing("Gear unit")));
    settle();
    shoot("clicked");
}

TEST_F(MouseTest, ClickOnALinkSelectsTheWholeRobot)
{
    const auto& rows = state().getTree().getRows();
    const auto robot = std::ranges::find(rows, vrk::VisualType::Manipulator, &StationTree::Row::kind);
    ASSERT_NE(robot, rows.end());

    clickAt(placeOf(robot->name));

    EXPECT_THAT(state().getSelected(), ElementsAre(robot->id));
}

TEST_F(MouseTest, ClickElsewhereSelectsThatAlone)
{
    clickAt(placeOf("Pedestal"));
    clickAt(placeOf("Controller"));

    EXPECT_THAT(state().getSelected(), ElementsAre(thing("Controller")));
}

TEST_F(MouseTest, CtrlClickAddsAndTakesOut)
{
    clickAt(placeOf("Pedestal"));
    const HeldKey control("Control_L");

    clickAt(placeOf("Controller"));
    EXPECT_THAT(state().getSelected(), ElementsAre(thing("Pedestal"), thing("Controller")));
    clickAt(placeOf("Pedestal"));

    EXPECT_THAT(state().getSelected(), ElementsAre(thing("Controller")));
}

TEST_F(MouseTest, ClickInEmptySpaceClearsAndWithCtrlDoesNot)
{
    clickAt(placeOf("Pedestal"));
    {
        const HeldKey control("Control_L");
        clickAt(emptyPlace());
    }
    EXPECT_THAT(state().getSelected(), ElementsAre(thing("Pedestal")));

    clickAt(emptyPlace() + QPoint(20, 0)); // far enough for no double click

    EXPECT_THAT(state().getSelected(), IsEmpty());
}

TEST_F(MouseTest, RightClickDoesNothing)
{
    clickAt(placeOf("Pedestal"), 3);

    EXPECT_THAT(state().getSelected(), IsEmpty());
}

TEST_F(MouseTest, AltClickSelectsTheFaceAndAgainTakesItOut)
{
    const QPoint place = placeOf("Controller");
    const auto face = faceAt(place);
    const HeldKey alt("Alt_L");

    clickAt(place);
    EXPECT_TRUE(isSelectedFace(face));
    EXPECT_THAT(state().getSelected(), IsEmpty());
    moveTo(place + QPoint(40, 0));
    clickAt(place);

    EXPECT_FALSE(state().isFaceSelected(face.first, face.second));
    EXPECT_FALSE(state().isAnySelected());
}

/// How many pixels are near to this colour.
int pixelsLike(const QImage& picture, const QColor& color)
{
    int count = 0;
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x) {
            const QColor pixel = picture.pixelColor(x, y);
            // By hue, as light makes a face brighter and darker.
            if (pixel.hsvSaturation() > 100 && std::abs(pixel.hsvHue() - color.hsvHue()) < 8)
                ++count;
        }
    return count;
}

TEST_F(MouseTest, BaseAndSideFaceHaveTheirColours)
{
    const QPoint base = placeOf("Controller"), side = placeOf("Measuring bench");
    leaveView();
    settle();
    const QImage before = seen();
    {
        const HeldKey alt("Alt_L");
        clickAt(base);
        const HeldKey shift("Shift_L");
        clickAt(side);
    }
    leaveView();
    settle();

    const QImage after = seen();
    shoot("faces");

    for (const char* color : {"#10C279", "#0D8DDF"})
        EXPECT_GT(pixelsLike(after, color), pixelsLike(before, color) + 100) << color;
}

TEST_F(MouseTest, EscapeClearsThingsAndFaces)
{
    clickAt(placeOf("Pedestal"));
    const QPoint place = placeOf("Controller");
    const auto face = faceAt(place);
    {
        const HeldKey alt("Alt_L");
        clickAt(place);
    }
    ASSERT_TRUE(isSelectedFace(face));

    typeKey("Escape");

    EXPECT_TRUE(waitFor([] { return !state().isAnySelected(); }));
    EXPECT_FALSE(isSelectedFace(face));
}

TEST_F(MouseTest, EscapeClearsFacesAlone)
{
    {
        const HeldKey alt("Alt_L");
        clickAt(placeOf("Controller"));
    }
    ASSERT_TRUE(state().isAnySelected());

    typeKey("Escape");

    EXPECT_TRUE(waitFor([] { return !state().isAnySelected(); }));
}

TEST_F(MouseTest, AltClickOnWhatHasNoFacesDoesNothing)
{
    const HeldKey alt("Alt_L");

    clickAt(emptyPlace());

    EXPECT_FALSE(state().isAnySelected());
}

// The second style

TEST_F(MouseTest, LeftDragOrbitsAnywhereInTheSecondStyle)
{
    window().getSettings().setMouseStyle(Settings::MouseStyle::OrbitWithLeft);
    const QPoint place = placeOf("Pedestal");
    const Posf about = underMouse(place);
    const Posef before = camera();

    drag(1, place, place + QPoint(60, 10));

    expectOrbit(before, about);
    EXPECT_THAT(state().getSelected(), IsEmpty());
}

TEST_F(MouseTest, RightDragPansInTheSecondStyleOnly)
{
    const QPoint place = placeOf("Pedestal");
    const Posef before = camera();
    drag(3, place, place + QPoint(60, 10));
    expectStill(before);

    window().getSettings().setMouseStyle(Settings::MouseStyle::OrbitWithLeft);
    drag(3, place, place + QPoint(60, 10));

    expectPan(before);
}

TEST_F(MouseTest, ClickSelectsInTheSecondStyleToo)
{
    window().getSettings().setMouseStyle(Settings::MouseStyle::OrbitWithLeft);

    clickAt(placeOf("Pedestal"));

    EXPECT_THAT(state().getSelected(), ElementsAre(thing("Pedestal")));
}

} // namespace
} // namespace vrkview::test
