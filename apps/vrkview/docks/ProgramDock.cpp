#include "docks/ProgramDock.h"

#include "canvas/ViewState.h"
#include "docks/FilterLine.h"
#include "docks/ProgramModel.h"
#include "docks/ProgramView.h"
#include "docks/TreeSelection.h"

#include <QHeaderView>
#include <QVBoxLayout>

#include <utility>

namespace vrkview {
namespace {

constexpr int stepWidth = 112, speedWidth = 52, zoneWidth = 42;
constexpr std::size_t manyRows = 20000; // above that what a filter lets through stays closed

} // namespace

ProgramDock::ProgramDock(ViewState& state, QWidget* parent)
    : QDockWidget(tr("Program"), parent), state(state), filter(new FilterLine(tr("Filter by text"))),
      tree(new ProgramView), model(new ProgramModel(this))
{
    setObjectName("program");
    buildTree();
    auto* content = new QWidget;
    auto* column = new QVBoxLayout(content);
    column->setContentsMargins(6, 6, 6, 0);
    column->setSpacing(6);
    column->addWidget(filter);
    column->addWidget(tree);
    setWidget(content);

    connect(filter, &QLineEdit::textChanged, this, &ProgramDock::applyFilter);
    connect(&state, &ViewState::stationChanged, this, &ProgramDock::followStation);
    expandNew();
}

void ProgramDock::buildTree()
{
    tree->setModel(model);
    QHeaderView& header = *tree->header();
    header.setStretchLastSection(false);
    header.setSectionResizeMode(ProgramModel::Target, QHeaderView::Stretch);
    header.resizeSection(ProgramModel::Step, stepWidth);
    header.resizeSection(ProgramModel::Speed, speedWidth);
    header.resizeSection(ProgramModel::Zone, zoneWidth);
    header.setSectionsMovable(false);

    selection = new TreeSelection(
        *tree, state, ProgramModel::IdRole, [this](unsigned id) { return model->indexOf(id); }, this);
    connect(tree, &TreeView::focusRequested, this,
            [this](const QModelIndex& index) { emit focusRequested(idOf(index)); });
    connect(tree, &QTreeView::expanded, this, [this](const QModelIndex& index) {
        if (filter->text().isEmpty())
            expanded.insert(idOf(index));
    });
    connect(tree, &QTreeView::collapsed, this, [this](const QModelIndex& index) {
        if (filter->text().isEmpty())
            expanded.erase(idOf(index));
    });
}

bool ProgramDock::hasPrograms() const
{
    return model->rowCount() > 0 || !filter->text().isEmpty();
}

unsigned ProgramDock::idOf(const QModelIndex& index) const
{
    return index.data(ProgramModel::IdRole).toUInt();
}

void ProgramDock::followStation()
{
    {
        const auto held = selection->hold(); // what is gone was selected no more
        model->follow();
        expandNew();
    }
    selection->show();
}

/// Programs open so that their paths are seen, and the steps of a path that is alone.
void ProgramDock::expandNew()
{
    for (int i = 0; i < model->rowCount(); ++i) {
        const QModelIndex task = model->index(i, 0);
        if (!known.insert(idOf(task)).second)
            continue;
        tree->expand(task);
        if (model->rowCount() == 1 && model->rowCount(task) == 1)
            tree->expand(model->index(0, 0, task));
    }
}

void ProgramDock::applyFilter(const QString& text)
{
    {
        const auto held = selection->hold(); // what the filter takes out stays selected in the view
        model->setFilter(text);
        if (text.isEmpty()) {
            tree->collapseAll();
            for (const unsigned id : std::unordered_set(expanded))
                if (const QModelIndex index = model->indexOf(id); index.isValid())
                    tree->expand(index);
        } else if (model->count() <= manyRows) {
            tree->expandAll();
        }
    }
    selection->show();
}

} // namespace vrkview
