#include "canvas/MoveTool.h"

#include "CrateFixture.h"
#include "FakeInput.h"
#include "edit/History.h"
#include "edit/ModelPlaces.h"

#include "selection/VisualSelection.h"
#include "selection/pick/PickQuery.h"
#include "visual/Visual.h"

#include <Ogre.h>

#include <gmock/gmock.h>

#include <cmath>

namespace vrkview::test {
namespace {

using vrk::rob::Posd;
using vrk::rob::Posed;
using vrk::visual::DragAxes;
using vrk::visual::DragHandle;
using Handle = DragHandle::HandleType;

constexpr double degrees = 3.14159265358979 / 180;

/// A crate above the station, selected, with the handle on it; the view from the front, right and above.
class MoveToolTest : public WithCrates<> {
protected:
    void SetUp() override
    {
        WithCrates::SetUp();
        crate =
            addCrate("Crate", Posed(Posd(-1200, -1200, 1300), vrk::rob::Rotationd(std::cos(0.3), 0, 0, std::sin(0.3))));
        before = poseOfThing(crate);
        steps = history().count();
        state().selectVisuals({crate});
        mover().setOn(true);
        settle();
    }
    void TearDown() override
    {
        mover().cancel();
        mover().setAxes(DragAxes::Local);
        mover().setOn(false);
        while (history().count() > steps && history().canUndo() && poseOfThing(crate) != before)
            history().undo();
        settle();
        WithCrates::TearDown();
    }
    static MoveTool& mover() { return window().getMover(); }
    static History& history() { return state().getHistory(); }
    /// A place where the mouse is on this piece of the handle.
    static QPoint placeOf(Handle wanted)
    {
        view().drain();
        vrk::selection::VisualSelection::Get()->update();
        vrk::selection::PickQuery query;
        query.camera = vrk::selection::PickCamera::Main(view().devicePixelRatioF());
        query.radius = 1;
        std::vector<QPoint> found;
        for (int y = 0; y < view().height(); y += 5)
            for (int x = 0; x < view().width(); x += 5) {
                query.x = inPixels({x, y}).x();
                query.y = inPixels({x, y}).y();
                const auto best = query.askBest();
                if (best && DragHandle::Get()->getHandleType(best->visual) == wanted)
                    found.emplace_back(x, y);
            }
        EXPECT_FALSE(found.empty()) << "the handle is not to be seen";
        return found.empty() ? QPoint() : found[found.size() / 2];
    }
    double movedAlong(unsigned axis) const
    {
        const vrk::rob::Vec3d way = poseOfThing(crate).position - before.position;
        return way.dot(vrk::rob::Vec3d(vrk::visual::dragDirection(before, axis, mover().getAxes())));
    }
    double movedInAll() const { return (poseOfThing(crate).position - before.position).length(); }
    /// Presses on the handle and moves the mouse, without a release.
    static void dragBy(const QPoint& from, const QPoint& way)
    {
        moveTo(from);
        pressButton(1);
        ASSERT_TRUE(waitFor([] { return mover().isDragging(); }));
        for (int i = 1; i <= 4; ++i)
            moveTo(from + way * i / 4);
    }
    static void release()
    {
        releaseButton(1);
        EXPECT_TRUE(waitFor([] { return !mover().isDragging(); }));
        settle();
    }

    unsigned crate = 0;
    Posed before;
    int steps = 0;
};

TEST_F(MoveToolTest, KeyPutsTheHandleOnWhatIsSelectedAndTakesItOff)
{
    EXPECT_EQ(mover().getThing(), crate);
    EXPECT_TRUE(DragHandle::Get()->getSceneNode()->isInSceneGraph());
    shoot("move-handle");

    typeKey("m");
    EXPECT_TRUE(waitFor([] { return !mover().isOn(); }));
    settle();
    EXPECT_FALSE(DragHandle::Get()->getSceneNode()->isInSceneGraph());
    typeKey("m");
    EXPECT_TRUE(waitFor([] { return mover().isOn(); }));

    state().clear();
    settle();
    EXPECT_EQ(mover().getThing(), 0u);
    EXPECT_FALSE(DragHandle::Get()->getSceneNode()->isInSceneGraph()) << "nothing is selected";
}

TEST_F(MoveToolTest, ArrowMovesTheThingAlongItselfAndTheDragIsOneStep)
{
    const QPoint arrow = placeOf(Handle::Z);

    dragBy(arrow, {0, -60});
    EXPECT_GT(movedAlong(2), 20);
    shoot("move-drag");
    release();

    EXPECT_NEAR(movedInAll(), movedAlong(2), 1e-6);
    EXPECT_EQ(poseOfThing(crate).orientation, before.orientation);
    EXPECT_EQ(history().count(), steps + 1);
    history().undo();
    EXPECT_EQ(poseOfThing(crate), before);
}

TEST_F(MoveToolTest, HandleFollowsTheThingWhichGoesAsFarAsTheMouse)
{
    const QPoint arrow = placeOf(Handle::Z);
    dragBy(arrow, {0, 40});
    release();

    const vrk::rob::Posf handle = DragHandle::Get()->getWorldPosition();
    EXPECT_NEAR(handle.z, poseOfThing(crate).position.z, 1e-2);
    const QPointF way = onScreen(poseOfThing(crate).position) - onScreen(before.position);
    EXPECT_NEAR(way.y(), 40, 3) << "as far as the mouse";
}

TEST_F(MoveToolTest, RingTurnsTheThingAboutItsAxis)
{
    const QPoint ring = placeOf(Handle::Yaw);

    dragBy(ring, {50, 0});
    release();

    const Posed turned = before.inverse() * poseOfThing(crate);
    EXPECT_NEAR(turned.position.length(), 0, 1e-9);
    EXPECT_NEAR(turned.orientation.x, 0, 1e-9);
    EXPECT_NEAR(turned.orientation.y, 0, 1e-9);
    EXPECT_GT(std::abs(turned.orientation.z), std::sin(1 * degrees));
    EXPECT_EQ(history().count(), steps + 1);
}

TEST_F(MoveToolTest, ControlSnapsToWholeSteps)
{
    const QPoint arrow = placeOf(Handle::Z);
    const HeldKey control("Control_L");

    dragBy(arrow, {3, -47});
    release();

    const double way = movedAlong(2);
    EXPECT_GT(way, 1);
    EXPECT_NEAR(way, 5 * std::round(way / 5), 1e-6);
}

TEST_F(MoveToolTest, EscapeTakesTheDragBackAndLeavesNoStep)
{
    const bool wasSaved = history().isSaved();
    dragBy(placeOf(Handle::Z), {0, -60});
    ASSERT_GT(movedInAll(), 20);

    typeKey("Escape");

    ASSERT_TRUE(waitFor([] { return !mover().isDragging(); }));
    EXPECT_EQ(poseOfThing(crate), before);
    EXPECT_EQ(history().count(), steps);
    EXPECT_EQ(history().isSaved(), wasSaved);
    EXPECT_TRUE(state().isSelected(crate)) << "the key was for the drag";
    releaseButton(1);
    settle();
    EXPECT_EQ(poseOfThing(crate), before);
}

TEST_F(MoveToolTest, AxesOfTheWorldAreAKeyAway)
{
    typeKey("x");
    ASSERT_TRUE(waitFor([] { return mover().getAxes() == DragAxes::World; }));
    settle();
    const vrk::rob::Posef handle = DragHandle::Get()->getWorldPose();
    EXPECT_NEAR(handle.orientation.w, 1, 1e-6);

    dragBy(placeOf(Handle::X), {40, 0});
    release();

    const vrk::rob::Vec3d way = poseOfThing(crate).position - before.position;
    EXPECT_GT(std::abs(way.x), 5);
    EXPECT_NEAR(way.y, 0, 1e-6);
    EXPECT_NEAR(way.z, 0, 1e-6);
}

TEST_F(MoveToolTest, ThingThatGoesUnderTheHandleEndsTheDrag)
{
    dragBy(placeOf(Handle::Z), {0, -40});

    history().undo(); // the place
    state().clear();

    EXPECT_FALSE(mover().isDragging());
    EXPECT_EQ(mover().getThing(), 0u);
    moveTo(view().rect().center());
    releaseButton(1);
    settle();
    EXPECT_FALSE(DragHandle::Get()->getSceneNode()->isInSceneGraph());
}

TEST_F(MoveToolTest, BesideTheHandleTheMouseDoesAsEver)
{
    const QPoint controller = MouseFixture::placeOf("Controller");

    clickAt(controller);

    EXPECT_TRUE(state().isSelected(thing("Controller")));
    EXPECT_EQ(mover().getThing(), thing("Controller")) << "the handle goes over to it";
}

} // namespace
} // namespace vrkview::test
