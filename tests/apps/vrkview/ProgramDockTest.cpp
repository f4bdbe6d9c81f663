#include "docks/ProgramDock.h"
#include "FakeInput.h"
#include "Programs.h"
#include "WindowFixture.h"
#include "docks/ProgramModel.h"
#include "docks/ProgramView.h"
#include "docks/TreeDock.h"
#include "docks/TreeView.h"

#include "platform/layout/Layout.h"

#include <gmock/gmock.h>

#include <QAbstractItemModelTester>
#include <QAction>
#include <QElapsedTimer>
#include <QLineEdit>

namespace vrkview::test {
namespace {

using namespace vrk::task;
using testing::ElementsAre;
using testing::IsEmpty;
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
    QElapsedTimer timer;
    const auto took = [&timer](const char* what, qint64 most, const std::function<void()>& act) {
        timer.start();
        act();
        const qint64 milliseconds = timer.elapsed();
        std::cout << what << ": " << milliseconds << " ms" << std::endl;
        EXPECT_LT(milliseconds, most) << what;
    };

    took("the station told", 2000, [] { state().stationHasChanged(); });
    took("opened", 2000, [&] { tree().expand(model().indexOf(path->getId())); });
    took("painted", 1000, [] { tree().viewport()->repaint(); });
    took("a row selected", 1000, [&] { state().selectVisuals({path->getInstructions()[70000]->getId()}); });
    took("filtered", 2000, [] { dock().getFilter().setText("p999"); });
    took("unfiltered", 2000, [] { dock().getFilter().clear(); });
    took("all selected", 4000, [] { tree().selectAll(); });
    took("the mouse's thing", 2000, [&] { state().selectVisuals({path->getInstructions()[5]->getId()}); });
    took("gone", 4000, [&] {
        Layout::inst().remove(task->getId());
        state().stationHasChanged();
    });
}

} // namespace
} // namespace vrkview::test
