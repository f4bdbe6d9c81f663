#include "canvas/MoveTool.h"

#include "CrateFixture.h"
#include "FakeInput.h"
#include "canvas/DrawMode.h"
#include "edit/Attaching.h"
#include "edit/History.h"
#include "edit/ModelPlaces.h"
#include "edit/RemoveThings.h"

#include "support/ProcessorTime.h"

#include "platform/broker/SignalBroker.h"
#include "platform/layout/Assembly.h"
#include "platform/layout/Frame.h"
#include "platform/layout/Mechanism.h"
#include "platform/layout/PointCloud.h"
#include "platform/task/Instruction.h"
#include "platform/task/Path.h"
#include "platform/task/Task.h"
#include "task/MoveInstructionVisual.h"
#include "view/Camera.h"
#include "visual/Visual.h"

#include <Ogre.h>

#include <gmock/gmock.h>

#include <QAction>
#include <QDockWidget>

#include <algorithm>
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
        // Each drag draws some frames, and a small picture without edges and outlines is drawn quickly.
        for (QDockWidget* dock : window().findChildren<QDockWidget*>())
            dock->hide();
        window().resize(640, 560);
        state().setDrawMode(*findDrawMode("shaded"));
        WithCrates::SetUp();
        crate =
            addCrate("Crate", Posed(Posd(-1200, -1200, 1300), vrk::rob::Rotationd(std::cos(0.3), 0, 0, std::sin(0.3))));
        before = poseOfThing(crate);
        history().forget();
        state().selectVisuals({crate});
        mover().setOn(true);
        settle();
    }
    void TearDown() override
    {
        mover().cancel();
        mover().setAxes(DragAxes::Local);
        mover().setOn(false);
        while (history().canUndo())
            history().undo();
        history().forget();
        settle();
        WithCrates::TearDown();
    }
    static MoveTool& mover() { return window().getMover(); }
    static History& history() { return state().getHistory(); }
    /// With nothing under it and beside it.
    static QPoint freePlace()
    {
        for (int y = view().height() - 40; y > 40; y -= 20)
            for (int x = view().width() - 40; x > 40; x -= 20)
                if (!pickedAt({x, y}) && !pickedAt({x + 10, y + 10}))
                    return {x, y};
        ADD_FAILURE() << "the view is full";
        return {};
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

    static void typeKeys(std::initializer_list<const char*> names)
    {
        for (const char* name : names)
            typeKey(name);
    }
    /// Keeps what is told last for as long as the result lives.
    static std::unique_ptr<QObject> connectText(QString& told)
    {
        auto scope = std::make_unique<QObject>();
        QObject::connect(&mover(), &MoveTool::textChanged, scope.get(), [&told](const QString& text) { told = text; });
        return scope;
    }

    unsigned crate = 0;
    Posed before;
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

TEST_F(MoveToolTest, MouseOverTheHandleAsksOnceAndPostsNothingNew)
{
    const QPoint arrow = placeOnHandle(Handle::Z);
    int posts = 0, drains = 0;
    bool isHandling = false;
    const boost::signals2::scoped_connection posted = vrk::broker::SignalBroker::onUpdateScene([&posts] { ++posts; });
    QObject scope;
    QObject::connect(&mouse(), &Mouse::handling, &scope, [&] { isHandling = true; });
    QObject::connect(&mouse(), &Mouse::handled, &scope, [&] { isHandling = false; });
    QObject::connect(&view(), &ViewWidget::drained, &scope, [&] { drains += isHandling ? 1 : 0; });

    moveTo(freePlace());
    settle();
    posts = drains = 0;
    moveTo(arrow);
    EXPECT_EQ(drains, 1);
    EXPECT_EQ(posts, 1) << "its colour";
    settle();
    posts = drains = 0;
    moveTo(arrow + QPoint(0, 1));
    moveTo(arrow);
    EXPECT_EQ(drains, 2);
    EXPECT_EQ(posts, 0);

    moveTo(freePlace());
    settle();
    posts = drains = 0;
    moveTo(freePlace() + QPoint(1, 0));
    EXPECT_EQ(drains, 1);
    EXPECT_EQ(posts, 0);
}

TEST_F(MoveToolTest, HandleUnderTheMouseIsShownAndNoLongerWhenTheMouseLeaves)
{
    const QPoint arrow = placeOnHandle(Handle::Z);
    const auto yellow = [] {
        settle();
        const QImage picture = seen();
        int count = 0;
        for (int y = 0; y < picture.height(); ++y)
            for (int x = 0; x < picture.width(); ++x) {
                const QColor color = picture.pixelColor(x, y);
                count += color.hue() > 40 && color.hue() < 55 && color.saturation() > 120 ? 1 : 0;
            }
        return count;
    };
    leaveView();
    const int usual = yellow();

    moveTo(arrow);
    EXPECT_GT(yellow(), usual + 100);
    leaveView();
    EXPECT_NEAR(yellow(), usual, 10);
}

TEST_F(MoveToolTest, ArrowMovesTheThingAlongItselfAndTheDragIsOneStep)
{
    const QPoint arrow = placeOnHandle(Handle::Z);

    dragBy(arrow, {0, -60});
    EXPECT_GT(movedAlong(2), 20);
    shoot("move-drag");
    release();

    EXPECT_NEAR(movedInAll(), movedAlong(2), 1e-6);
    EXPECT_EQ(poseOfThing(crate).orientation, before.orientation);
    EXPECT_EQ(history().count(), 1);
    history().undo();
    EXPECT_EQ(poseOfThing(crate), before);
}

TEST_F(MoveToolTest, HandleFollowsTheThingWhichGoesAsFarAsTheMouse)
{
    const QPoint arrow = placeOnHandle(Handle::Z);
    dragBy(arrow, {0, 40});
    release();

    const vrk::rob::Posf handle = DragHandle::Get()->getWorldPosition();
    EXPECT_NEAR(handle.z, poseOfThing(crate).position.z, 1e-2);
    const QPointF way = onScreen(poseOfThing(crate).position) - onScreen(before.position);
    EXPECT_NEAR(way.y(), 40, 3) << "as far as the mouse";
}

TEST_F(MoveToolTest, RingTurnsTheThingAboutItsAxis)
{
    const QPoint ring = placeOnHandle(Handle::Yaw);

    dragBy(ring, {50, 0});
    settle();
    shoot("move-ring");
    release();

    const Posed turned = before.inverse() * poseOfThing(crate);
    EXPECT_NEAR(turned.position.length(), 0, 1e-9);
    EXPECT_NEAR(turned.orientation.x, 0, 1e-9);
    EXPECT_NEAR(turned.orientation.y, 0, 1e-9);
    EXPECT_GT(std::abs(turned.orientation.z), std::sin(1 * degrees));
    EXPECT_EQ(history().count(), 1);
}

TEST_F(MoveToolTest, ControlSnapsToWholeSteps)
{
    const QPoint arrow = placeOnHandle(Handle::Z);
    const HeldKey control("Control_L");

    dragBy(arrow, {3, -47});
    release();

    const double way = movedAlong(2);
    EXPECT_GT(way, 1);
    EXPECT_NEAR(way, 5 * std::round(way / 5), 1e-6);
}

TEST_F(MoveToolTest, StepsAreChosenInTheMenuAndKept)
{
    const auto choose = [](const char* text) {
        for (QAction* action : window().findChildren<QAction*>())
            if (action->text() == text)
                return action->trigger();
        FAIL() << "no command is called " << text;
    };
    choose("10 mm");
    choose("15°");
    EXPECT_EQ(mover().getSteps(), (MoveSteps{10, 15}));
    EXPECT_EQ(window().getSettings().moveSteps(), (MoveSteps{10, 15}));

    {
        const HeldKey control("Control_L");
        dragBy(placeOnHandle(Handle::Z), {3, -47});
        release();
        const double way = movedAlong(2);
        EXPECT_GT(way, 1);
        EXPECT_NEAR(way, 10 * std::round(way / 10), 1e-6);
        dragBy(placeOnHandle(Handle::Yaw), {70, 0});
        release();
    }
    const Posed turned = before.inverse() * poseOfThing(crate);
    const double angle = 2 * std::atan2(turned.orientation.z, turned.orientation.w) / degrees;
    EXPECT_GT(std::abs(angle), 1);
    EXPECT_NEAR(angle, 15 * std::round(angle / 15), 1e-6);
    choose("5 mm");
    choose("5°");
    EXPECT_EQ(mover().getSteps(), MoveSteps());
}

TEST_F(MoveToolTest, EscapeTakesTheDragBackAndLeavesNoStep)
{
    const bool wasSaved = history().isSaved();
    dragBy(placeOnHandle(Handle::Z), {0, -60});
    ASSERT_GT(movedInAll(), 20);

    typeKey("Escape");

    ASSERT_TRUE(waitFor([] { return !mover().isDragging(); }));
    EXPECT_EQ(poseOfThing(crate), before);
    EXPECT_EQ(history().count(), 0);
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
    shoot("move-world-axes");

    dragBy(placeOnHandle(Handle::X), {40, 0});
    release();

    const vrk::rob::Vec3d way = poseOfThing(crate).position - before.position;
    EXPECT_GT(std::abs(way.x), 5);
    EXPECT_NEAR(way.y, 0, 1e-6);
    EXPECT_NEAR(way.z, 0, 1e-6);
}

TEST_F(MoveToolTest, OtherAxesInADragTakeItBackAndGoOnFromThere)
{
    const QPoint from = placeOnHandle(Handle::X), there = from + QPoint(60, 30);
    dragBy(from, there - from);
    ASSERT_GT(movedInAll(), 20);

    typeKey("x");
    ASSERT_TRUE(waitFor([] { return mover().getAxes() == DragAxes::World; }));
    EXPECT_TRUE(mover().isDragging());
    EXPECT_EQ(poseOfThing(crate), before);
    settle();
    EXPECT_NEAR(DragHandle::Get()->getWorldPose().orientation.w, 1, 1e-6);
    moveTo(there + QPoint(1, 0));
    EXPECT_LT(movedInAll(), 15) << "as far as the mouse went since";
    moveTo(there + QPoint(40, 0));
    release();

    const vrk::rob::Vec3d way = poseOfThing(crate).position - before.position;
    EXPECT_GT(std::abs(way.x), 20);
    EXPECT_EQ(way.y, 0);
    EXPECT_EQ(way.z, 0);
    EXPECT_EQ(history().count(), 1);
    history().undo();
    EXPECT_EQ(poseOfThing(crate), before);
}

TEST_F(MoveToolTest, ViewThatChangesInADragMovesNothing)
{
    const QPoint from = placeOnHandle(Handle::Z), there = from + QPoint(0, -40);
    dragBy(from, there - from);
    const Posed dragged = poseOfThing(crate);

    const vrk::rob::Posef eye = camera();
    vrk::visual::Camera::Get()->setWorldPose(eye * vrk::rob::Posef(vrk::rob::Posf(150, 200, -900)));
    settle();
    EXPECT_EQ(poseOfThing(crate), dragged);
    moveTo(there + QPoint(1, 0));
    EXPECT_LT((poseOfThing(crate).position - dragged.position).length(), 10);
    release();
}

// What goes while it is dragged

TEST_F(MoveToolTest, DragOfWhatIsNoLongerSelectedEnds)
{
    dragBy(placeOnHandle(Handle::Z), {0, -40});

    state().clear();

    EXPECT_FALSE(mover().isDragging());
    EXPECT_EQ(mover().getThing(), 0u);
    moveTo(view().rect().center());
    releaseButton(1);
    settle();
    EXPECT_FALSE(DragHandle::Get()->getSceneNode()->isInSceneGraph());
}

TEST_F(MoveToolTest, DragOfWhatIsTakenBackEnds)
{
    const QPoint arrow = placeOnHandle(Handle::Z);
    dragBy(arrow, {0, -40});

    history().undo();

    EXPECT_FALSE(mover().isDragging());
    EXPECT_EQ(poseOfThing(crate), before);
    moveTo(arrow + QPoint(0, -80));
    EXPECT_EQ(poseOfThing(crate), before) << "the mouse that is still held has no more to say";
    releaseButton(1);
    settle();
    EXPECT_TRUE(history().canRedo());
}

TEST_F(MoveToolTest, DragOfWhatIsDeletedEndsAndTheHandleGoes)
{
    const QPoint arrow = placeOnHandle(Handle::Z);
    dragBy(arrow, {0, -40});
    const Posed dragged = poseOfThing(crate);

    history().push(std::make_unique<RemoveThings>(std::vector{crate}));

    EXPECT_FALSE(mover().isDragging());
    EXPECT_EQ(mover().getThing(), 0u);
    moveTo(arrow + QPoint(0, -80));
    releaseButton(1);
    settle();
    EXPECT_FALSE(DragHandle::Get()->getSceneNode()->isInSceneGraph());

    history().undo();
    EXPECT_EQ(poseOfThing(crate), dragged);
    state().selectVisuals({crate});
    settle();
    dragBy(placeOnHandle(Handle::Z), {0, 20});
    release();
    EXPECT_LT(movedAlong(2), (dragged.position - before.position).length()) << "it can be moved as before";
}

TEST_F(MoveToolTest, DragOfWhatLosesItsCarrierEndsWhereItWas)
{
    const unsigned carrier = addCrate("Carrier", Posed(Posd(-1200, -1200, 900)));
    history().push(std::make_unique<AttachThing>(crate, carrier));
    settle();
    const QPoint arrow = placeOnHandle(Handle::Z);
    dragBy(arrow, {0, -40});
    const Posed dragged = worldPoseOfThing(crate);

    history().push(std::make_unique<RemoveThings>(std::vector{carrier}));

    EXPECT_FALSE(mover().isDragging());
    moveTo(arrow + QPoint(0, -80));
    releaseButton(1);
    settle();
    EXPECT_NEAR((worldPoseOfThing(crate).position - dragged.position).length(), 0, 1e-9);
    EXPECT_EQ(mover().getThing(), crate);
    dragBy(placeOnHandle(Handle::Z), {0, 20});
    release();
    EXPECT_LT(worldPoseOfThing(crate).position.z, dragged.position.z - 5) << "it can be moved by itself";
}

TEST_F(MoveToolTest, DragOfWhatGoesWithoutAWordEnds)
{
    const QPoint arrow = placeOnHandle(Handle::Z);
    dragBy(arrow, {0, -40});
    const int steps = history().count();

    removeFromScene(crate);
    vrk::layout::Layout::inst().remove(crate);
    moveTo(arrow + QPoint(0, -80));

    EXPECT_FALSE(mover().isDragging());
    EXPECT_EQ(mover().getThing(), 0u);
    EXPECT_EQ(history().count(), steps);
    releaseButton(1);
    settle();
    EXPECT_FALSE(DragHandle::Get()->getSceneNode()->isInSceneGraph());
}

// Where the mouse says nothing

TEST_F(MoveToolTest, ArrowThatPointsAtTheViewerMovesNothingAndTellsWhy)
{
    const Posd eye(before.position.x, before.position.y, 4500); // which looks down
    vrk::visual::Camera::Get()->setWorldPose(vrk::rob::Posef(Posed(eye)));
    settle();
    QString told;
    const auto listening = connectText(told);

    const QPoint arrow = placeOnHandle(Handle::Z);
    dragBy(arrow, {0, 0});
    EXPECT_EQ(told, "the axis points at the viewer") << "before the mouse moves";
    moveTo(arrow + QPoint(2, 3));
    moveTo(arrow + QPoint(-3, 2));

    EXPECT_EQ(told, "the axis points at the viewer");
    EXPECT_EQ(poseOfThing(crate), before);
    release();
    EXPECT_EQ(told, "");
    EXPECT_EQ(history().count(), 0);
}

TEST_F(MoveToolTest, RingFromItsEdgeTurnsNothingAndTellsWhy)
{
    const vrk::rob::Rotationd upright(3.14159265358979 / 2, vrk::rob::Dird(1, 0, 0)); // which looks along y
    const Posd eye(before.position.x, before.position.y - 3000, before.position.z + 130);
    vrk::visual::Camera::Get()->setWorldPose(vrk::rob::Posef(Posed(eye, upright)));
    settle();
    QString told;
    const auto listening = connectText(told);

    dragBy(placeOnHandle(Handle::Yaw, 1), {30, 1});

    EXPECT_EQ(told, "the ring is seen from its edge");
    EXPECT_EQ(poseOfThing(crate), before);
    release();
    EXPECT_EQ(history().count(), 0);
}

TEST_F(MoveToolTest, ViewWithoutAreaTakesNoDragAndEndsNone)
{
    const QPoint arrow = placeOnHandle(Handle::Z);
    Ogre::Viewport& area = *vrk::visual::Camera::Get()->ogreCamera()->getViewport();
    // Given by hand: a frame of no area cannot be drawn, and so must not come in between.
    const auto send = [&](InputEvent::Kind kind, const QPoint& way) {
        const bool isMove = kind == InputEvent::Kind::Move;
        return mover().take({kind, inPixels(arrow + way), isMove ? Qt::NoButton : Qt::LeftButton,
                             isMove ? Qt::LeftButton : Qt::NoButton, Qt::NoModifier});
    };
    QString told;
    const auto listening = connectText(told);
    ASSERT_TRUE(send(InputEvent::Kind::Press, {}));
    ASSERT_TRUE(send(InputEvent::Kind::Move, {0, -40}));
    const Posed dragged = poseOfThing(crate);
    EXPECT_NE(dragged, before);

    area.setDimensions(0, 0, 0, 0);
    EXPECT_TRUE(send(InputEvent::Kind::Move, {0, -60}));
    EXPECT_EQ(told, "the view has no area to drag in");
    EXPECT_EQ(poseOfThing(crate), dragged);
    area.setDimensions(0, 0, 1, 1);
    EXPECT_TRUE(send(InputEvent::Kind::Move, {0, -61}));
    EXPECT_LT((poseOfThing(crate).position - dragged.position).length(), 10) << "it is taken hold of anew";
    EXPECT_TRUE(send(InputEvent::Kind::Release, {0, -61}));

    const Posed left = poseOfThing(crate);
    area.setDimensions(0, 0, 0, 0);
    EXPECT_FALSE(send(InputEvent::Kind::Press, {}));
    EXPECT_FALSE(send(InputEvent::Kind::Move, {0, -20}));
    area.setDimensions(0, 0, 1, 1);
    EXPECT_FALSE(mover().isDragging());
    EXPECT_EQ(poseOfThing(crate), left);
}

// Several things

TEST_F(MoveToolTest, SeveralThingsGoTogetherAndStayAsTheyLieToEachOther)
{
    const unsigned other = addCrate("Other", Posed(Posd(-700, -1500, 1300)));
    const Posed otherBefore = poseOfThing(other);
    const Posed between = before.inverse() * otherBefore;
    state().selectVisuals({other, crate});
    settle();
    EXPECT_EQ(mover().getThing(), crate) << "the handle stands on the last one";
    EXPECT_THAT(mover().getMoved(), testing::UnorderedElementsAre(crate, other));

    dragBy(placeOnHandle(Handle::Z), {0, -40});
    release();
    EXPECT_GT(movedAlong(2), 10);
    EXPECT_EQ(poseOfThing(other).orientation, otherBefore.orientation);
    dragBy(placeOnHandle(Handle::Yaw), {50, 0});
    release();

    const Posed after = poseOfThing(crate).inverse() * poseOfThing(other);
    EXPECT_NEAR((after.position - between.position).length(), 0, 1e-9);
    EXPECT_TRUE(after.rotation().isApprox(between.rotation()));
    EXPECT_GT((poseOfThing(other).position - otherBefore.position).length(), 20);
    EXPECT_EQ(history().count(), 2);
    EXPECT_EQ(history().undoText(), "Move 2 things");
    history().undo();
    history().undo();
    EXPECT_EQ(poseOfThing(crate), before);
    EXPECT_EQ(poseOfThing(other), otherBefore);
}

TEST_F(MoveToolTest, WhatHangsOnAThingGoesAlongAndOnceWhereItIsSelectedToo)
{
    const unsigned rider = addCrate("Rider", Posed(Posd(-1100, -1300, 1600)));
    history().push(std::make_unique<AttachThing>(rider, crate));
    const Posed onCrate = poseOfThing(rider);
    const Posd riderBefore = worldPoseOfThing(rider).position;
    for (const bool isSelected : {false, true}) {
        SCOPED_TRACE(isSelected);
        state().selectVisuals(isSelected ? std::vector{crate, rider} : std::vector{crate});
        settle();
        EXPECT_THAT(mover().getMoved(), testing::ElementsAre(crate));
        EXPECT_EQ(mover().getThing(), isSelected ? rider : crate);

        dragBy(placeOnHandle(Handle::Z), {0, -40});
        release();

        const double way = movedInAll();
        EXPECT_GT(way, 10);
        EXPECT_EQ(poseOfThing(rider), onCrate);
        EXPECT_NEAR((worldPoseOfThing(rider).position - riderBefore).length(), way, 1e-9);
        const vrk::rob::Posf seenAt = vrk::visual::Scene::GetVisual(rider)->getWorldPosition();
        EXPECT_NEAR(seenAt.z, worldPoseOfThing(rider).position.z, 1e-2);
        history().undo();
        EXPECT_EQ(poseOfThing(crate), before);
    }
}

// Kinds of things

const vrk::task::MoveInst& someMove()
{
    for (vrk::task::MoveInst* move :
         vrk::layout::Layout::inst().tasks.front()->getOwnPaths().front()->getMoveInstructions())
        if (move->isRobTargetInst() && move->getPrevMoveInstruction())
            return *move;
    throw std::logic_error("the demo has such a move");
}

struct KindCase {
    const char* name;
    std::function<unsigned()> select; // the id
};
class MoveToolOnKind : public MoveToolTest, public testing::WithParamInterface<KindCase> {
protected:
    static Posd seenAt(unsigned id)
    {
        using namespace vrk::visual;
        if (auto* move = dynamic_cast<MoveInstructionVisual*>(Scene::GetVisual(id)))
            return Posd(move->getTargetInWorld());
        return Posd(Scene::GetVisual(id)->getWorldPosition());
    }
};

TEST_P(MoveToolOnKind, IsMovedInModelAndViewAndTakenBack)
{
    const unsigned id = GetParam().select();
    state().selectVisuals({id});
    settle();
    const unsigned moved = mover().getThing();
    ASSERT_EQ(moved, movedFor(id));
    ASSERT_NE(moved, 0u);
    const Posed start = worldPoseOfThing(moved), onBase = poseOfThing(moved);
    const Posd wasSeen = seenAt(id);
    EXPECT_NEAR((wasSeen - start.position).length(), 0, 1e-2);
    lookAt(start.position);

    clickAt(placeOnHandle(Handle::Y));
    shoot((std::string("move-kind-") + GetParam().name).c_str());
    typeKeys({"3", "0", "Return"});
    ASSERT_TRUE(waitFor([] { return history().count() == 1; }));
    settle();

    const vrk::rob::Vec3d way = worldPoseOfThing(moved).position - start.position;
    EXPECT_NEAR((way - vrk::rob::Vec3d(vrk::visual::dragDirection(start, 1, DragAxes::Local)) * 30).length(), 0, 1e-9);
    EXPECT_NEAR((seenAt(id) - wasSeen - way).length(), 0, 1e-2);
    history().undo();
    settle();
    EXPECT_EQ(poseOfThing(moved), onBase);
    EXPECT_NEAR((seenAt(id) - wasSeen).length(), 0, 1e-6);
}

INSTANTIATE_TEST_SUITE_P(
    Table, MoveToolOnKind,
    testing::Values(KindCase{"Part",
                             [] {
                                 const auto& parts = vrk::layout::Layout::inst().parts;
                                 return (*std::ranges::find(parts, "Pallet",
                                                            [](const auto& part) { return part->getName(); }))
                                     ->getId();
                             }},
                    KindCase{"Assembly", [] { return vrk::layout::Layout::inst().assemblies.front()->getId(); }},
                    KindCase{"Robot", [] { return vrk::layout::Layout::inst().manipulators.front()->getId(); }},
                    KindCase{"Device", [] { return vrk::layout::Layout::inst().devices.front()->getId(); }},
                    KindCase{"ToolOnARobot", [] { return vrk::layout::Layout::inst().tools.front()->getId(); }},
                    KindCase{"Cloud", [] { return vrk::layout::Layout::inst().pointclouds.front()->getId(); }},
                    KindCase{"WorkObject", [] { return someMove().getWObjItemId(); }},
                    KindCase{"Target", [] { return someMove().getId(); }}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_F(MoveToolTest, FrameOnAThingIsMovedOnIt)
{
    auto frame = std::make_shared<vrk::layout::Frame>(demo::newId(), "corner", Posed(Posd(100, 50, 20)));
    frame->setParentId(crate);
    vrk::layout::Layout::inst().addFrame(frame);
    vrk::visual::Scene::Get()->addFrame(frame.get());
    view().drain();
    state().stationHasChanged();
    state().selectVisuals({frame->getId()});
    settle();
    ASSERT_EQ(mover().getThing(), frame->getId());

    clickAt(placeOnHandle(Handle::X));
    typeKeys({"5", "Return"});
    ASSERT_TRUE(waitFor([] { return history().count() == 1; }));
    settle();

    EXPECT_NEAR((poseOfThing(frame->getId()).position - Posd(105, 50, 20)).length(), 0, 1e-9);
    EXPECT_EQ(poseOfThing(crate), before);
    state().clear();
    history().undo();
    removeFromScene(frame->getId());
    vrk::layout::Layout::inst().remove(frame->getId());
}

TEST_F(MoveToolTest, WorkObjectTakesItsTargetsAlongAndATargetItsWays)
{
    using vrk::visual::MoveInstructionVisual;
    const vrk::task::MoveInst& move = someMove();
    const auto target = [&] {
        view().drain();
        return dynamic_cast<MoveInstructionVisual&>(*vrk::visual::Scene::GetVisual(move.getId())).getTargetInWorld();
    };
    const vrk::rob::Posf start = target();
    const unsigned fixture = move.getWObjItemId();

    history().push(std::make_unique<MoveThings>(fixture, poseOfThing(fixture) * Posed(Posd(0, 0, 40))));
    EXPECT_NEAR((target() - start).length(), 40, 1e-2);
    history().undo();
    EXPECT_NEAR((target() - start).length(), 0, 1e-2);

    const QImage without = seen();
    history().push(std::make_unique<MoveThings>(move.getTargetItemId(),
                                                poseOfThing(move.getTargetItemId()) * Posed(Posd(0, 0, -300))));
    EXPECT_NEAR((target() - start).length(), 300, 1e-2);
    settle();
    EXPECT_GT(differingShare(seen(), without), 0);
    history().undo();
    settle();
    EXPECT_EQ(differingShare(seen(), without), 0) << "lines and arrows are as they were";
}

TEST_F(MoveToolTest, PostureIsNotMoved)
{
    for (vrk::task::MoveInst* move :
         vrk::layout::Layout::inst().tasks.front()->getOwnPaths().front()->getMoveInstructions())
        if (move->isJointTargetInst()) {
            state().selectVisuals({move->getId()});
            EXPECT_EQ(mover().getThing(), 0u);
            return;
        }
    FAIL() << "the demo has such a move";
}

// Typed numbers

TEST_F(MoveToolTest, NumberTypedAfterADragMovesOnByExactlyThat)
{
    dragBy(placeOnHandle(Handle::Z), {0, -40});
    release();
    const double dragged = movedAlong(2);
    const vrk::rob::Posef eye = camera();
    QString told;
    const auto listening = connectText(told);

    typeKeys({"minus", "1", "2", "period", "5"});
    ASSERT_TRUE(waitFor([&] { return told.startsWith("-12.5"); })) << told.toStdString();
    EXPECT_TRUE(told.endsWith(" mm"));
    EXPECT_EQ(movedAlong(2), dragged) << "before Return nothing moves";
    shoot("move-typed");
    typeKeys({"Return"});
    ASSERT_TRUE(waitFor([&] { return told.isEmpty(); }));
    settle();

    EXPECT_NEAR(movedAlong(2), dragged - 12.5, 1e-9);
    EXPECT_NEAR(movedInAll(), std::abs(movedAlong(2)), 1e-9);
    EXPECT_EQ(camera(), eye) << "the digits were no views";
    EXPECT_EQ(history().count(), 2);
    history().undo();
    EXPECT_EQ(movedAlong(2), dragged);
}

TEST_F(MoveToolTest, NumberTypedInADragIsHowFarItGoesInAll)
{
    const QPoint arrow = placeOnHandle(Handle::X);
    dragBy(arrow, {40, 20});
    QString told;
    const auto listening = connectText(told);

    typeKeys({"1", "0", "5", "BackSpace"});
    ASSERT_TRUE(waitFor([&] { return told.startsWith("10"); }));
    const Posed dragged = poseOfThing(crate);
    moveTo(arrow + QPoint(70, 30));
    EXPECT_EQ(poseOfThing(crate), dragged) << "the number says how far, and not the mouse";
    EXPECT_TRUE(told.startsWith("10"));
    typeKeys({"KP_Enter"});
    ASSERT_TRUE(waitFor([] { return !mover().isDragging(); }));
    moveTo(arrow + QPoint(90, 30));
    releaseButton(1);
    settle();

    EXPECT_NEAR(movedAlong(0), 10, 1e-9);
    EXPECT_NEAR(movedInAll(), 10, 1e-9);
    EXPECT_EQ(history().count(), 1);
}

TEST_F(MoveToolTest, DegreesAreTypedForARing)
{
    clickAt(placeOnHandle(Handle::Yaw)); // without a drag, too
    EXPECT_EQ(history().count(), 0);
    EXPECT_EQ(mover().getChosen(), Handle::Yaw);

    typeKeys({"9", "0", "Return"});
    ASSERT_TRUE(waitFor([] { return history().count() == 1; }));

    const Posed turned = before.inverse() * poseOfThing(crate);
    EXPECT_NEAR(turned.position.length(), 0, 1e-9);
    EXPECT_NEAR(turned.orientation.w, std::cos(45 * degrees), 1e-12);
    EXPECT_NEAR(turned.orientation.z, std::sin(45 * degrees), 1e-12);
}

TEST_F(MoveToolTest, EscapeDropsTheNumberThenTheDragThenTheChoice)
{
    dragBy(placeOnHandle(Handle::Z), {0, -40});
    const Posed dragged = poseOfThing(crate);
    QString told;
    const auto listening = connectText(told);
    typeKeys({"7"});
    ASSERT_TRUE(waitFor([&] { return told.startsWith("7"); }));

    typeKey("Escape");
    ASSERT_TRUE(waitFor([&] { return told.isEmpty(); }));
    EXPECT_TRUE(mover().isDragging());
    EXPECT_EQ(poseOfThing(crate), dragged);
    typeKey("Escape");
    ASSERT_TRUE(waitFor([] { return !mover().isDragging(); }));
    EXPECT_EQ(poseOfThing(crate), before);
    EXPECT_EQ(mover().getChosen(), Handle::Z);
    typeKey("Escape");
    ASSERT_TRUE(waitFor([] { return mover().getChosen() == Handle::None; }));
    EXPECT_TRUE(state().isSelected(crate));
    releaseButton(1);
}

TEST_F(MoveToolTest, DigitsAreViewsWhereNoHandleIsChosen)
{
    clickAt(placeOnHandle(Handle::Z));
    ASSERT_EQ(mover().getChosen(), Handle::Z);
    clickAt(placeOf("Controller"));
    EXPECT_EQ(mover().getChosen(), Handle::None) << "the handle went over to another thing";
    const vrk::rob::Posef eye = camera();

    typeKeys({"1"});

    EXPECT_TRUE(waitFor([&] { return camera() != eye; }));
    window().getFlight().finish();
    settle();
    EXPECT_EQ(history().count(), 0);
}

TEST_F(MoveToolTest, PressBesideTheHandleChoosesNone)
{
    clickAt(placeOnHandle(Handle::Z));
    ASSERT_EQ(mover().getChosen(), Handle::Z);

    MouseFixture::drag(1, freePlace(), freePlace() + QPoint(10, 10)); // orbits

    EXPECT_EQ(mover().getChosen(), Handle::None);
    EXPECT_EQ(mover().getThing(), crate);
    EXPECT_FALSE(mover().type("1"));
}

TEST_F(MoveToolTest, KeysThatMakeNoNumberMoveNothing)
{
    clickAt(placeOnHandle(Handle::Z));

    for (const char* key : {"Return", "Backspace", "x", "", "12"})
        EXPECT_FALSE(mover().type(key)) << key;
    EXPECT_TRUE(mover().type("-"));
    EXPECT_TRUE(mover().type("Return"));
    EXPECT_TRUE(mover().type("."));
    EXPECT_TRUE(mover().type("Return"));
    EXPECT_TRUE(mover().type("0"));
    EXPECT_TRUE(mover().type("Return"));

    EXPECT_EQ(poseOfThing(crate), before);
    EXPECT_EQ(history().count(), 0);
}

// Snapping

/// Beside the crate a block and a drum, in view with it.
class MoveToolSnaps : public MoveToolTest {
protected:
    void SetUp() override
    {
        MoveToolTest::SetUp();
        block = addCrate("Block", blockPose);
        drum = addShape("Drum", drumPose, demo::cylinder({0, 0, 0}, {0, 0, 1}, 120, 250));
        lookAt(Posd(-1000, -1300, 1450));
        arrow = placeOnHandle(Handle::Z);
        listening = connectText(told);
    }
    /// Pixels that are nearly black or white, as signs are and neither the crate nor the handle.
    static int signAround(const QPoint& place)
    {
        const QImage picture = seen();
        int count = 0;
        for (int y = place.y() - 12; y <= place.y() + 12; ++y)
            for (int x = place.x() - 12; x <= place.x() + 12; ++x)
                if (picture.rect().contains(x, y)) {
                    const QColor color = picture.pixelColor(x, y);
                    count += std::abs(color.red() - color.blue()) < 40 && std::abs(color.red() - 130) > 50 ? 1 : 0;
                }
        return count;
    }
    Posd origin() const { return poseOfThing(crate).position; }

    const Posed blockPose{Posd(-650, -1300, 1300), vrk::rob::Rotationd(0.4, vrk::rob::Dird(0, 0, 1))};
    const Posed drumPose{Posd(-900, -1750, 1300)};
    unsigned block = 0, drum = 0;
    QPoint arrow;
    QString told;
    std::unique_ptr<QObject> listening;
};

struct SnapCase {
    const char* name;
    Posd mouse; // on the block, or on the drum
    bool isOnDrum;
    Posd goesTo;
    const char* told;
};
class MoveToolSnapsTo : public MoveToolSnaps, public testing::WithParamInterface<SnapCase> {};

TEST_P(MoveToolSnapsTo, WhatIsUnderTheMouse)
{
    const Posed& base = GetParam().isOnDrum ? drumPose : blockPose;
    {
        dragBy(arrow, {0, -5});
        const HeldKey v("v");
        ASSERT_TRUE(waitFor([] { return mover().isSnapping(); }));
        moveTo(onScreen(base * GetParam().mouse).toPoint());
        settle();
        shoot((std::string("move-snap-") + GetParam().name).c_str());
        EXPECT_NEAR((origin() - base * GetParam().goesTo).length(), 0, 1e-9);
        EXPECT_EQ(told.toStdString(), GetParam().told);
        EXPECT_GT(signAround(inPixels(onScreen(base * GetParam().goesTo).toPoint()).toPoint()), 40)
            << "its sign, over the crate";
        release();
    }

    EXPECT_NEAR((origin() - base * GetParam().goesTo).length(), 0, 1e-9);
    EXPECT_EQ(poseOfThing(crate).orientation, before.orientation);
    EXPECT_EQ(history().count(), 1);
    history().undo();
    EXPECT_EQ(poseOfThing(crate), before);
}

INSTANTIATE_TEST_SUITE_P(Table, MoveToolSnapsTo,
                         testing::Values(SnapCase{"Corner", Posd(150, -150, 300), false, Posd(150, -150, 300),
                                                  "to the corner of Block"},
                                         SnapCase{"EdgeMiddle", Posd(150, -90, 300), false, Posd(150, 0, 300),
                                                  "to the middle of an edge of Block"},
                                         SnapCase{"CircleCentre", Posd(0, -120, 250), true, Posd(0, 0, 250),
                                                  "to the centre of a circle of Drum"}),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_F(MoveToolSnaps, PlaceOfAFaceUnderTheMouseTakesTheOrigin)
{
    const QPoint mouse = onScreen(blockPose * Posd(20, -30, 300)).toPoint();
    dragBy(arrow, {0, -5});
    const HeldKey v("v");
    ASSERT_TRUE(waitFor([] { return mover().isSnapping(); }));

    moveTo(mouse);
    settle();
    shoot("move-snap-Face");

    EXPECT_NEAR(origin().z, 1600, 1e-3);
    const QPointF way = onScreen(origin()) - QPointF(mouse);
    EXPECT_LT(std::hypot(way.x(), way.y()), 0.6);
    EXPECT_EQ(told, "to the face of Block");
    release();
}

TEST_F(MoveToolSnaps, WithoutTheKeyTheDragGoesOnAlongTheArrow)
{
    dragBy(arrow, {0, -5});
    {
        const HeldKey v("v");
        ASSERT_TRUE(waitFor([] { return mover().isSnapping(); }));
        moveTo(onScreen(blockPose * Posd(150, -150, 300)).toPoint());
        EXPECT_TRUE(told.startsWith("to the corner"));
    }
    ASSERT_TRUE(waitFor([] { return !mover().isSnapping(); }));

    EXPECT_NEAR(movedInAll(), std::abs(movedAlong(2)), 1e-9) << "where the mouse drags it along the arrow";
    EXPECT_TRUE(told.endsWith(" mm")) << told.toStdString();
    release();
    EXPECT_EQ(history().count(), 1);
}

TEST_F(MoveToolSnaps, NeverToItselfNorToWhatHangsOnIt)
{
    const unsigned rider = addCrate("Rider", Posed(Posd(-1200, -1200, 1600)));
    history().push(std::make_unique<AttachThing>(rider, crate));
    settle();
    const auto under = [](const Posd& place, const std::vector<unsigned>& without) {
        const auto snap = snapPlaceAt(view(), state().getTree(), inPixels(onScreen(place).toPoint()), without);
        return snap ? snap->text : QString();
    };
    for (const Posd& own : {Posd(0, -150, 150), Posd(150, 0, 150)}) {
        const Posd onCrate = before * own, onRider = worldPoseOfThing(rider) * own;
        EXPECT_EQ(under(onCrate, {}), "face of Crate");
        EXPECT_EQ(under(onRider, {}), "face of Rider");
        EXPECT_FALSE(under(onCrate, {crate}).contains("Crate"));
        EXPECT_FALSE(under(onRider, {crate}).contains("Rider"));
    }
}

TEST_F(MoveToolSnaps, RingGoesOnTurning)
{
    const QPoint ring = placeOnHandle(Handle::Yaw);
    dragBy(ring, {20, 0});
    const HeldKey v("v");
    ASSERT_TRUE(waitFor([] { return mover().isSnapping(); }));

    moveTo(onScreen(blockPose * Posd(150, -150, 300)).toPoint());

    EXPECT_EQ(origin(), before.position);
    EXPECT_TRUE(told.endsWith("°")) << told.toStdString();
    release();
}

// Speed

TEST_F(MoveToolTest, MoveOfTheMouseIsDealtWithInAMillisecond)
{
    for (const unsigned thing : {crate, vrk::layout::Layout::inst().assemblies.front()->getId()}) {
        SCOPED_TRACE(nameOfThing(thing).toStdString());
        state().selectVisuals({thing});
        settle();
        lookAt(worldPoseOfThing(thing).position);
        const QPointF arrow = inPixels(placeOnHandle(Handle::Z));
        ASSERT_TRUE(mover().take({InputEvent::Kind::Press, arrow, Qt::LeftButton, {}, {}}));
        std::vector<double> seconds;
        for (int i = 1; i <= 51; ++i) {
            const InputEvent move{InputEvent::Kind::Move, arrow - QPointF(0, i), Qt::NoButton, Qt::LeftButton, {}};
            seconds.push_back(vrk::test::threadSecondsOf([&move] { mover().take(move); }));
            view().drain();
        }
        EXPECT_TRUE(history().canUndo());
        EXPECT_TRUE(mover().cancel());

        std::ranges::nth_element(seconds, seconds.begin() + 25);
        EXPECT_LT(seconds[25], 1e-3);
    }
}

TEST_F(MoveToolTest, BesideTheHandleTheMouseDoesAsEver)
{
    const QPoint controller = placeOf("Controller");

    clickAt(controller);

    EXPECT_TRUE(state().isSelected(thing("Controller")));
    EXPECT_EQ(mover().getThing(), thing("Controller")) << "the handle goes over to it";
}

} // namespace
} // namespace vrkview::test
