#include "measure/MeasureActions.h"

#include "canvas/ViewState.h"
#include "edit/History.h"
#include "edit/MenuAction.h"
#include "measure/MeasureTool.h"
#include "measure/StationDimensions.h"
#include "window/Glyphs.h"

#include <QAction>
#include <QClipboard>
#include <QGuiApplication>
#include <QMenu>
#include <QToolBar>

namespace vrkview {

MeasureActions::MeasureActions(QWidget& window, ViewState& state, MeasureTool& tool)
    : QObject(&window), window(window), state(state), tool(tool),
      measure(add(tr("&Measure"), QKeySequence(Qt::Key_D), &MeasureActions::toggle)),
      alone(add(tr("Measure the first thing &alone"), QKeySequence(Qt::Key_Return), &MeasureActions::measureFirst)),
      copyAction(add(tr("&Copy the measured value"), QKeySequence(Qt::CTRL | Qt::Key_C), &MeasureActions::copy)),
      remove(add(tr("Delete &dimensions"), QKeySequence(Qt::Key_Delete), &MeasureActions::removeSelected))
{
    measure->setCheckable(true);
    measure->setIcon(glyph(Glyph::Measure));
    measure->setToolTip(tr("Measure (D)"));
    connect(&tool, &MeasureTool::changed, this, &MeasureActions::followState);
    connect(&state, &ViewState::selectionChanged, this, [this] {
        if (this->state.isAnySelected()) // one key deletes either
            StationDimensions::Get().select({});
        followState();
    });
    following = StationDimensions::Get().changed.connect([this] { followState(); });
    followState();
}

QAction* MeasureActions::add(const QString& text, const QKeySequence& key, void (MeasureActions::*run)())
{
    return menuAction(window, this, text, key, run);
}

void MeasureActions::fillMenu(QMenu& menu) const
{
    menu.addActions({measure, alone, copyAction, remove});
}

void MeasureActions::fillToolBar(QToolBar& bar) const
{
    bar.addAction(measure);
}

void MeasureActions::fillListMenu(QWidget& list) const
{
    list.addActions({copyAction, remove});
}

void MeasureActions::toggle()
{
    tool.setOn(!tool.isOn());
    followState();
}

void MeasureActions::measureFirst()
{
    tool.measureFirst();
}

void MeasureActions::copy()
{
    const std::vector<StationDimensions::Entry>& all = StationDimensions::Get().getEntries();
    QStringList lines;
    for (const StationDimensions::Entry& each : all)
        if (each.isSelected)
            lines << QString::fromStdString(each.text());
    if (lines.isEmpty() && !tool.getToldOnly().isEmpty())
        lines << tool.getToldOnly();
    if (lines.isEmpty() && !all.empty())
        lines << QString::fromStdString(all.back().text());
    QGuiApplication::clipboard()->setText(lines.join('\n'));
}

void MeasureActions::removeSelected()
{
    state.getHistory().push(removeDimensions(StationDimensions::Get().getSelected()));
}

void MeasureActions::followState()
{
    const StationDimensions& dimensions = StationDimensions::Get();
    measure->setChecked(tool.isOn());
    alone->setEnabled(tool.getFirst() != nullptr);
    copyAction->setEnabled(!dimensions.getEntries().empty() || !tool.getToldOnly().isEmpty());
    remove->setEnabled(!dimensions.getSelected().empty());
}

} // namespace vrkview
