#include "edit/CloudActions.h"

#include "canvas/ViewState.h"
#include "edit/History.h"
#include "edit/MenuAction.h"

#include "visual/VisualType.h"

#include <QAction>
#include <QFileDialog>
#include <QFileInfo>
#include <QMenu>

#include <Standard_Failure.hxx>

#include <algorithm>

namespace vrkview {

CloudActions::CloudActions(QWidget& window, ViewState& state)
    : QObject(&window), window(window), state(state),
      hide(add(tr("Hide &Points"), QKeySequence(Qt::Key_P), &CloudActions::hidePoints)),
      showOnly(add(tr("Show &Only These Points"), QKeySequence(Qt::CTRL | Qt::Key_P), &CloudActions::showOnlyPoints)),
      showAll(add(tr("Show All Poin&ts"), QKeySequence(Qt::CTRL | Qt::ALT | Qt::Key_P), &CloudActions::showAllPoints)),
      cut(add(tr("C&ut Points Off"), QKeySequence(Qt::CTRL | Qt::Key_X), &CloudActions::cutPoints)),
      save(add(tr("&Save Points As…"), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_P), &CloudActions::askWhereToSave))
{
    connect(&state, &ViewState::selectionChanged, this, &CloudActions::followState);
    connect(&state, &ViewState::visibilityChanged, this, &CloudActions::followState);
    connect(&state, &ViewState::stationChanged, this, &CloudActions::followState);
    followState();
}

QAction* CloudActions::add(const QString& text, const QKeySequence& key, void (CloudActions::*run)())
{
    return menuAction(window, this, text, key, run);
}

void CloudActions::fillMenu(QMenu& menu) const
{
    menu.addActions({hide, showOnly, showAll, cut, save});
}

void CloudActions::fillTreeMenu(QWidget& tree) const
{
    tree.addActions({showAll, save});
}

void CloudActions::hidePoints()
{
    attempt([this] { state.getHistory().push(HidePoints::Also(state.getSelectedPoints())); });
}

void CloudActions::showOnlyPoints()
{
    if (state.getSelectedPoints().empty())
        return; // nothing would be left
    std::vector<unsigned> shown;
    for (const StationTree::Row& row : state.getTree().getRows())
        if (row.kind == vrk::VisualType::PointCloud && !state.isHidden(row.id))
            shown.push_back(row.id);
    attempt([this, &shown] { state.getHistory().push(HidePoints::AllBut(state.getSelectedPoints(), shown)); });
}

void CloudActions::showAllPoints()
{
    attempt([this] { state.getHistory().push(HidePoints::None()); });
}

void CloudActions::cutPoints()
{
    attempt([this] {
        auto change = std::make_unique<CutPoints>(state.getSelectedPoints());
        if (!change->isNeeded())
            return;
        const std::vector<unsigned> made = change->getMade();
        state.clear(); // the numbers are those of other points then
        state.getHistory().push(std::move(change));
        state.selectVisuals(made);
    });
}

void CloudActions::askWhereToSave()
{
    const QString path = QFileDialog::getSaveFileName(&window, tr("Save Points As"), {},
                                                      tr("Point clouds, binary (*.ply);;Point clouds, text (*.xyz)"));
    if (!path.isEmpty())
        savePointsTo(path);
}

void CloudActions::savePointsTo(QString path)
{
    if (QFileInfo(path).suffix().isEmpty())
        path += ".ply";
    try {
        savePoints(pointsToSave(), path.toStdString());
        emit saved(path);
    } catch (const std::exception& failure) {
        emit failed(tr("%1. Choose another folder or name.").arg(QString::fromUtf8(failure.what())));
    }
}

PointsOfClouds CloudActions::pointsToSave() const
{
    PointsOfClouds points = state.getSelectedPoints();
    for (const unsigned id : state.getSelected())
        if (cloudOf(id))
            points.emplace(id, shownPointsOf(id));
    return points;
}

void CloudActions::attempt(const std::function<void()>& act)
{
    try {
        act();
    } catch (const Standard_Failure& failure) {
        emit failed(tr("%1\nThe station is as before.").arg(failure.GetMessageString()));
    } catch (const std::exception& failure) {
        emit failed(tr("%1\nThe station is as before.").arg(QString::fromUtf8(failure.what())));
    }
}

void CloudActions::followState()
{
    const bool any = !state.getSelectedPoints().empty();
    hide->setEnabled(any);
    showOnly->setEnabled(any);
    cut->setEnabled(any);
    showAll->setEnabled(countHiddenPoints() > 0);
    save->setEnabled(any ||
                     std::ranges::any_of(state.getSelected(), [](unsigned id) { return cloudOf(id) != nullptr; }));
}

} // namespace vrkview
