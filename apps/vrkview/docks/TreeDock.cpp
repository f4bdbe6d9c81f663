#include "docks/TreeDock.h"

#include "docks/StationTreeModel.h"
#include "docks/TreeView.h"

#include <QEvent>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLineEdit>
#include <QScopedValueRollback>
#include <QSortFilterProxyModel>
#include <QVBoxLayout>

#include <algorithm>
#include <map>

namespace vrkview {
namespace {

constexpr int eyeWidth = 28;
constexpr int manyRows = 20000; // above that what a filter lets through stays closed

/// The ranges that these indexes, of one parent, make.
void appendRanges(std::vector<QModelIndex>& indexes, QItemSelection& ranges)
{
    std::sort(indexes.begin(), indexes.end());
    for (std::size_t first = 0; first < indexes.size();) {
        std::size_t end = first + 1;
        while (end < indexes.size() && indexes[end].row() == indexes[end - 1].row() + 1)
            ++end;
        ranges.append(QItemSelectionRange(indexes[first], indexes[end - 1]));
        first = end;
    }
}

} // namespace

TreeDock::TreeDock(ViewState& state, QWidget* parent)
    : QDockWidget(tr("Station"), parent), state(state), filter(new QLineEdit), tree(new TreeView),
      model(new StationTreeModel(state, this)), filtered(new QSortFilterProxyModel(this))
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

    filter->setPlaceholderText(tr("Filter by name"));
    filter->setClearButtonEnabled(true);
    filter->installEventFilter(this);
    connect(filter, &QLineEdit::textChanged, this, &TreeDock::applyFilter);
    connect(&state, &ViewState::selectionChanged, this, &TreeDock::showSelection);
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

    connect(tree->selectionModel(), &QItemSelectionModel::selectionChanged, this, &TreeDock::takeSelection);
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
        showSelection();
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

void TreeDock::takeSelection()
{
    if (isShowing)
        return;
    std::vector<unsigned> ids;
    for (const QModelIndex& index : tree->selectionModel()->selectedRows())
        ids.push_back(idOf(index));
    {
        const QScopedValueRollback showing(isShowing, true); // the tree has it already
        state.selectVisuals(ids);
    }
    if (state.getSelected() != ids)
        showSelection(); // but for what is hidden, which cannot be selected
}

void TreeDock::showSelection()
{
    if (isShowing)
        return;
    const QScopedValueRollback showing(isShowing, true);
    // Neighbours make one range: with a range for each row a selection of thousands takes seconds.
    std::map<QModelIndex, std::vector<QModelIndex>> byParent;
    QModelIndex last;
    for (const unsigned id : state.getSelected())
        if (const QModelIndex index = filtered->mapFromSource(model->indexOf(id)); index.isValid()) {
            byParent[index.parent()].push_back(index);
            last = index;
        }
    QItemSelection rows;
    for (auto& [parent, indexes] : byParent)
        appendRanges(indexes, rows);
    tree->selectionModel()->select(rows, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    if (last.isValid()) {
        tree->selectionModel()->setCurrentIndex(last, QItemSelectionModel::NoUpdate);
        tree->scrollTo(last); // which opens what it lies in
    }
}

void TreeDock::applyFilter(const QString& text)
{
    const QScopedValueRollback showing(isShowing, true); // what the filter takes out stays selected in the view
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

bool TreeDock::eventFilter(QObject* watched, QEvent* event)
{
    // Esc belongs to the filter as long as there is something in it.
    if (watched == filter && !filter->text().isEmpty() &&
        (event->type() == QEvent::ShortcutOverride || event->type() == QEvent::KeyPress) &&
        static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape) {
        if (event->type() == QEvent::KeyPress)
            filter->clear();
        event->accept();
        return true;
    }
    return QDockWidget::eventFilter(watched, event);
}

} // namespace vrkview
