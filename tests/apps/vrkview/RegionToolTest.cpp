#include "canvas/RegionTool.h"

#include "FakeInput.h"
#include "MouseFixture.h"

#include "scene/Scene.h"
#include "scene/core/SceneCore.h"
#include "visual/PointCloudVisual.h"
#include "visual/VisualStateManager.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <thread>

namespace vrkview::test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using vrk::visual::Scene;
using vrk::visual::SceneCore;
using vrk::visual::VisualStateLayer;

class RegionToolTest : public MouseFixture {
protected:
    void TearDown() override
    {
        region().cancel(); // what is drawn
        region().setLassoOn(false);
        region().setForPointsOnly(false);
        MouseFixture::TearDown();
    }

    static RegionTool& region() { return window().getRegion(); }
    static bool isHighlighted(unsigned id)
    {
        return SceneCore::Get()->states->hasLayer(Scene::GetVisual(id), VisualStateLayer::Highlighted);
    }
    static void shiftDrag(const QPoint& from, const QPoint& to)
    {
        const HeldKey shift("Shift_L");
        drag(1, from, to);
    }
    static void typeWithShift(const char* name)
    {
        const HeldKey shift("Shift_L");
        typeKey(name);
    }
    static void switchLassoOn()
    {
        typeWithShift("l");
        ASSERT_TRUE(waitFor([] { return region().isLassoOn(); }));
    }
    static QPoint topLeft() { return {2, 2}; }
    static QPoint bottomRight() { return {view().width() - 3, view().height() - 3}; }
    /// With Shift held, so that a rectangle is drawn; the button stays down.
    static void pressAndDragOverAll()
    {
        moveTo(topLeft());
        pressButton(1);
        moveTo(bottomRight() / 2);
        moveTo(bottomRight());
        settle();
    }
    /// A patch around where a thing is seen, which lies within it.
    static std::array<QPoint, 2> patchOf(const char* name)
    {
        const QPoint place = placeOf(name);
        return {place - QPoint(6, 6), place + QPoint(6, 6)};
    }
    static unsigned scan()
    {
        const auto& rows = state().getTree().getRows();
        const auto found = std::ranges::find(rows, vrk::VisualType::PointCloud, &StationTree::Row::kind);
        return found == rows.end() ? 0 : found->id;
    }
};

TEST_F(RegionToolTest, RectangleToTheRightTakesWhatLiesWhollyInside)
{
    const auto [from, to] = patchOf("Pedestal");

    shiftDrag(from, to);
    EXPECT_THAT(state().getSelected(), IsEmpty());

    shiftDrag(topLeft(), bottomRight());
    EXPECT_THAT(state().getSelected(), Contains(thing("Pedestal")));
    EXPECT_THAT(state().getSelected(), Contains(thing("Gear unit")));
}

TEST_F(RegionToolTest, RectangleToTheLeftTakesWhatItTouches)
{
    const auto [from, to] = patchOf("Pedestal");

    shiftDrag(to, from);

    EXPECT_THAT(state().getSelected(), Contains(thing("Pedestal")));
    EXPECT_THAT(state().getSelected(), Not(Contains(thing("Controller"))));
}

TEST_F(RegionToolTest, RectangleReplacesTheSelectionAndOneAroundNothingClearsIt)
{
    clickAt(placeOf("Controller"));
    const auto [from, to] = patchOf("Pedestal");

    shiftDrag(to, from);
    EXPECT_THAT(state().getSelected(), Not(Contains(thing("Controller"))));

    shiftDrag(emptyPlace(), emptyPlace() + QPoint(12, 12));
    EXPECT_THAT(state().getSelected(), IsEmpty());
}

TEST_F(RegionToolTest, WithCtrlARectangleAddsAndThenTakesOut)
{
    clickAt(placeOf("Controller"));
    const auto [from, to] = patchOf("Pedestal");
    const HeldKey control("Control_L");

    shiftDrag(to, from);
    EXPECT_THAT(state().getSelected(), Contains(thing("Controller")));
    EXPECT_THAT(state().getSelected(), Contains(thing("Pedestal")));

    shiftDrag(to, from);
    EXPECT_THAT(state().getSelected(), ElementsAre(thing("Controller")));
}

TEST_F(RegionToolTest, RectangleLeavesTheCameraInBothMouseStyles)
{
    const vrk::rob::Posef before = camera();
    for (const auto style : {Settings::MouseStyle::OrbitWithMiddle, Settings::MouseStyle::OrbitWithLeft}) {
        window().getSettings().setMouseStyle(style);
        shiftDrag(emptyPlace(), emptyPlace() + QPoint(200, 100));
    }

    EXPECT_EQ(camera(), before);
}

TEST_F(RegionToolTest, WhatWouldBeSelectedIsHighlightedWhileTheRectangleIsDrawn)
{
    const auto [from, to] = patchOf("Pedestal");
    leaveView();
    settle();
    const QImage before = seen();
    const HeldKey shift("Shift_L");
    moveTo(to);
    pressButton(1);
    moveTo(from + QPoint(2, 2));
    moveTo(from);

    settle();
    EXPECT_TRUE(isHighlighted(thing("Pedestal")));
    EXPECT_FALSE(isHighlighted(thing("Controller")));
    EXPECT_THAT(state().getSelected(), IsEmpty());
    shoot("region-touching");
    releaseButton(1);
    settle();
    EXPECT_FALSE(isHighlighted(thing("Pedestal")));
    state().clear();
    leaveView();
    settle();
    EXPECT_EQ(differingShare(seen(), before), 0);
}

TEST_F(RegionToolTest, WhatWouldBeSelectedIsHighlightedHoweverLongOthersHaveTheProcessor)
{
    region().begin(RegionTool::Shape::Rectangle, inPixels(topLeft()), RegionTool::Effect::Replace);
    // Which the region waits for, as it would for its turn.
    Scene::Get()->addRenderTask([] { std::this_thread::sleep_for(std::chrono::milliseconds(100)); }, 0);

    region().follow(inPixels(bottomRight()));
    view().drain();

    EXPECT_TRUE(isHighlighted(thing("Gear unit")));
}

TEST_F(RegionToolTest, EscapeGivesUpWhatIsDrawn)
{
    leaveView();
    settle();
    const QImage before = seen();
    {
        const HeldKey shift("Shift_L");
        pressAndDragOverAll();
        shoot("region-inside");
        EXPECT_NE(differingShare(seen(), before), 0);
    }
    typeKey("Escape");
    EXPECT_TRUE(waitFor([] { return !region().isDrawing(); }));

    releaseButton(1);
    leaveView();
    settle();

    EXPECT_THAT(state().getSelected(), IsEmpty());
    EXPECT_EQ(differingShare(seen(), before), 0);
}

TEST_F(RegionToolTest, LassoDrawnFreehandTakesWhatItEncloses)
{
    switchLassoOn();
    const std::array corners = {topLeft(), QPoint(bottomRight().x(), 2), bottomRight(), QPoint(2, bottomRight().y())};
    moveTo(corners[0]);
    pressButton(1);
    for (const QPoint& corner : corners) {
        moveTo((corner + view().rect().center()) / 2 + (corner - view().rect().center()) / 4);
        moveTo(corner);
    }
    settle();
    shoot("region-lasso");
    releaseButton(1);

    EXPECT_TRUE(waitFor([] { return !state().getSelected().empty(); }));
    EXPECT_THAT(state().getSelected(), Contains(thing("Gear unit")));
    EXPECT_TRUE(region().isLassoOn()); // for the next one
    EXPECT_FALSE(region().isDrawing());
}

TEST_F(RegionToolTest, LassoOfCornersEndsWithReturn)
{
    switchLassoOn();
    clickAt(topLeft());
    clickAt({bottomRight().x(), 2});
    clickAt(view().rect().center()); // too far in
    typeKey("BackSpace");
    clickAt(bottomRight());
    clickAt({2, bottomRight().y()});
    EXPECT_THAT(state().getSelected(), IsEmpty());

    typeKey("Return");

    EXPECT_TRUE(waitFor([] { return !region().isDrawing(); }));
    EXPECT_THAT(state().getSelected(), Contains(thing("Gear unit")));
}

TEST_F(RegionToolTest, LassoOfCornersEndsWithADoubleClick)
{
    switchLassoOn();
    clickAt(topLeft());
    clickAt({bottomRight().x(), 2});
    moveTo(bottomRight());
    clickLeft();
    clickLeft();

    EXPECT_TRUE(waitFor([] { return !region().isDrawing(); }));
    EXPECT_FALSE(window().getFlight().isFlying());
}

TEST_F(RegionToolTest, LassoOfTwoCornersTakesNothing)
{
    clickAt(placeOf("Controller"));
    switchLassoOn();
    clickAt(topLeft());
    clickAt(bottomRight());

    typeKey("Return");

    EXPECT_TRUE(waitFor([] { return !region().isDrawing(); }));
    EXPECT_THAT(state().getSelected(), IsEmpty());
}

TEST_F(RegionToolTest, EscapeEndsTheLassoAfterWhatIsDrawn)
{
    switchLassoOn();
    clickAt(topLeft());
    ASSERT_TRUE(region().isDrawing());

    typeKey("Escape");
    EXPECT_TRUE(waitFor([] { return !region().isDrawing(); }));
    EXPECT_TRUE(region().isLassoOn());

    typeKey("Escape");
    EXPECT_TRUE(waitFor([] { return !region().isLassoOn(); }));
}

TEST_F(RegionToolTest, CloudThatLiesWhollyInsideIsSelectedWhole)
{
    ASSERT_NE(scan(), 0u);
    region().setForPointsOnly(true);

    shiftDrag(topLeft(), bottomRight());

    EXPECT_THAT(state().getSelected(), ElementsAre(scan()));
    EXPECT_THAT(state().getSelectedPoints(), IsEmpty());
}

TEST_F(RegionToolTest, CloudIsNeverHighlighted)
{
    ASSERT_NE(scan(), 0u); // it has no look for that, and would be drawn anew
    moveTo(placeOf("Scan of the bracket"));
    settle();
    EXPECT_FALSE(isHighlighted(scan()));
    EXPECT_FALSE(mouse().getHover().getText().isEmpty());

    const HeldKey shift("Shift_L");
    pressAndDragOverAll();
    EXPECT_TRUE(isHighlighted(thing("Gear unit")));
    EXPECT_FALSE(isHighlighted(scan()));
    releaseButton(1);
}

TEST_F(RegionToolTest, PartOfACloudIsASelectionOfPoints)
{
    ASSERT_NE(scan(), 0u);
    window().getFlight().flyTo(Scene::Get()->getVisualFocusPose(scan()));
    window().getFlight().finish();
    settle();
    typeWithShift("p");
    ASSERT_TRUE(waitFor([] { return region().isForPointsOnly(); }));
    const QPoint middle = view().rect().center();
    const std::size_t all = dynamic_cast<vrk::visual::PointCloudVisual*>(Scene::GetVisual(scan()))->getPoints().size();

    shiftDrag(topLeft(), {middle.x(), bottomRight().y()});
    const ViewState::CloudPoints left = state().getSelectedPoints();
    ASSERT_TRUE(left.contains(scan()));
    EXPECT_TRUE(std::ranges::is_sorted(left.at(scan())));
    EXPECT_THAT(state().getSelected(), IsEmpty());
    settle();
    shoot("region-points");
    {
        const HeldKey control("Control_L");
        shiftDrag({middle.x(), 2}, bottomRight());
    }

    const ViewState::CloudPoints both = state().getSelectedPoints();
    EXPECT_GT(both.at(scan()).size(), left.at(scan()).size());
    EXPECT_GE(both.at(scan()).size(), all * 9 / 10);
    {
        const HeldKey control("Control_L");
        shiftDrag({middle.x(), 2}, bottomRight());
    }
    EXPECT_EQ(state().getSelectedPoints(), left);
}

TEST_F(RegionToolTest, SelectionOfThingsAndOfPointsEndEachOther)
{
    state().selectPoints({{scan(), {1, 2, 3}}});
    settle();
    ASSERT_TRUE(state().getSelectedPoints().contains(scan()));
    EXPECT_THAT(state().getSelected(), IsEmpty());

    clickAt(placeOf("Pedestal"));
    EXPECT_THAT(state().getSelectedPoints(), IsEmpty());

    state().selectPoints({{scan(), {4}}, {thing("Pedestal"), {1}}, {4'000'000'000u, {1}}});
    settle();
    EXPECT_THAT(state().getSelected(), IsEmpty());
    EXPECT_EQ(state().getSelectedPoints(), (ViewState::CloudPoints{{scan(), {4}}}));
}

} // namespace
} // namespace vrkview::test
