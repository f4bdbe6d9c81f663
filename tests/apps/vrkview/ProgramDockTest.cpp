#include "docks/ProgramDock.h"
#include "FakeInput.h"
#include "Programs.h"
#include "WindowFixture.h"
#include "docks/ProgramModel.h"
#include "docks/ProgramView.h"
#include "docks/PropertyDock.h"
#include "docks/StationTreeModel.h"
#include "docks/TreeDock.h"
#include "docks/TreeView.h"
#include "edit/ModelPlaces.h"

#include "support/ProcessorTime.h"

#include "platform/layout/Layout.h"
#include "view/Camera.h"

#include <gmock/gmock.h>

#include <QAbstractItemModelTester>
#include <QAction>
#include <QLineEdit>

#include <algorithm>
#include <cmath>

namespace vrkview::test {
namespace {

using namespace vrk::task;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;
using vrk::layout::Layout;

class ProgramDockTest : public WindowFixture {
protected:
    void TearDown() override
    {
        dock().getFilter().clear();
        state().clear();
        settle();
    }
    static ViewState& state() { return window().getState(); }
    static ProgramDock& dock() { return window().getProgramDock(); }
    static ProgramModel& model() { return dock().getModel(); }
    static ProgramView& tree() { return dock().getTreeView(); }
    static const Path& welding() { return *Layout::inst().tasks.front()->getOwnPaths().front(); }
    static void clickRow(unsigned id)
    {
        tree().selectionModel()->select(model().indexOf(id),
                                        QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    }
    static QString valueOf(const QString& name)
    {
        for (const Properties::Line& line : window().getPropertyDock().getShown().lines)
            if (line.name == name && !line.value.isEmpty())
                return line.value;
        return {};
    }
    /// x, y and z below that heading.
    static std::vector<QString> placeUnder(const QString& heading)
    {
        const std::vector<Properties::Line>& lines = window().getPropertyDock().getShown().lines;
        const auto found = std::ranges::find(lines, heading, &Properties::Line::name);
        std::vector<QString> place;
        for (auto line = found; line != lines.end() && place.size() < 3; ++line)
            if (line != found)
                place.push_back(line->value);
        return place;
    }
    static std::vector<unsigned> marked()
    {
        std::vector<unsigned> ids;
        for (const QModelIndex& index : tree().selectionModel()->selectedRows())
            ids.push_back(index.data(ProgramModel::IdRole).toUInt());
        return ids;
    }
};

TEST_F(ProgramDockTest, StandsInTheWindowWithThePathsOfThePrograms)
{
    const QAbstractItemModelTester tester(&model(), QAbstractItemModelTester::FailureReportingMode::Fatal);
    tree().expand(model().indexOf(welding().getId()));
    settle();
    shoot("program");

    EXPECT_TRUE(dock().isVisible());
    EXPECT_EQ(model().rowCount(), 1);
    EXPECT_TRUE(tree().isExpanded(model().index(0, 0)));
    EXPECT_TRUE(tree().uniformRowHeights());
    EXPECT_THAT(window().QWidget::findChildren<QAction*>(), testing::Contains(dock().toggleViewAction()));
}

TEST_F(ProgramDockTest, SelectedRowStaysSelectedAndTheTreeOfTheStationIsEmpty)
{
    state().selectVisuals({state().getTree().getRows().front().id});
    const unsigned condition = welding().getInstructions()[4]->getId(), path = welding().getId();

    clickRow(condition);
    settle();

    EXPECT_THAT(state().getSelected(), ElementsAre(condition));
    EXPECT_THAT(marked(), ElementsAre(condition));
    EXPECT_THAT(window().getTreeDock().getTreeView().selectionModel()->selectedRows(), IsEmpty());

    clickRow(path);
    settle();
    EXPECT_THAT(state().getSelected(), ElementsAre(path));
}

TEST_F(ProgramDockTest, ClickWithControlAddsToWhatIsSelectedInTheOtherTree)
{
    TreeView& things = window().getTreeDock().getTreeView();
    const unsigned thing = things.model()->index(0, 0).data(StationTreeModel::IdRole).toUInt();
    const unsigned move = welding().getMoveInstructions()[1]->getId(),
                   other = welding().getMoveInstructions()[2]->getId();
    const auto clickOn = [](TreeView& view, const QModelIndex& row) {
        view.scrollTo(row);
        settle();
        moveMouse(*view.viewport(), view.visualRect(row).center());
        clickLeft();
    };
    const auto areSelected = [](const auto& matcher) {
        return waitFor([&] { return testing::Matches(matcher)(state().getSelected()); });
    };

    clickOn(tree(), model().indexOf(move));
    ASSERT_TRUE(areSelected(ElementsAre(move)));
    {
        const HeldKey control("Control_L");
        clickOn(things, things.model()->index(0, 0));
        EXPECT_TRUE(areSelected(ElementsAre(move, thing)));
        clickOn(tree(), model().indexOf(other));
        EXPECT_TRUE(areSelected(UnorderedElementsAre(move, thing, other)));
        EXPECT_THAT(marked(), UnorderedElementsAre(move, other));
        EXPECT_EQ(things.selectionModel()->selectedRows().size(), 1);
        clickOn(tree(), model().indexOf(move));
        EXPECT_TRUE(areSelected(UnorderedElementsAre(thing, other)));
    }
    clickOn(tree(), model().indexOf(move));
    EXPECT_TRUE(areSelected(ElementsAre(move)));
}

TEST_F(ProgramDockTest, ClickWithControlKeepsWhatTheFilterTakesOut)
{
    TreeView& things = window().getTreeDock().getTreeView();
    QLineEdit& filter = window().getTreeDock().getFilter();
    const StationTree::Row &first = state().getTree().getRows().front(), &last = state().getTree().getRows().back();
    state().selectVisuals({first.id});
    filter.setText(QString::fromStdString(last.name));
    ASSERT_THAT(things.selectionModel()->selectedRows(), IsEmpty());
    const QModelIndexList found =
        things.model()->match(things.model()->index(0, 0), StationTreeModel::IdRole, last.id, 1, Qt::MatchRecursive);
    ASSERT_EQ(found.size(), 1);
    settle();

    {
        const HeldKey control("Control_L");
        moveMouse(*things.viewport(), things.visualRect(found.front()).center());
        clickLeft();
        EXPECT_TRUE(waitFor([&] { return state().getSelected() == std::vector{first.id, last.id}; }));
    }
    filter.clear();
}

TEST_F(ProgramDockTest, WhatIsSelectedElsewhereIsMarkedAndOpened)
{
    tree().collapse(model().indexOf(welding().getId()));
    const unsigned move = welding().getMoveInstructions()[3]->getId();

    state().selectVisuals({move});

    EXPECT_THAT(marked(), ElementsAre(move));
    EXPECT_TRUE(tree().isExpanded(model().indexOf(welding().getId())));
    settle();
    shoot("program_selected");
}

TEST_F(ProgramDockTest, FilterKeepsWhatIsOpenAndWhatIsSelected)
{
    const unsigned move = welding().getMoveInstructions()[3]->getId();
    tree().collapseAll();
    tree().expand(model().index(0, 0));
    state().selectVisuals({move});

    dock().getFilter().setText("cutter");
    EXPECT_THAT(marked(), IsEmpty());
    EXPECT_THAT(state().getSelected(), ElementsAre(move));
    EXPECT_EQ(model().rowCount(model().index(0, 0)), 1);
    EXPECT_TRUE(tree().isExpanded(model().index(0, 0, model().index(0, 0))));
    settle();
    shoot("program_filtered");

    dock().getFilter().clear();
    EXPECT_THAT(marked(), ElementsAre(move));
    EXPECT_EQ(model().rowCount(model().index(0, 0)), 2);
}

TEST_F(ProgramDockTest, ProgramThatComesIsShownAndThatGoesIsNot)
{
    const auto task = std::make_shared<Task>(newId(), "more");
    const auto path = pathOf(*task, "go", 3);
    Layout::inst().addTask(task);
    state().stationHasChanged();
    const unsigned move = path->getInstructions()[1]->getId();
    state().selectVisuals({move});

    EXPECT_EQ(model().rowCount(), 2);
    EXPECT_THAT(marked(), ElementsAre(move));

    Layout::inst().remove(task->getId());
    state().stationHasChanged();

    EXPECT_EQ(model().rowCount(), 1);
    EXPECT_THAT(state().getSelected(), IsEmpty());
}

TEST_F(ProgramDockTest, PropertiesOfAMoveTellWhereItsTargetIs)
{
    const MoveInst& move = *welding().getMoveInstructions()[3];

    state().selectVisuals({move.getId()});

    const Properties& shown = window().getPropertyDock().getShown();
    EXPECT_EQ(shown.title, "seam1");
    EXPECT_EQ(shown.subtitle, QString("Linear move · id %1").arg(move.getId()));
    EXPECT_EQ(valueOf("Speed"), "v100");
    EXPECT_EQ(valueOf("Zone"), "fine");
    EXPECT_EQ(valueOf("Tool"), "torch");
    EXPECT_EQ(valueOf("Work object"), "fixture");
    EXPECT_EQ(valueOf("Program"), "Welding");
    EXPECT_EQ(valueOf("Path"), "weldBracket");
    EXPECT_THAT(placeUnder("In fixture (mm, °)"), ElementsAre("102.500", "32.500", "3.000"));
    // The positioner stands at x = 1050, its table is 530 above the floor, the fixture's top 17.5 above the table.
    EXPECT_THAT(placeUnder("In the world (mm, °)"), ElementsAre("960.000", "-90.000", "550.500"));
    settle();
    shoot("program_properties");
}

TEST_F(ProgramDockTest, PropertiesFollowTheObjectFrameAndTheViaPoint)
{
    const MoveInst& arc = *welding().getMoveInstructions()[5];
    WObjDataItem& fixture = *arc.getWObjItem();
    const vrk::rob::Posed before = fixture.getObjectFrame()->getPose();
    Layout::inst().tasks.front()->moveObjectFrame(fixture, vrk::rob::Posed(vrk::rob::Posd(10, 20, 30)));

    state().selectVisuals({arc.getId()});

    EXPECT_EQ(window().getPropertyDock().getShown().title, "seam4");
    EXPECT_THAT(placeUnder("In fixture (mm, °)"), ElementsAre("312.500", "68.500", "3.000"));
    EXPECT_THAT(placeUnder("In the world (mm, °)"), ElementsAre("1180.000", "-34.000", "580.500"));
    EXPECT_EQ(placeUnder("seam3: In fixture (mm, °)").size(), 3u);
    Layout::inst().tasks.front()->moveObjectFrame(fixture, before);
}

TEST_F(ProgramDockTest, PropertiesOfAPostureTellItsJoints)
{
    state().selectVisuals({welding().getMoveInstructions()[0]->getId()});

    EXPECT_EQ(valueOf("axis 1"), "-35.000");
    EXPECT_EQ(valueOf("axis 5"), "60.000");
}

TEST_F(ProgramDockTest, PropertiesTellWhatAProgramHoldsAndWhatIsNotDrawn)
{
    const Task& task = *Layout::inst().tasks.front();
    state().selectVisuals({task.getId()});
    EXPECT_EQ(window().getPropertyDock().getShown().title, "Welding");
    EXPECT_EQ(valueOf("Paths"), "2");
    EXPECT_EQ(valueOf("Instructions"), "17");
    EXPECT_EQ(valueOf("Moves"), "10");
    EXPECT_EQ(valueOf("Moves that are not drawn"), "1");
    EXPECT_EQ(valueOf("Robot"), "Robot");

    state().selectVisuals({task.getOwnPaths()[1]->getInstructions()[1]->getId()});
    EXPECT_EQ(valueOf("Not drawn"), "not known before it runs");

    state().selectVisuals({task.getOwnPaths()[0]->getId(), task.getOwnPaths()[1]->getId()});
    EXPECT_EQ(window().getPropertyDock().getShown().title, "2 things selected");
}

TEST_F(ProgramDockTest, FocusOnAPathShowsAllOfItsTargets)
{
    using vrk::visual::Camera;
    const vrk::rob::Posef before = Camera::Get()->getWorldPose();

    emit dock().focusRequested(welding().getId());
    ASSERT_TRUE(waitFor([] { return !window().getFlight().isFlying(); }));
    settle();

    const vrk::rob::Posef there = Camera::Get()->getWorldPose();
    EXPECT_NE(there.position, before.position);
    const float slope = std::tan(Camera::Get()->getVFOV() / 2);
    for (const MoveInst* move : welding().getMoveInstructions()) {
        const vrk::rob::Posd place =
            (worldPoseOfThing(move->getTargetItem()->getOwnerId()) * move->getTargetItem()->getPose()).position;
        const vrk::rob::Posf seen =
            there.inverse() *
            vrk::rob::Posf(static_cast<float>(place.x), static_cast<float>(place.y), static_cast<float>(place.z));
        EXPECT_LT(seen.z, 0);
        EXPECT_LT(std::abs(seen.y / seen.z), slope);
        EXPECT_LT(std::abs(seen.x / seen.z), slope * Camera::Get()->getAspectRatio());
    }
    window().getFlight().flyTo(before);
    ASSERT_TRUE(waitFor([] { return !window().getFlight().isFlying(); }));
}

TEST_F(ProgramDockTest, NothingOfAProgramCanBeRenamedOrDeleted)
{
    state().selectVisuals({welding().getId()});

    for (const QAction* action : window().QWidget::actions()) {
        const bool changes =
            action->shortcut() == QKeySequence(Qt::Key_F2) || action->shortcut() == QKeySequence(Qt::Key_Delete);
        EXPECT_FALSE(changes && action->isEnabled()) << action->text().toStdString();
    }
}

TEST_F(ProgramDockTest, HundredThousandMovesAreQuick)
{
    const auto task = std::make_shared<Task>(newId(), "long");
    const auto path = pathOf(*task, "way", 100000);
    Layout::inst().addTask(task);
    const auto took = [](const char* what, double most, const std::function<void()>& act) {
        const double milliseconds = 1e3 * vrk::test::threadSecondsOf(act);
        std::cout << what << ": " << milliseconds << " ms" << std::endl;
        EXPECT_LT(milliseconds, most) << what;
    };

    took("the station told", 800, [] { state().stationHasChanged(); });
    took("opened", 200, [&] { tree().expand(model().indexOf(path->getId())); });
    took("painted", 400, [] { tree().viewport()->repaint(); });
    took("a row selected", 300, [&] { state().selectVisuals({path->getInstructions()[70000]->getId()}); });
    took("filtered", 500, [] { dock().getFilter().setText("p999"); });
    took("unfiltered", 500, [] { dock().getFilter().clear(); });
    took("all selected", 2500, [] { tree().selectAll(); });
    took("the mouse's thing", 300, [&] { state().selectVisuals({path->getInstructions()[5]->getId()}); });
    took("gone", 1000, [&] {
        Layout::inst().remove(task->getId());
        state().stationHasChanged();
    });
}

} // namespace
} // namespace vrkview::test
