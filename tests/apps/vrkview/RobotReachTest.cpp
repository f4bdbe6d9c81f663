#include "canvas/RobotReaches.h"

#include "FakeInput.h"
#include "StepsFixture.h"
#include "canvas/Picked.h"
#include "docks/JointDock.h"
#include "docks/PropertyDock.h"
#include "edit/AddThings.h"
#include "edit/EditActions.h"
#include "edit/MoveJoints.h"
#include "edit/ReachActions.h"
#include "edit/ShowReach.h"
#include "window/ProgressStrip.h"

#include "support/TempFolder.h"

#include "platform/layout/Frame.h"
#include "platform/layout/Layout.h"
#include "platform/layout/Mechanism.h"
#include "platform/sdf/SdfManager.h"
#include "platform/station/StationFile.h"
#include "scene/Scene.h"
#include "scene/ShownCorners.h"
#include "visual/Visual.h"

#include <gmock/gmock.h>

#include <QAction>
#include <QPushButton>

#include <cmath>
#include <ctime>

namespace vrkview::test {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using vrk::layout::JointType;
using vrk::layout::Layout;
using vrk::visual::Scene;
using vrk::visual::Visual;

/// How far the robots of the window reach.
class RobotReachTest : public StepsFixture {
protected:
    void SetUp() override
    {
        StepsFixture::SetUp();
        robot = Layout::inst().manipulators.front()->getId();
        window().getMessageBar().tell("");
        window().getMessageBar().hide(); // which takes room from the view
        settle();
    }
    void TearDown() override
    {
        StepsFixture::TearDown();
        EXPECT_TRUE(waitFor([] { return !reaches().isRunning(); }));
    }

    static RobotReaches& reaches() { return window().getReaches(); }
    static void waitForReach()
    {
        EXPECT_TRUE(waitFor([] { return !reaches().isRunning(); }));
        view().drain();
        settle();
    }
    static void showReachOf(unsigned id)
    {
        state().selectVisuals({id});
        window().getReachActions().toggle();
        waitForReach();
        state().clear();
        settle();
    }
    static QAction* command()
    {
        for (QAction* action : window().QWidget::actions())
            if (action->shortcut() == QKeySequence(Qt::Key_R))
                return action;
        return nullptr;
    }
    /// A robot whose joints turn about these axes, one above the other, joins the station.
    static unsigned addRobot(const std::vector<vrk::rob::Dird>& axes, JointType first = JointType::Revolute)
    {
        const unsigned id = sdf::SdfManager::inst().generateId();
        auto arm = std::make_shared<vrk::layout::Manipulator>(id, "Other robot");
        auto link = std::make_shared<vrk::layout::Link>(sdf::SdfManager::inst().generateId(), "base");
        arm->addLink(link);
        for (const vrk::rob::Dird& axis : axes) {
            auto next = std::make_shared<vrk::layout::Link>(sdf::SdfManager::inst().generateId(), "link");
            arm->addLink(next);
            vrk::layout::Joint joint;
            joint.type = axes.data() == &axis ? first : JointType::Revolute;
            joint.parentLink = link->getId();
            joint.childLink = next->getId();
            joint.origin = vrk::rob::Posed(vrk::rob::Posd(axis.x == 1 ? 180 : 40, 30, 220));
            joint.axis = axis;
            joint.lower = -2.5;
            joint.upper = 2.5;
            arm->addJoint(joint);
            link = next;
        }
        arm->placeWrist(link->getId(), vrk::rob::Posed(vrk::rob::Posd(0, 0, 100)));
        auto station = std::make_shared<Station>();
        station->title = "robot";
        station->mechanisms = {arm};
        history().push(std::make_unique<AddThings>(station));
        return id;
    }
    /// One that takes seconds.
    static unsigned addSlowRobot()
    {
        const vrk::rob::Dird x(1, 0, 0), y(0, 1, 0), z(0, 0, 1);
        return addRobot({z, y, z, y, x, y, x});
    }
    static ProgressStrip& strip() { return *window().findChild<ProgressStrip*>("reach_progress"); }

    unsigned robot = 0;
};

TEST_F(RobotReachTest, ItsKeyShowsAndHidesItAndEitherIsAStepOfWork)
{
    state().selectVisuals({robot});
    ASSERT_TRUE(command()->isEnabled());
    EXPECT_FALSE(command()->isChecked());
    settle();
    const QImage before = seen();

    typeKey("r");
    waitForReach();

    EXPECT_THAT(Layout::inst().reaches, testing::ElementsAre(robot));
    EXPECT_TRUE(command()->isChecked());
    EXPECT_GE(reachVisualsOf(robot), 2);
    EXPECT_EQ(reachVisualsOf(robot) % 2, 0) << "as many lines as surfaces";
    EXPECT_GT(differingShare(before, seen()), 0.1);
    EXPECT_EQ(message(), "");
    EXPECT_EQ(history().undoText().toStdString(), "Show reach of Robot");
    const auto& lines = window().getPropertyDock().getShown().lines;
    EXPECT_THAT(lines, testing::Contains(testing::Field(&Properties::Line::name, QString("Reach"))));
    shoot("reach");

    typeKey("r");
    settle();
    EXPECT_EQ(reachVisualsOf(robot), 0);
    EXPECT_EQ(differingShare(before, seen()), 0);
    history().undo();
    EXPECT_FALSE(reaches().isRunning()) << "what is known is not counted again";
    settle();
    EXPECT_GE(reachVisualsOf(robot), 2);
    history().undo();
    settle();
    EXPECT_EQ(reachVisualsOf(robot), 0);
    EXPECT_FALSE(command()->isChecked());
}

TEST_F(RobotReachTest, CommandIsForRobotsOnly)
{
    EXPECT_FALSE(command()->isEnabled());
    state().selectVisuals({thing("Pallet")});
    EXPECT_FALSE(command()->isEnabled());
    state().selectVisuals({thing("Pallet"), robot});
    EXPECT_TRUE(command()->isEnabled());
}

TEST_F(RobotReachTest, PicksAndFitsPassOverIt)
{
    const auto boxBefore = vrk::visual::BoxOfShown();
    const auto focusBefore = Scene::Get()->getVisualFocusPose(robot);
    std::vector<unsigned> before;
    const auto look = [] {
        std::vector<unsigned> found;
        for (int y = 10; y < view().height(); y += 40)
            for (int x = 10; x < view().width(); x += 40)
                found.push_back(pickedAt({x, y}) ? pickedAt({x, y})->thing : 0);
        return found;
    };
    before = look();

    showReachOf(robot);

    EXPECT_EQ(look(), before);
    EXPECT_EQ(vrk::visual::BoxOfShown().min, boxBefore.min);
    EXPECT_EQ(vrk::visual::BoxOfShown().max, boxBefore.max);
    EXPECT_EQ(Scene::Get()->getVisualFocusPose(robot), focusBefore);
}

TEST_F(RobotReachTest, IsHiddenWithItsRobotAlsoWhereItIsComputedMeanwhile)
{
    const auto isSeen = [this] {
        for (const Visual* child : Scene::GetVisual(robot)->getChildren())
            if (child->getType() == vrk::VisualType::WorkEnvelope)
                return child->isVisible();
        return false;
    };
    state().setVisible({robot}, false);
    settle();
    const QImage without = seen();

    history().push(std::make_unique<ShowReach>(std::vector{robot}, true));
    waitForReach();

    EXPECT_GE(reachVisualsOf(robot), 2);
    EXPECT_FALSE(isSeen());
    EXPECT_EQ(differingShare(without, seen()), 0);
    state().setVisible({robot}, true);
    settle();
    EXPECT_TRUE(isSeen());
    const QImage with = seen();
    state().setVisible({robot}, false);
    settle();
    EXPECT_EQ(differingShare(without, seen()), 0);
    history().undo();
    settle();
    EXPECT_EQ(differingShare(with, seen()), 0);
}

TEST_F(RobotReachTest, CurveTurnsWithTheFirstJointAndTheSurfaceStands)
{
    showReachOf(robot);
    const auto arm = Layout::inst().manipulators.front();
    const Visual* link = Scene::GetVisual(arm->getJoints().front().childLink);
    const auto firstOn = [](const Visual& on) -> const Visual* {
        for (const Visual* child : on.getChildren())
            if (child->getType() == vrk::VisualType::WorkEnvelope)
                return child;
        return nullptr;
    };
    const Visual* line = firstOn(*link);
    const Visual* surface = firstOn(*Scene::GetVisual(robot));
    ASSERT_NE(line, nullptr);
    ASSERT_NE(surface, nullptr);
    std::vector<double> values = arm->getJointValues();
    values[0] = 0;
    history().push(std::make_unique<MoveJoints>(arm, values));
    settle();
    const auto ahead = line->getWorldPose() * vrk::rob::Posf(1000, 0, 0);
    const auto onSurface = surface->getWorldPose() * vrk::rob::Posf(1000, 0, 0);
    EXPECT_LT((ahead - onSurface).length(), 0.01) << "where the joint stands at 0 both are the same";

    values[0] = 1;
    history().push(std::make_unique<MoveJoints>(arm, values));
    settle();

    const auto turned = line->getWorldPose() * vrk::rob::Posf(1000, 0, 0);
    EXPECT_NEAR((turned - ahead).length(), 2000 * std::sin(0.5), 1);
    EXPECT_EQ(surface->getWorldPose() * vrk::rob::Posf(1000, 0, 0), onSurface);
}

TEST_F(RobotReachTest, RemovedRobotBringsItBack)
{
    showReachOf(robot);
    state().selectVisuals({robot});

    window().getEdits().removeSelected();
    settle();

    EXPECT_FALSE(Scene::HasVisual(robot));
    history().undo();
    settle();
    EXPECT_GE(reachVisualsOf(robot), 2);
    EXPECT_FALSE(reaches().isRunning());
}

TEST_F(RobotReachTest, RobotThatIsRemovedWhileItIsComputedEndsThat)
{
    const unsigned slow = addSlowRobot();
    history().push(std::make_unique<ShowReach>(std::vector{slow}, true));
    ASSERT_TRUE(reaches().isRunning());

    state().selectVisuals({slow});
    window().getEdits().removeSelected();
    waitForReach();

    EXPECT_FALSE(Scene::HasVisual(slow));
    EXPECT_EQ(message(), "");
    history().undo();
    EXPECT_TRUE(reaches().isRunning()) << "it is wanted again, and was not known";
    history().push(std::make_unique<ShowReach>(std::vector{slow}, false));
    waitForReach();
    EXPECT_EQ(reachVisualsOf(slow), 0);
}

TEST_F(RobotReachTest, WhatTakesLongIsToldInTheStatusLineAndCanBeGivenUp)
{
    const unsigned slow = addSlowRobot();
    EXPECT_FALSE(strip().isVisible());
    history().push(std::make_unique<ShowReach>(std::vector{slow}, true));

    EXPECT_TRUE(waitFor([] { return strip().isVisible(); }));
    EXPECT_TRUE(waitFor([turns = 0]() mutable { return ++turns > 10; })); // until it is painted
    shoot("reach_progress");
    strip().findChild<QPushButton*>("cancel")->click();
    waitForReach();

    EXPECT_FALSE(strip().isVisible());
    EXPECT_THAT(Layout::inst().reaches, IsEmpty());
    EXPECT_EQ(history().undoText().toStdString(), "Hide reach of Other robot");
    EXPECT_EQ(reachVisualsOf(slow), 0);
}

TEST_F(RobotReachTest, SwitchThatIsPutOffAndOnAgainGivesOneDrawing)
{
    history().push(std::make_unique<ShowReach>(std::vector{robot}, true));
    history().undo();
    history().redo();
    history().undo();
    history().redo();
    waitForReach();

    const int drawn = reachVisualsOf(robot);
    EXPECT_GE(drawn, 2);
    history().undo();
    history().redo();
    history().undo();
    history().redo();
    waitForReach();
    EXPECT_EQ(reachVisualsOf(robot), drawn);
}

TEST_F(RobotReachTest, RobotWhoseReachCannotBeToldIsToldInOneLineEachTimeItIsAskedFor)
{
    const unsigned stiff = addRobot({});
    const QString expected = "Other robot: no joint moves the wrist of the arm";

    history().push(std::make_unique<ShowReach>(std::vector{stiff}, true));
    waitForReach();

    EXPECT_EQ(message(), expected.toStdString());
    EXPECT_EQ(reachVisualsOf(stiff), 0);
    EXPECT_TRUE(isReachShown(stiff)) << "nothing is lost";
    window().getMessageBar().tell("");
    state().stationHasChanged();
    settle();
    EXPECT_EQ(message(), "") << "but not each time that something changes";
    history().undo();
    history().redo();
    waitForReach();
    EXPECT_EQ(message(), expected.toStdString());
}

TEST_F(RobotReachTest, RobotOnARailIsTold)
{
    const unsigned sliding = addRobot({{1, 0, 0}, {0, 1, 0}}, JointType::Prismatic);

    history().push(std::make_unique<ShowReach>(std::vector{sliding}, true));
    waitForReach();

    EXPECT_EQ(message(), "Other robot: the first joint of the arm slides: its reach is no surface that turns");
}

TEST_F(RobotReachTest, NothingOutlivesTheOneWhoAsked)
{
    const unsigned slow = addSlowRobot();
    history().push(std::make_unique<ShowReach>(std::vector{slow}, true));
    auto other = std::make_unique<RobotReaches>(state());
    EXPECT_TRUE(other->isRunning());

    const std::clock_t before = std::clock(); // of all threads
    other.reset();

    EXPECT_LT(std::clock() - before, CLOCKS_PER_SEC) << "the robot takes some seconds";
    settle();
}

TEST_F(RobotReachTest, SavedStationOpensWithItAndOneThatTakesItsPlaceEndsWhatIsComputed) // the last one
{
    const vrk::test::TempFolder folder;
    const unsigned slow = addSlowRobot();
    history().push(std::make_unique<ShowReach>(std::vector{robot}, true));
    waitForReach();
    const std::filesystem::path file = folder / "cell.station.json";
    vrk::station::SaveStationFile(file);
    history().push(std::make_unique<ShowReach>(std::vector{slow}, true));
    ASSERT_TRUE(reaches().isRunning());
    window().getFiles().askBeforeLoss({});

    window().getFiles().open({QString::fromStdString(file.string())});
    EXPECT_TRUE(waitFor([] { return !window().getFiles().getOpening().isRunning(); }));
    waitForReach();

    EXPECT_THAT(Layout::inst().reaches, testing::ElementsAre(robot));
    EXPECT_GE(reachVisualsOf(robot), 2);
    EXPECT_EQ(reachVisualsOf(slow), 0);
    EXPECT_EQ(message(), "");
}

} // namespace
} // namespace vrkview::test
