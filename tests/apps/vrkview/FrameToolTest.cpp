#include "canvas/FrameTool.h"

#include "CrateFixture.h"
#include "FakeInput.h"
#include "StepsFixture.h"
#include "canvas/BodyEdge.h"
#include "canvas/MoveTool.h"
#include "canvas/RegionTool.h"
#include "edit/EditActions.h"
#include "edit/ModelPlaces.h"
#include "edit/MoveJoints.h"
#include "edit/MoveThings.h"

#include "support/TempFolder.h"

#include "platform/layout/Frame.h"
#include "platform/layout/Mechanism.h"
#include "platform/sdf/SdfManager.h"
#include "platform/station/StationFile.h"
#include "platform/task/DataItem.h"
#include "platform/task/Task.h"
#include "preview/marks/PickedMarks.h"
#include "preview/marks/PreviewVisualsHelper.h"

#include <gmock/gmock.h>

#include <array>

namespace vrkview::test {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using vrk::layout::Layout;
using vrk::rob::Dird;
using vrk::rob::Posd;
using vrk::rob::Posed;
using vrk::rob::Vec3d;
using vrk::visual::PreviewVisualsHelper;
using vrk::visual::Scene;
using Way = FrameTool::Way;

constexpr double exact = 1e-9;

/// Frames that are defined by clicks, on a crate above the station.
class FrameToolTest : public WithCrates<StepsFixture> {
protected:
    void SetUp() override
    {
        WithCrates::SetUp();
        crate = addCrate("Crate", demo::at(0, 0, 1900));
        history().noteSaved();
        stepsBefore = history().count();
        window().getMessageBar().tell("");
        window().getMessageBar().hide();
        settle();
    }
    void TearDown() override
    {
        tool().end();
        tool().setUse(FrameUse::Frame);
        state().clear();
        while (history().canUndo()) // ahead of the crates, on which frames may lie
            history().undo();
        WithCrates::TearDown();
    }

    static FrameTool& tool() { return window().getFramer(); }
    static const PreviewVisualsHelper& marks() { return *PreviewVisualsHelper::Get(); }
    static QPoint pixelOf(const Posd& place) { return onScreen(place).toPoint(); }
    /// Until the window has dealt with everything: quicker than to wait for a while without frames.
    static void rest()
    {
        EXPECT_TRUE(waitFor([] { return !mouse().isMoveWaiting() && !view().isFrameRequested(); }));
        view().drain();
    }
    /// The note of the place before may lie there. It goes when the mouse comes to it, and the view hears of the next move.
    static void approach(const QPoint& pixel)
    {
        moveMouse(view(), pixel + QPoint(2, 2));
        EXPECT_TRUE(waitFor([turns = 0]() mutable { return ++turns > 20; }));
    }
    static void clickOn(const Posd& place)
    {
        const QPoint pixel = pixelOf(place);
        approach(pixel);
        SCOPED_TRACE(testing::Message() << "a click at " << pixel.x() << ", " << pixel.y());
        clickAt(pixel);
        rest();
    }
    static void pointAt(const Posd& place)
    {
        approach(pixelOf(place));
        moveTo(pixelOf(place));
        rest();
    }
    static void type(const char* key)
    {
        typeKey(key);
        settle();
    }
    /// Of work, since the test began.
    int steps() const { return history().count() - stepsBefore; }
    std::string saved() const
    {
        vrk::station::SaveStationFile(folder / "cell.station.json");
        return vrk::test::TempFolder::Read(folder / "cell.station.json");
    }
    static std::shared_ptr<vrk::layout::Frame> lastFrame() { return Layout::inst().frames.back(); }
    static void expectPose(const Posed& pose, const Posd& place, const Dird& x, const Dird& z)
    {
        EXPECT_LT((pose.position - place).length(), exact);
        EXPECT_LT((Vec3d(pose * Dird(1, 0, 0)) - Vec3d(x)).length(), exact);
        EXPECT_LT((Vec3d(pose * Dird(0, 0, 1)) - Vec3d(z)).length(), exact);
    }
    static bool noMarkIsShown()
    {
        view().drain();
        for (std::size_t i = 0; i < PreviewVisualsHelper::pointCount; ++i)
            if (marks().getPoint(i).isVisible())
                return false;
        return !marks().getPrimaryLine().isVisible() && !marks().getAxisXLine().isVisible() &&
               !marks().getAxisYLine().isVisible() && !marks().getUserFrame().isVisible();
    }

    // Corners of the top of the crate, and its middle
    static constexpr Posd front{-150, -150, 2200}, right{150, -150, 2200}, back{-150, 150, 2200}, far{150, 150, 2200},
        middle{0, 0, 2200};
    vrk::test::TempFolder folder;
    unsigned crate = 0;
    int stepsBefore = 0;
};

TEST_F(FrameToolTest, OriginAndAxesMakeAFrameOnTheThingInOneStep)
{
    const std::string before = saved();
    type("o");
    ASSERT_EQ(tool().getWay(), Way::Axes);

    clickOn(front);
    EXPECT_TRUE(marks().getPoint(0).isVisible());
    pointAt(right);
    EXPECT_TRUE(marks().getPrimaryLine().isVisible()) << "to where the next pick would be";
    EXPECT_FALSE(marks().getUserFrame().isVisible());
    clickOn(right);
    EXPECT_EQ(tool().pickCount(), 2u);
    EXPECT_EQ(steps(), 0);
    pointAt(back);
    EXPECT_TRUE(marks().getUserFrame().isVisible());
    EXPECT_LT((Posd(marks().getUserFrame().getWorldPosition()) - front).length(), 1e-3);
    EXPECT_TRUE(marks().getAxisXLine().isVisible());
    shoot("frame-axes");
    clickOn(back);

    ASSERT_EQ(steps(), 1) << message();
    EXPECT_FALSE(tool().isOn());
    EXPECT_TRUE(noMarkIsShown());
    const auto frame = lastFrame();
    EXPECT_EQ(frame->getName(), "Frame 1");
    EXPECT_EQ(frame->getParentId(), crate);
    expectPose(worldPoseOfThing(frame->getId()), front, {1, 0, 0}, {0, 0, 1});
    EXPECT_THAT(state().getSelected(), testing::ElementsAre(frame->getId()));
    EXPECT_EQ(history().undoText().toStdString(), "Define Frame 1");
    ASSERT_TRUE(Scene::HasVisual(frame->getId()));
    EXPECT_EQ(Scene::GetVisual(frame->getId())->getParent(), Scene::GetVisual(crate));
    shoot("frame-made");

    const std::string after = saved();
    history().undo();
    rest();
    EXPECT_EQ(saved(), before);
    EXPECT_FALSE(Scene::HasVisual(frame->getId()));
    history().redo();
    rest();
    EXPECT_EQ(saved(), after);
    EXPECT_TRUE(Scene::HasVisual(frame->getId()));
}

TEST_F(FrameToolTest, TwoPointsOnXAndOneOnYMakeATriangleAndAFrameBelowTheThird)
{
    tool().start(Way::ThreePoints);
    clickOn(front);
    clickOn(right);
    pointAt(far);
    EXPECT_TRUE(marks().getPrimaryLine().isVisible());
    EXPECT_TRUE(marks().getAxisXLine().isVisible());
    EXPECT_TRUE(marks().getAxisYLine().isVisible());
    shoot("frame-three-points");
    clickOn(far);

    ASSERT_EQ(steps(), 1) << message();
    expectPose(worldPoseOfThing(lastFrame()->getId()), right, {1, 0, 0}, {0, 0, 1});
    EXPECT_TRUE(noMarkIsShown());
}

TEST_F(FrameToolTest, FaceGivesItsMiddleAndItsNormal)
{
    {
        const HeldKey alt("Alt_L");
        type("o");
    }
    ASSERT_EQ(tool().getWay(), Way::Face);

    pointAt(middle + Vec3d(60, -40, 0));
    EXPECT_TRUE(marks().getUserFrame().isVisible());
    shoot("frame-face");
    clickOn(middle + Vec3d(60, -40, 0));

    ASSERT_EQ(steps(), 1) << message();
    expectPose(worldPoseOfThing(lastFrame()->getId()), middle, {1, 0, 0}, {0, 0, 1});
}

TEST_F(FrameToolTest, CircleGivesItsCentreAndItsAxis)
{
    const unsigned drum =
        addShape("Drum", demo::at(700, 0, 1900), demo::cylinder(gp_Pnt(0, 0, 0), gp_Dir(0, 0, 1), 100, 200));
    rest();
    const Posd rim(700, -100, 2100);
    tool().start(Way::Circle);

    pointAt(rim);
    shoot("frame-circle");
    clickOn(rim);

    ASSERT_EQ(steps(), 1) << message();
    EXPECT_EQ(lastFrame()->getParentId(), drum);
    expectPose(worldPoseOfThing(lastFrame()->getId()), {700, 0, 2100}, {1, 0, 0}, {0, 0, 1});
}

TEST_F(FrameToolTest, PicksOnSeveralThingsMakeAFrameOfTheWorld)
{
    addCrate("Other", demo::at(400, 0, 1900));
    rest();
    tool().start(Way::Axes);
    clickOn(front);
    clickOn({550, -150, 2200});
    clickOn(back);

    ASSERT_EQ(steps(), 1) << message();
    EXPECT_EQ(lastFrame()->getParentId(), 0u);
    expectPose(lastFrame()->getPose(), front, {1, 0, 0}, {0, 0, 1});
}

TEST_F(FrameToolTest, FrameOnALinkMovesWithTheJoints)
{
    const auto arm = Layout::inst().manipulators.front();
    tool().start(Way::Face);
    std::optional<QPoint> onLink; // that moves
    for (int y = 20; y < view().height() && !onLink; y += 12)
        for (int x = 20; x < view().width() && !onLink; x += 12)
            if (const auto found = pickedAt({x, y}, PickAim::Face); found && found->thing == arm->getId())
                for (const auto& link : arm->getLinks())
                    if (link != arm->getLinks().front() && isBelow(found->candidate.visualId, link->getId()))
                        onLink = QPoint(x, y);
    ASSERT_TRUE(onLink);

    clickAt(*onLink);

    ASSERT_EQ(steps(), 1) << message();
    const unsigned frame = lastFrame()->getId();
    const sdf::SdfObject* on = sdf::Share(lastFrame()->getParentId()).get();
    ASSERT_NE(on, nullptr);
    EXPECT_EQ(on->getModelType(), sdf::ModelType::Link);
    const Posed onLinkBefore = lastFrame()->getPose();
    std::vector<double> values = arm->getJointValues();
    values[0] += 0.5;
    const Posd before = worldPoseOfThing(frame).position;
    history().push(std::make_unique<MoveJoints>(arm, values));
    rest();
    EXPECT_GT((worldPoseOfThing(frame).position - before).length(), 1);
    EXPECT_EQ(lastFrame()->getPose(), onLinkBefore);
    EXPECT_LT((Posd(Scene::GetVisual(frame)->getWorldPosition()) - worldPoseOfThing(frame).position).length(), 0.01);
    const std::string text = saved();
    EXPECT_NO_THROW(vrk::station::ReadStationFile(folder / "cell.station.json")) << text.substr(0, 100);
}

TEST_F(FrameToolTest, EscapeTakesOnePickBackAndTheSecondEndsIt)
{
    tool().start(Way::Axes);
    clickOn(front);
    clickOn(right);

    type("Escape");
    EXPECT_EQ(tool().pickCount(), 1u);
    EXPECT_TRUE(tool().isOn());
    clickOn(right);
    type("Escape");
    EXPECT_EQ(tool().pickCount(), 1u) << "after a pick it is the first one again";
    type("Escape");

    EXPECT_FALSE(tool().isOn());
    EXPECT_TRUE(noMarkIsShown());
    EXPECT_EQ(steps(), 0);
}

TEST_F(FrameToolTest, BackspaceTakesThePicksBackOneByOneAndGoesOn)
{
    tool().start(Way::Axes);
    clickOn(back);
    clickOn(right);
    type("BackSpace");
    type("BackSpace");
    EXPECT_EQ(tool().pickCount(), 0u);
    EXPECT_TRUE(noMarkIsShown());
    EXPECT_TRUE(tool().isOn());

    clickOn(front);
    clickOn(right);
    clickOn(back);

    ASSERT_EQ(steps(), 1);
    expectPose(worldPoseOfThing(lastFrame()->getId()), front, {1, 0, 0}, {0, 0, 1});
}

TEST_F(FrameToolTest, PointsThatMakeNoFrameAreToldInOneLineAndTheNextOneMay)
{
    tool().start(Way::Axes);
    clickOn(front);
    clickOn(front);
    EXPECT_EQ(message(), "two of the points are the same");
    settle(); // the message takes room from the view
    EXPECT_EQ(tool().pickCount(), 1u);

    clickOn(right);
    clickOn({0, -150, 2200}); // the middle of the edge between them
    EXPECT_EQ(message(), "the points lie on one line");
    EXPECT_EQ(tool().pickCount(), 2u);
    EXPECT_EQ(steps(), 0);

    clickOn(back);
    EXPECT_EQ(steps(), 1);
}

TEST_F(FrameToolTest, StraightEdgeIsNoCircleAndEmptySpaceIsNothing)
{
    tool().start(Way::Circle);
    clickOn({0, -150, 2200});
    EXPECT_EQ(message(), "the edge is no circle");
    EXPECT_TRUE(tool().isOn());
    window().getMessageBar().tell("");
    clickAt(emptyPlace());
    rest();
    EXPECT_EQ(message(), "");
    EXPECT_TRUE(tool().isOn());
    EXPECT_EQ(steps(), 0);
}

TEST_F(FrameToolTest, NamesAreTheFirstThatAreFree)
{
    for (int i = 0; i < 3; ++i) {
        tool().start(Way::Face);
        clickOn(middle + Vec3d(60, -40, 0));
    }
    ASSERT_EQ(steps(), 3) << message();
    EXPECT_EQ(lastFrame()->getName(), "Frame 3");
    history().undo();
    history().undo();
    tool().start(Way::Face);
    clickOn(middle + Vec3d(60, -40, 0));
    EXPECT_EQ(lastFrame()->getName(), "Frame 2");
}

TEST_F(FrameToolTest, UserFrameOfTheSelectedWorkObjectIsDefinedInOneStep)
{
    unsigned workObject = 0;
    for (const auto& item : Layout::inst().tasks.front()->getDataItems())
        if (const auto* each = dynamic_cast<const vrk::task::WObjDataItem*>(item.get()); each && each->hasFixedUFrame())
            workObject = each->getId();
    ASSERT_NE(workObject, 0u);
    const std::string before = saved();
    tool().setUse(FrameUse::UserFrame);
    tool().start(Way::Axes);
    EXPECT_FALSE(tool().isOn());
    EXPECT_EQ(message(), "select one work object that has a user frame of its own");

    settle(); // the message takes room from the view
    state().selectVisuals({workObject});
    tool().start(Way::Axes);
    clickOn(front);
    clickOn(right);
    clickOn(back);

    ASSERT_EQ(steps(), 1) << message();
    expectPose(worldPoseOfThing(workObject), front, {1, 0, 0}, {0, 0, 1});
    EXPECT_LT((Posd(Scene::GetVisual(workObject)->getWorldPosition()) - front).length(), 0.01);
    EXPECT_THAT(history().undoText().toStdString(), HasSubstr("Define user frame of "));
    EXPECT_THAT(state().getSelected(), testing::ElementsAre(workObject));
    history().undo();
    EXPECT_EQ(saved(), before);
}

TEST_F(FrameToolTest, NewWorkObjectJoinsTheProgramInOneStep)
{
    const std::string before = saved();
    const std::size_t items = Layout::inst().tasks.front()->getDataItems().size();
    tool().setUse(FrameUse::WorkObject);
    tool().start(Way::Face);
    clickOn(middle + Vec3d(60, -40, 0));

    ASSERT_EQ(steps(), 1) << message();
    ASSERT_EQ(Layout::inst().tasks.front()->getDataItems().size(), items + 1);
    const auto made = Layout::inst().tasks.front()->getDataItems().back();
    EXPECT_EQ(made->getName(), "Work object 1");
    EXPECT_EQ(made->getOwnerId(), crate);
    expectPose(worldPoseOfThing(made->getId()), middle, {1, 0, 0}, {0, 0, 1});
    EXPECT_TRUE(Scene::HasVisual(made->getId()));
    const std::string after = saved();
    history().undo();
    rest();
    EXPECT_EQ(saved(), before);
    EXPECT_FALSE(Scene::HasVisual(made->getId()));
    history().redo();
    EXPECT_EQ(saved(), after);
}

TEST_F(FrameToolTest, PicksFollowTheThingThatIsMovedMeanwhile)
{
    tool().start(Way::Axes);
    clickOn(front);
    clickOn(right);

    history().push(std::make_unique<MoveThings>(crate, demo::at(0, 0, 1800)));
    rest();

    EXPECT_EQ(tool().pickCount(), 2u);
    EXPECT_LT((Posd(marks().getPoint(0).getWorldPosition()) - (front - Vec3d(0, 0, 100))).length(), 0.01);
    clickOn(back - Vec3d(0, 0, 100));
    ASSERT_EQ(steps(), 2) << message();
    expectPose(worldPoseOfThing(lastFrame()->getId()), front - Vec3d(0, 0, 100), {1, 0, 0}, {0, 0, 1});
}

TEST_F(FrameToolTest, ThingThatIsRemovedMeanwhileEndsIt)
{
    tool().start(Way::Axes);
    clickOn(front);
    clickOn(right);
    state().selectVisuals({crate});

    window().getEdits().removeSelected();
    rest();

    EXPECT_FALSE(tool().isOn());
    EXPECT_TRUE(noMarkIsShown());
    history().undo();
    rest();
    EXPECT_TRUE(noMarkIsShown());
}

TEST_F(FrameToolTest, AnotherToolTakesTheMouse)
{
    type("o");
    ASSERT_TRUE(tool().isOn());
    window().getMover().setOn(true);
    EXPECT_FALSE(tool().isOn());
    type("o");
    EXPECT_TRUE(tool().isOn());
    EXPECT_FALSE(window().getMover().isOn());
    window().getRegion().setLassoOn(true);
    EXPECT_FALSE(tool().isOn());
    window().getRegion().setLassoOn(false);
    type("o");
    type("o");
    EXPECT_FALSE(tool().isOn()) << "its key again leaves it";
}

TEST_F(FrameToolTest, CameraIsTurnedMeanwhileWithoutAPick)
{
    tool().start(Way::Axes);
    clickOn(front);
    const auto before = camera();

    drag(2, pixelOf(middle), pixelOf(middle) + QPoint(40, 10));
    rest();

    EXPECT_NE(camera(), before);
    EXPECT_EQ(tool().pickCount(), 1u);
    clickOn(right);
    EXPECT_EQ(tool().pickCount(), 2u);
}

TEST_F(FrameToolTest, AnotherStationEndsIt) // the last one
{
    tool().start(Way::Axes);
    clickOn(front);
    vrk::station::SaveStationFile(folder / "cell.station.json");
    window().getFiles().askBeforeLoss({});

    window().getFiles().open({QString::fromStdString((folder / "cell.station.json").string())});
    EXPECT_TRUE(waitFor([] { return !window().getFiles().getOpening().isRunning(); }));
    rest();

    EXPECT_FALSE(tool().isOn()) << "also where it has a body of the same id";
    EXPECT_TRUE(noMarkIsShown());
}

} // namespace
} // namespace vrkview::test
