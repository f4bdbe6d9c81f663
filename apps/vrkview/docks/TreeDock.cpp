#include "docks/TreeDock.h"

#include "docks/FilterLine.h"
#include "docks/StationTreeModel.h"
#include "docks/TreeSelection.h"
#include "docks/TreeView.h"

#include <QHeaderView>
#include <QSortFilterProxyModel>
#include <QVBoxLayout>

namespace vrkview {
namespace {

constexpr int eyeWidth = 28;
constexpr int manyRows = 20000; // above that what a filter lets through stays closed

} // namespace

TreeDock::TreeDock(ViewState& state, QWidget* parent)
    : QDockWidget(tr("Station"), parent), state(state), filter(new FilterLine(tr("Filter by name"))),
      tree(new TreeView(StationTreeModel::Eye)), model(new StationTreeModel(state, this)),
      filtered(new QSortFilterProxyModel(this))
{
    setObjectName("tree");
    buildTree();
    auto* content = new QWidget;
    auto* column = new QVBoxLayout(content);
    column->setContentsMargins(6, 6, 6, 0);
    column->setSpacing(6);
    column->addWidget(filter);
    column->addWidget(tree);
    setWidget(content);

    connect(filter, &QLineEdit::textChanged, this, &TreeDock::applyFilter);
}

void TreeDock::buildTree()
{
    filtered->setRecursiveFilteringEnabled(true);
    filtered->setAutoAcceptChildRows(true);
    filtered->setFilterCaseSensitivity(Qt::CaseInsensitive);
    filtered->setSourceModel(model);
    tree->setModel(filtered);
    tree->setEditTriggers(QAbstractItemView::NoEditTriggers); // but for `editName`
    QHeaderView& header = *tree->header();
    header.setStretchLastSection(false);
    header.setMinimumSectionSize(eyeWidth);
    header.setSectionResizeMode(StationTreeModel::Name, QHeaderView::Stretch);
    header.setSectionResizeMode(StationTreeModel::Eye, QHeaderView::Fixed);
    header.resizeSection(StationTreeModel::Eye, eyeWidth);

    selection = new TreeSelection(
        *tree, state, StationTreeModel::IdRole,
        [this](unsigned id) { return filtered->mapFromSource(model->indexOf(id)); }, this);
    connect(tree, &TreeView::eyeClicked, this, &TreeDock::toggleEye);
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
    connect(filtered, &QAbstractItemModel::modelReset, this, [this] {
        keepExpanded();
        selection->show();
    });
}

unsigned TreeDock::idOf(const QModelIndex& index) const
{
    return index.data(StationTreeModel::IdRole).toUInt();
}

void TreeDock::editName(unsigned id)
{
    const QModelIndex index = filtered->mapFromSource(model->indexOf(id));
    if (!index.isValid())
        return; // the filter leaves it out
    show();
    tree->setFocus();
    tree->scrollTo(index);
    tree->setCurrentIndex(index);
    tree->edit(index);
}

void TreeDock::applyFilter(const QString& text)
{
    const auto held = selection->hold(); // what the filter takes out stays selected in the view
    filtered->setFilterFixedString(text);
    if (text.isEmpty()) {
        tree->collapseAll();
        keepExpanded();
    } else if (static_cast<int>(state.getTree().getRows().size()) <= manyRows) {
        tree->expandAll();
    }
}

void TreeDock::keepExpanded()
{
    const std::unordered_set<unsigned> ids = expanded;
    for (const unsigned id : ids)
        tree->expand(filtered->mapFromSource(model->indexOf(id)));
}

void TreeDock::toggleEye(const QModelIndex& index)
{
    const unsigned id = idOf(index);
    const bool visible = state.shownOf(id) == ViewState::Shown::Not;
    // The eye of a selected thing is that of all of them.
    state.setVisible(state.isSelected(id) ? state.getSelected() : std::vector{id}, visible);
}

} // namespace vrkview
