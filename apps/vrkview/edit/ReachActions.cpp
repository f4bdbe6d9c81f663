#include "edit/ReachActions.h"

#include "canvas/ViewState.h"
#include "edit/History.h"
#include "edit/MenuAction.h"
#include "edit/ShowReach.h"

#include <QAction>
#include <QMenu>

#include <algorithm>

namespace vrkview {

ReachActions::ReachActions(QWidget& window, ViewState& state)
    : QObject(&window), state(state),
      reach(menuAction(window, this, tr("Show r&each"), QKeySequence(Qt::Key_R), &ReachActions::toggle))
{
    reach->setCheckable(true);
    connect(&state, &ViewState::selectionChanged, this, &ReachActions::followState);
    connect(&state, &ViewState::stationChanged, this, &ReachActions::followState);
    connect(&state.getHistory(), &History::changed, this, &ReachActions::followState);
    followState();
}

void ReachActions::fillMenu(QMenu& menu) const
{
    menu.addAction(reach);
}

void ReachActions::fillTreeMenu(QWidget& tree) const
{
    tree.addAction(reach);
}

void ReachActions::toggle()
{
    const std::vector<unsigned> robots = robotsOf(state.getSelected());
    state.getHistory().push(std::make_unique<ShowReach>(robots, !std::ranges::all_of(robots, isReachShown)));
    followState(); // where nothing changed the menu has turned its mark over
}

void ReachActions::followState()
{
    const std::vector<unsigned> robots = robotsOf(state.getSelected());
    reach->setEnabled(!robots.empty());
    reach->setChecked(!robots.empty() && std::ranges::all_of(robots, isReachShown));
}

} // namespace vrkview
