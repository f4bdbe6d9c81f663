#include "FakeInput.h"
#include "WindowFixture.h"
#include "docks/PropertyDock.h"
#include "docks/StationTreeModel.h"
#include "docks/TreeDock.h"
#include "docks/TreeView.h"
#include "edit/History.h"

#include "platform/layout/Layout.h"
#include "scene/Scene.h"
#include "view/Camera.h"
#include "visual/Visual.h"

#include <gmock/gmock.h>

#include <QAbstractItemModelTester>
#include <QLineEdit>

namespace vrkview::test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using vrk::VisualType;
using vrk::visual::Camera;
using vrk::visual::Scene;

class DocksTest : public WindowFixture {
protected:
    void TearDown() override
    {
        tree().getFilter().clear();
        state().clear();
        state().showAll();
        settle();
    }
    static ViewState& state() { return window().getState(); }
    static TreeDock& tree() { return window().getTreeDock(); }
    static QAbstractItemModel& rows() { return *tree().getTreeView().model(); }
    /// The things at the top of the tree of this kind.
    static std::vector<unsigned> topmost(VisualType kind)
    {
        std::vector<unsigned> ids;
        for (const int root : state().getTree().getRoots()) {
            const StationTree::Row& row = state().getTree().getRows()[static_cast<std::size_t>(root)];
            if (row.kind == kind)
                ids.push_back(row.id);
        }
        return ids;
    }
    static unsigned firstChildOf(unsigned id)
    {
        const std::vector<StationTree::Row>& all = state().getTree().getRows();
        const StationTree::Row& row = all[static_cast<std::size_t>(state().getTree().find(id))];
        return all[static_cast<std::size_t>(row.children.front())].id;
    }
    static std::vector<unsigned> markedInTree()
    {
        std::vector<unsigned> ids;
        for (const QModelIndex& index : tree().getTreeView().selectionModel()->selectedRows())
            ids.push_back(index.data(StationTreeModel::IdRole).toUInt());
        return ids;
    }
};

TEST_F(DocksTest, TreeIsAProperModel)
{
    const QAbstractItemModelTester tester(&tree().getModel(), QAbstractItemModelTester::FailureReportingMode::Fatal);

    EXPECT_GT(tree().getModel().rowCount(), 3);
    shoot("window");
}

TEST_F(DocksTest, SelectedRowIsSelectedInTheView)
{
    const unsigned part = topmost(VisualType::Part).front();
    const QImage before = seen();

    tree().getTreeView().selectionModel()->select(
        rows().match(rows().index(0, 0), StationTreeModel::IdRole, part).front(),
        QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    settle();

    EXPECT_THAT(state().getSelected(), ElementsAre(part));
    EXPECT_THAT(Scene::Get()->getSelectedVisuals(), ElementsAre(part));
    EXPECT_NE(seen(), before);
}

TEST_F(DocksTest, WhatIsSelectedElsewhereIsMarkedInTheTree)
{
    const unsigned body = firstChildOf(topmost(VisualType::Part)[1]);

    state().selectVisuals({body});

    EXPECT_THAT(markedInTree(), ElementsAre(body));
    settle();
    shoot("selected");
}

TEST_F(DocksTest, SelectionMadeInTheSceneItselfIsTakenOver)
{
    const unsigned part = topmost(VisualType::Part).front();

    Scene::Get()->setVisualsSelected({part});

    EXPECT_TRUE(waitFor([part] { return state().isSelected(part); }));
    EXPECT_THAT(markedInTree(), ElementsAre(part));
}

TEST_F(DocksTest, ToggleAddsAndTakesAway)
{
    const std::vector<unsigned> parts = topmost(VisualType::Part);
    state().toggle(parts[0]);
    state().toggle(parts[1]);
    EXPECT_THAT(state().getSelected(), ElementsAre(parts[0], parts[1]));

    state().toggle(parts[0]);

    EXPECT_THAT(state().getSelected(), ElementsAre(parts[1]));
    settle();
    EXPECT_THAT(Scene::Get()->getSelectedVisuals(), ElementsAre(parts[1]));
}

TEST_F(DocksTest, EscapeClearsTheSelectionAndThePictureIsAsBefore)
{
    const QImage before = seen();
    state().selectVisuals(topmost(VisualType::Part));
    settle();

    const QImage last = after("Escape");

    EXPECT_THAT(state().getSelected(), IsEmpty());
    EXPECT_EQ(last, before);
}

TEST_F(DocksTest, HiddenPartIsGoneFromTheViewAndComesBack)
{
    const QImage before = seen();
    const unsigned part = topmost(VisualType::Part).front();
    state().selectVisuals({part});

    const QImage without = after("h");

    EXPECT_NE(without, before);
    EXPECT_EQ(state().shownOf(part), ViewState::Shown::Not);
    EXPECT_FALSE(Scene::GetVisual(part)->isVisible());
    EXPECT_THAT(vrk::layout::Layout::inst().visibilities, ElementsAre(part)); // and so in a saved station
    shoot("hidden");
    state().showAll();
    settle();
    EXPECT_EQ(seen(), before);
    EXPECT_THAT(vrk::layout::Layout::inst().visibilities, IsEmpty());
}

TEST_F(DocksTest, PartWithOneHiddenBodyIsPartlyShown)
{
    const unsigned part = topmost(VisualType::Part)[1];
    const unsigned body = firstChildOf(part);

    state().setVisible({body}, false);

    EXPECT_EQ(state().shownOf(body), ViewState::Shown::Not);
    EXPECT_EQ(state().shownOf(part), ViewState::Shown::Partly);
}

TEST_F(DocksTest, BodyShownInAHiddenPartBringsThePartBackInPart)
{
    const unsigned part = topmost(VisualType::Part)[1];
    const unsigned body = firstChildOf(part);
    state().setVisible({part}, false);

    state().setVisible({body}, true);
    settle();

    EXPECT_EQ(state().shownOf(body), ViewState::Shown::Whole);
    EXPECT_EQ(state().shownOf(part), ViewState::Shown::Partly);
    EXPECT_TRUE(Scene::GetVisual(body)->isVisible());
}

TEST_F(DocksTest, WhatIsHiddenStaysHiddenInEveryDisplayMode)
{
    const unsigned part = topmost(VisualType::Part).front();
    state().setVisible({part}, false);

    for (const char* key : {"F5", "F7", "F8", "F6"}) {
        after(key);
        EXPECT_FALSE(Scene::GetVisual(firstChildOf(part))->isVisible()) << key;
    }
}

TEST_F(DocksTest, ClickOnTheEyeHidesAndSelectsNothing)
{
    const QModelIndex eye = rows().index(0, StationTreeModel::Eye);
    const unsigned id = eye.data(StationTreeModel::IdRole).toUInt();
    QWidget& area = *tree().getTreeView().viewport();
    tree().getTreeView().scrollTo(eye);
    settle();

    moveMouse(area, tree().getTreeView().visualRect(eye).center());
    clickLeft();

    EXPECT_TRUE(waitFor([id] { return state().shownOf(id) == ViewState::Shown::Not; }));
    EXPECT_THAT(state().getSelected(), IsEmpty());
    clickLeft();
    EXPECT_TRUE(waitFor([id] { return state().shownOf(id) == ViewState::Shown::Whole; }));
}

TEST_F(DocksTest, FilterShowsWhatMatchesAndWhatItLiesIn)
{
    const int all = rows().rowCount();
    const std::string name =
        state().getTree().getRows()[static_cast<std::size_t>(state().getTree().getRoots()[1])].name;

    tree().getFilter().setText(QString::fromStdString(name).toUpper());

    EXPECT_GE(rows().rowCount(), 1);
    EXPECT_LT(rows().rowCount(), all);
    tree().getFilter().setText("no such name");
    EXPECT_EQ(rows().rowCount(), 0);
    tree().getFilter().clear();
    EXPECT_EQ(rows().rowCount(), all);
}

TEST_F(DocksTest, LettersTypedIntoTheFilterAreNoCommands)
{
    const auto before = Camera::Get()->getWorldPose();
    tree().getFilter().setFocus();

    typeKey("1");

    EXPECT_TRUE(waitFor([] { return tree().getFilter().text() == "1"; }));
    typeKey("Escape");
    EXPECT_TRUE(waitFor([] { return tree().getFilter().text().isEmpty(); }));
    settle();
    EXPECT_EQ(Camera::Get()->getWorldPose(), before);
}

TEST_F(DocksTest, PropertiesTellOfOneThing)
{
    const unsigned part = topmost(VisualType::Part)[1];

    state().selectVisuals({part});

    const Properties& shown = window().getPropertyDock().getShown();
    EXPECT_EQ(shown.subtitle, QString("Part · id %1").arg(part));
    const auto position = vrk::rob::Posed(Scene::GetVisual(part)->getWorldPose()).position;
    EXPECT_THAT(shown.lines, Contains(Properties::Line{"X", QString::number(position.x, 'f', 3), "Rx", "0.000"}));
    EXPECT_TRUE(shown.canBePainted);
}

TEST_F(DocksTest, PropertiesOfSeveralThingsAreTheirSums)
{
    const std::vector<unsigned> parts = topmost(VisualType::Part);

    state().selectVisuals({parts[0], parts[2]}); // the pedestal and the bench, of two bodies each

    EXPECT_EQ(window().getPropertyDock().getShown().title, "2 things selected");
    EXPECT_THAT(window().getPropertyDock().getShown().lines, Contains(Properties::Line{"Bodies", "4", {}, {}}));
}

TEST_F(DocksTest, PaintedPartIsSeenAndUndoBringsItsColoursBack)
{
    const QImage before = seen();
    const unsigned part = topmost(VisualType::Part).front();
    state().selectVisuals({part});

    window().getPropertyDock().paintSelected(QColor(250, 20, 20));
    state().clear();
    settle();
    const QImage painted = seen();
    EXPECT_EQ(state().getHistory().undoText(), "Colour Pedestal");
    {
        const HeldKey control("Control_L");
        typeKey("z");
    }
    settle();

    EXPECT_NE(painted, before);
    EXPECT_EQ(seen(), before);
}

TEST_F(DocksTest, FocusFliesToTheSelectedThing)
{
    after("0");
    const auto far = Camera::Get()->getWorldPosition();
    state().selectVisuals({topmost(VisualType::Part)[2]});

    emit tree().focusRequested(topmost(VisualType::Part)[2]);
    settle();

    EXPECT_FALSE(window().getFlight().isFlying());
    EXPECT_GT((Camera::Get()->getWorldPosition() - far).length(), 50);
    shoot("focus");
    after("0");
}

} // namespace
} // namespace vrkview::test
