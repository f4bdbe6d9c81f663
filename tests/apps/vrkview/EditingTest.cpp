#include "FakeInput.h"
#include "MouseFixture.h"
#include "docks/JointDock.h"
#include "docks/JointRow.h"
#include "docks/LimitBox.h"
#include "docks/PropertyDock.h"
#include "docks/StationTreeModel.h"
#include "docks/TreeDock.h"
#include "edit/AddThings.h"
#include "edit/Attaching.h"
#include "edit/EditActions.h"
#include "edit/History.h"
#include "edit/ModelPlaces.h"
#include "edit/MoveThings.h"
#include "edit/PlaceDialog.h"
#include "files/Station.h"

#include "support/TempFolder.h"

#include "platform/layout/Frame.h"
#include "platform/layout/Layout.h"
#include "platform/layout/Mechanism.h"
#include "platform/program/Program.h"
#include "platform/sdf/SdfManager.h"
#include "platform/task/Instruction.h"
#include "platform/task/Path.h"
#include "platform/task/Task.h"
#include "scene/Scene.h"
#include "visual/Visual.h"

#include <gmock/gmock.h>

#include <QAction>
#include <QDoubleSpinBox>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QPushButton>
#include <QSlider>
#include <QStatusBar>
#include <QTest>
#include <QTimer>

namespace vrkview::test {
namespace {

using testing::HasSubstr;
using vrk::layout::Layout;
using vrk::rob::Posd;
using vrk::rob::Posed;
using vrk::visual::Scene;

// Edges that lie in one place are drawn in the order in which their bodies were hung into the scene, and what left the scene
// and came back is hung in last: some 350 of 550,000 pixels, of the soft sides of edges, take the other edge's colour where
// things touch. The smallest thing that a step here takes away covers thousands.
constexpr double touchingShare = 0.0008;

/// Steps of work in the window; each test ends with the station, and what is seen of it, as it was.
class EditingTest : public MouseFixture {
protected:
    void SetUp() override
    {
        MouseFixture::SetUp();
        leaveView(); // with the mouse over a thing that would be highlighted
        settle();
        history().noteSaved();
        before = seen();
    }
    void TearDown() override
    {
        state().clear();
        while (!history().isSaved() && history().canUndo())
            history().undo();
        settle();
        EXPECT_LT(differingShare(seen(), before), touchingShare) << "what is undone is still to be seen";
        MouseFixture::TearDown();
    }

    static History& history() { return state().getHistory(); }
    static EditActions& edits() { return window().getEdits(); }
    static void typeWithControl(const char* key)
    {
        const HeldKey control("Control_L");
        typeKey(key);
        settle();
    }
    static void typeRedo()
    {
        const HeldKey control("Control_L"), shift("Shift_L");
        typeKey("z");
        settle();
    }
    static QAction* editCommand(const char* beginning)
    {
        for (QAction* menu : window().menuBar()->actions())
            if (menu->text() == "&Edit")
                for (QAction* action : menu->menu()->actions())
                    if (action->text().startsWith(beginning))
                        return action;
        ADD_FAILURE() << "no command begins with " << beginning;
        return nullptr;
    }
    static Posd placeInView(unsigned id) { return Posed(Scene::GetVisual(id)->getWorldPose()).position; }
    /// Presses a button of the next message box.
    static void answer(QMessageBox::StandardButton button)
    {
        QTimer::singleShot(300, &window(), [button] {
            auto* box = window().findChild<QMessageBox*>();
            ASSERT_NE(box, nullptr);
            shoot("unsaved");
            box->button(button)->click();
        });
    }

    QImage before;
};

TEST_F(EditingTest, MovedThingIsSeenThereAndComesBackByTheKey)
{
    const unsigned pallet = thing("Pallet");
    const Posd place = placeInView(pallet);

    history().push(std::make_unique<MoveThings>(pallet, Posed(Posd(-1500, -1500, 200))));
    settle();

    EXPECT_NEAR((placeInView(pallet) - Posd(-1500, -1500, 200)).length(), 0, 1e-3);
    EXPECT_NE(seen(), before);
    EXPECT_EQ(editCommand("&Undo")->text(), "&Undo Move Pallet");
    EXPECT_TRUE(window().isWindowModified());
    shoot("moved");
    typeWithControl("z");
    EXPECT_NEAR((placeInView(pallet) - place).length(), 0, 1e-3);
    EXPECT_EQ(seen(), before);
    EXPECT_EQ(editCommand("&Redo")->text(), "&Redo Move Pallet");
    EXPECT_FALSE(window().isWindowModified());
    typeRedo();
    EXPECT_NEAR((placeInView(pallet) - Posd(-1500, -1500, 200)).length(), 0, 1e-3);
}

TEST_F(EditingTest, EditMenuCanBeSeen)
{
    history().push(std::make_unique<MoveThings>(thing("Pallet"), Posed(Posd(-1500, -1500, 200))));
    state().selectVisuals({thing("Pallet"), thing("Fixture")});
    settle();
    for (QAction* menu : window().menuBar()->actions())
        if (menu->text() == "&Edit") {
            menu->menu()->popup(window().mapToGlobal(QPoint(60, 30)));
            ASSERT_TRUE(waitFor([menu] { return menu->menu()->isVisible(); }));
            EXPECT_EQ(editCommand("&Attach")->text(), "&Attach to Fixture");
            EXPECT_TRUE(editCommand("De&lete")->isEnabled());
            shoot("edit-menu");
            menu->menu()->close();
        }
    settle();
}

TEST_F(EditingTest, DragOfASliderIsOneStep)
{
    JointRow& row = *window().getJointDock().getRows().front();
    const double start = row.getValue();
    const int steps = history().count();

    row.getSlider().setSliderDown(true);
    for (int i = 1; i <= 5; ++i)
        row.getSlider().setValue(row.getSlider().value() + 40);
    row.getSlider().setSliderDown(false);
    settle();

    EXPECT_LE(history().count(), steps + 1);
    EXPECT_GT(row.getValue(), start + 5);
    EXPECT_THAT(history().undoText().toStdString(), HasSubstr("Move joints of Robot"));
    typeWithControl("z");
    EXPECT_NEAR(row.getValue(), start, 0.01);
    EXPECT_EQ(seen(), before);
}

TEST_F(EditingTest, ValueThatIsTypedBeyondALimitIsHeldToItAndTold)
{
    JointRow& row = *window().getJointDock().getRows().front();
    LimitBox& box = row.getBox();
    const auto& robot = Layout::inst().manipulators.front();
    const std::vector<double> start = robot->getJointValues();
    window().statusBar()->clearMessage();

    box.setFocus();
    box.selectAll();
    QTest::keyClicks(&box, "4000");
    EXPECT_THAT(box.text().toStdString(), HasSubstr("4000")) << "may be typed";
    EXPECT_LE(row.getValue(), box.maximum());
    QTest::keyClick(&box, Qt::Key_Return);
    settle();

    EXPECT_EQ(row.getValue(), box.maximum());
    EXPECT_THAT(window().statusBar()->currentMessage().toStdString(), HasSubstr("4000° is beyond its limits"));
    window().statusBar()->clearMessage();
    box.selectAll();
    QTest::keyClicks(&box, "10");
    QTest::keyClick(&box, Qt::Key_Return);
    EXPECT_EQ(row.getValue(), 10);
    EXPECT_EQ(window().statusBar()->currentMessage(), "") << "within them there is nothing to say";
    box.selectAll();
    QTest::keyClicks(&box, "-4000");
    QTest::keyClick(&box, Qt::Key_Return);
    EXPECT_EQ(row.getValue(), box.minimum());
    while (robot->getJointValues() != start && history().canUndo())
        history().undo();
    settle();
}

TEST_F(EditingTest, RenamedThingHasItsNameInTheTree)
{
    const unsigned pallet = thing("Pallet");
    StationTreeModel& model = window().getTreeDock().getModel();

    model.setData(model.indexOf(pallet), " Rack ", Qt::EditRole);
    settle();

    EXPECT_EQ(thing("Rack"), pallet);
    EXPECT_EQ(model.data(model.indexOf(pallet), Qt::DisplayRole).toString(), "Rack");
    typeWithControl("z");
    EXPECT_EQ(thing("Pallet"), pallet);
}

TEST_F(EditingTest, NameIsEditedInTheTreeByItsKey)
{
    state().selectVisuals({thing("Pallet")});
    settle();

    typeKey("F2");
    settle();
    for (const char* key : {"r", "a", "c", "k", "Return"})
        typeKey(key);
    settle();

    EXPECT_NE(thing("rack"), 0u);
    EXPECT_EQ(history().undoText(), "Rename Pallet");
    view().setFocus();
}

TEST_F(EditingTest, AttachedThingMovesWithItsCarrierAndStaysWhereItIsDetached)
{
    const unsigned cabinet = thing("Controller");
    const Posd place = placeInView(cabinet);
    const auto positioner = Layout::inst().devices.front();
    const auto table = positioner->getLinks().back()->getId();

    state().selectVisuals({cabinet, table});
    edits().attachSelected();
    settle();

    EXPECT_TRUE(Scene::GetVisual(cabinet)->isAttached());
    EXPECT_EQ(Scene::GetVisual(cabinet)->getParent(), Scene::GetVisual(table));
    EXPECT_NEAR((placeInView(cabinet) - place).length(), 0, 0.01);
    const StationTree& tree = state().getTree();
    EXPECT_EQ(tree.getRows()[static_cast<std::size_t>(tree.find(cabinet))].parent, tree.find(table));

    state().selectVisuals({cabinet});
    edits().detachSelected();
    settle();
    EXPECT_FALSE(Scene::GetVisual(cabinet)->isAttached());
    EXPECT_EQ(Scene::GetVisual(cabinet)->getParent(), Scene::GetWorldVisual());
    EXPECT_NEAR((placeInView(cabinet) - place).length(), 0, 0.01);
}

TEST_F(EditingTest, DeletedThingIsGoneAndComesBackWithWhatHangsOnIt)
{
    const unsigned positioner = thing("Positioner"), fixture = thing("Fixture");
    const Posd place = placeInView(fixture);
    state().selectVisuals({positioner});

    typeKey("Delete");
    settle();

    EXPECT_FALSE(Scene::HasVisual(positioner));
    EXPECT_EQ(state().getTree().find(positioner), StationTree::none);
    ASSERT_TRUE(Scene::HasVisual(fixture));
    EXPECT_NEAR((placeInView(fixture) - place).length(), 0, 0.01);
    EXPECT_EQ(history().undoText(), "Delete Positioner");
    shoot("deleted");
    typeWithControl("z");
    ASSERT_TRUE(Scene::HasVisual(positioner));
    EXPECT_TRUE(Scene::GetVisual(fixture)->isAttached());
    EXPECT_EQ(seen(), before);
    typeRedo();
    EXPECT_FALSE(Scene::HasVisual(positioner));
}

TEST_F(EditingTest, DeletedRobotComesBackWithItsToolDataAndFrames)
{
    const auto arm = Layout::inst().manipulators.front();
    const unsigned frame = arm->getControllerTaskFrame()->getId(), torch = thing("Welding torch");
    const std::size_t rows = state().getTree().getRows().size();
    state().selectVisuals({arm->getId(), torch});

    edits().removeSelected();
    settle();
    EXPECT_FALSE(Scene::HasVisual(frame));
    EXPECT_FALSE(Scene::HasVisual(torch));

    typeWithControl("z");
    EXPECT_TRUE(Scene::HasVisual(frame));
    EXPECT_TRUE(Scene::GetVisual(torch)->isAttached());
    EXPECT_EQ(state().getTree().getRows().size(), rows);
    EXPECT_LT(differingShare(seen(), before), touchingShare);
}

TEST_F(EditingTest, ProgramIsShownStaysWithoutItsRobotAndIsTakenBack)
{
    const auto program = std::make_shared<Station>();
    program->title = "weld.mod";
    program->programs.push_back(
        vrk::program::readMod("MODULE weld\nCONST jointtarget home:=[[0,0,0,0,0,0],[9E9,9E9,9E9,9E9,9E9,9E9]];\n"
                              "PROC main()\nMoveAbsJ home,v100,fine,tool0;\n"
                              "MoveL [[900,0,800],[0,0,1,0],[0,0,0,0],[9E9,9E9,9E9,9E9,9E9,9E9]],v100,fine,tool0;\n"
                              "MoveL [[900,300,800],[0,0,1,0],[0,0,0,0],[9E9,9E9,9E9,9E9,9E9,9E9]],v100,fine,tool0;\n"
                              "ENDPROC\nENDMODULE\n"));
    const auto arm = Layout::inst().manipulators.front();
    history().push(std::make_unique<AddThings>(program));
    settle();
    const QImage shown = seen();
    const vrk::task::Path& path = *program->tasks.front()->getOwnPaths().front();
    const unsigned posture = path.getMoveInstructions().front()->getId(),
                   last = path.getMoveInstructions().back()->getId();
    ASSERT_TRUE(Scene::HasVisual(path.getId()) && Scene::HasVisual(posture) && Scene::HasVisual(last));
    EXPECT_EQ(Scene::GetVisual(posture)->getParent()->getId(), arm->getId());
    EXPECT_NE(shown, before);
    shoot("program");

    state().selectVisuals({arm->getId()});
    edits().removeSelected();
    settle();
    EXPECT_FALSE(Scene::HasVisual(arm->getId()));
    ASSERT_TRUE(Scene::HasVisual(posture) && Scene::HasVisual(last));
    EXPECT_EQ(Scene::GetVisual(posture)->getParent(), Scene::GetWorldVisual());

    typeWithControl("z");
    ASSERT_TRUE(Scene::HasVisual(posture) && Scene::HasVisual(last));
    EXPECT_EQ(Scene::GetVisual(posture)->getParent()->getId(), arm->getId());
    EXPECT_LT(differingShare(seen(), shown), touchingShare);

    typeWithControl("z");
    EXPECT_FALSE(Scene::HasVisual(path.getId()) || Scene::HasVisual(posture) || Scene::HasVisual(last));
    EXPECT_LT(differingShare(seen(), before), touchingShare);
    typeRedo();
    EXPECT_TRUE(Scene::HasVisual(path.getId()) && Scene::HasVisual(posture) && Scene::HasVisual(last));
}

TEST_F(EditingTest, WhatHangsOnAWorkObjectStaysThereWhenItsProgramIsShownAnew)
{
    const unsigned arm = Layout::inst().manipulators.front()->getId(), cabinet = thing("Controller");
    const vrk::layout::StationContent content = Layout::inst();
    unsigned workObject = 0;
    for (const auto& item : Layout::inst().tasks.front()->getDataItems())
        if (item->asType(sdf::ModelType::WObjData))
            workObject = item->getId();
    const Posed pose = Posed(Scene::GetVisual(workObject)->getWorldPose()).inverse() *
                       Posed(Scene::GetVisual(cabinet)->getWorldPose());
    const Posed standing(Scene::GetVisual(cabinet)->getPose());
    const Posd place = placeInView(cabinet);
    Layout::inst().attachments.push_back({cabinet, workObject, pose}); // as in a file: no command attaches to it
    Scene::Get()->addAttachment(cabinet, workObject, pose);
    settle();
    const auto hangsOnIt = [=] {
        return Scene::HasVisual(cabinet) && Scene::HasVisual(workObject) &&
               Scene::GetVisual(cabinet)->getParent() == Scene::GetVisual(workObject) &&
               Scene::GetVisual(cabinet)->isAttached() && (placeInView(cabinet) - place).length() < 0.01;
    };
    ASSERT_TRUE(hangsOnIt());

    state().selectVisuals({arm});
    edits().removeSelected();
    settle();
    EXPECT_TRUE(hangsOnIt());
    EXPECT_NE(state().getTree().find(cabinet), StationTree::none);
    typeWithControl("z");
    EXPECT_TRUE(hangsOnIt());

    Layout::inst().attachments = content.attachments;
    ASSERT_TRUE(Scene::HasVisual(cabinet));
    Scene::Get()->deleteAttachment(cabinet, workObject, 0, standing);
    settle();
}

TEST_F(EditingTest, DeletedHiddenFacesAndHiddenThingsComeBackHidden)
{
    const unsigned bench = thing("Measuring bench");
    const unsigned gears = thing("Gear unit"); // its front face is left away
    state().setVisible({bench}, false);
    settle();
    const QImage hidden = seen();
    state().selectVisuals({gears});
    edits().removeSelected();
    settle();
    ASSERT_GT(differingShare(seen(), hidden), 2 * touchingShare);

    typeWithControl("z");

    EXPECT_TRUE(state().isHidden(bench));
    EXPECT_LT(differingShare(seen(), hidden), touchingShare);
}

TEST_F(EditingTest, AssemblyIsPaintedDownToItsMembersAsOneStep)
{
    const int steps = history().count();
    state().selectVisuals({thing("Fence")});
    EXPECT_TRUE(window().getPropertyDock().getShown().canBePainted);

    window().getPropertyDock().paintSelected(QColor(250, 20, 20));
    state().clear();
    settle();

    EXPECT_LE(history().count(), steps + 1);
    EXPECT_EQ(history().undoText(), "Colour Fence");
    EXPECT_NE(seen(), before);
    shoot("painted");
    typeWithControl("z");
    EXPECT_EQ(seen(), before);
}

TEST_F(EditingTest, HidingIsAStepAndItsUndoShowsAgain)
{
    state().selectVisuals({thing("Fence")});
    typeKey("h");
    settle();
    EXPECT_TRUE(state().isHidden(thing("Fence")));
    EXPECT_EQ(history().undoText(), "Hide Fence");

    typeWithControl("z");

    EXPECT_FALSE(state().isHidden(thing("Fence")));
    EXPECT_EQ(seen(), before);
    typeRedo();
    EXPECT_TRUE(state().isHidden(thing("Fence")));
}

TEST_F(EditingTest, PlaceIsAskedForAndNumbersThatAreLeftKeepTheirDigits)
{
    const unsigned pallet = thing("Pallet");
    const Posed start(Posd(1.0 / 3, -2, 5), vrk::rob::Rotationd(0.1, 0.2, 0.3));
    PlaceDialog untouched("Pallet", {}, start);
    EXPECT_EQ(untouched.getPose(), start);
    PlaceDialog raised("Pallet", {}, start);
    raised.getBox(2).setValue(77);
    EXPECT_EQ(raised.getPose(), Posed(Posd(1.0 / 3, -2, 77), start.rotation()));

    state().selectVisuals({pallet});
    edits().askForPlace();
    auto* dialog = window().findChild<PlaceDialog*>();
    ASSERT_NE(dialog, nullptr);
    ASSERT_TRUE(waitFor([dialog] { return dialog->isVisible(); }));
    settle();
    shoot("place");
    dialog->getBox(2).setValue(dialog->getBox(2).value() + 300);
    const double height = placeInView(pallet).z;
    dialog->accept();
    settle();

    EXPECT_NEAR(placeInView(pallet).z, height + 300, 0.01);
    EXPECT_EQ(history().undoText(), "Move Pallet");
}

TEST_F(EditingTest, ChangesAreAskedForBeforeTheyAreLost)
{
    history().push(std::make_unique<MoveThings>(thing("Pallet"), Posed(Posd(-1500, -1500, 200))));
    settle();
    EXPECT_THAT(window().windowTitle().toStdString(), HasSubstr("[*]"));
    EXPECT_TRUE(window().isWindowModified());

    answer(QMessageBox::Cancel);
    EXPECT_FALSE(window().close());
    EXPECT_TRUE(window().isVisible());
    answer(QMessageBox::Cancel);
    window().getFiles().open({"other.station.json"});
    EXPECT_FALSE(window().getFiles().getOpening().isRunning());

    const vrk::test::TempFolder folder;
    EXPECT_TRUE(window().getFiles().save(QString::fromStdString((folder.path() / "cell").string())));
    EXPECT_FALSE(window().isWindowModified());
    EXPECT_TRUE(history().isSaved());
    history().undo();
    history().noteSaved(); // with the station as it was
}

} // namespace
} // namespace vrkview::test
