#include "docks/TreeView.h"

#include <QHeaderView>
#include <QMouseEvent>
#include <QScopedValueRollback>

#include <algorithm>
#include <map>

namespace vrkview {
namespace {

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

TreeView::TreeView(std::optional<int> eyeColumn, QWidget* parent) : QTreeView(parent), eyeColumn(eyeColumn)
{
    setUniformRowHeights(true); // with many thousands of rows none is asked for its height
    setHeaderHidden(true);
    setSelectionMode(ExtendedSelection);
    setExpandsOnDoubleClick(false);
    setAllColumnsShowFocus(true);
    setIndentation(16);
    setIconSize({16, 16});
    setFrameShape(QFrame::NoFrame);
    setTextElideMode(Qt::ElideRight);
}

void TreeView::markRows(const std::vector<QModelIndex>& rows)
{
    // Neighbours make one range: with a range for each row a selection of thousands takes seconds.
    std::map<QModelIndex, std::vector<QModelIndex>> byParent;
    for (const QModelIndex& row : rows)
        byParent[row.parent()].push_back(row);
    QItemSelection ranges;
    for (auto& [parent, indexes] : byParent)
        appendRanges(indexes, ranges);
    selectionModel()->select(ranges, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    if (rows.empty())
        return;
    selectionModel()->setCurrentIndex(rows.back(), QItemSelectionModel::NoUpdate);
    scrollTo(rows.back());
}

bool TreeView::viewportEvent(QEvent* event)
{
    const auto* mouse = dynamic_cast<const QMouseEvent*>(event);
    const QScopedValueRollback held(extending, mouse && mouse->modifiers().testFlag(Qt::ControlModifier));
    return QTreeView::viewportEvent(event);
}

void TreeView::keyPressEvent(QKeyEvent* event)
{
    const bool isAll = event->matches(QKeySequence::SelectAll); // of this tree, and nothing else
    const QScopedValueRollback held(extending, !isAll && event->modifiers().testFlag(Qt::ControlModifier));
    QTreeView::keyPressEvent(event);
}

bool TreeView::clickEye(const QMouseEvent& event)
{
    const QModelIndex index = indexAt(event.position().toPoint());
    if (event.button() != Qt::LeftButton || !index.isValid() || index.column() != eyeColumn)
        return false;
    emit eyeClicked(index);
    return true;
}

void TreeView::mousePressEvent(QMouseEvent* event)
{
    if (!clickEye(*event))
        QTreeView::mousePressEvent(event);
}

void TreeView::mouseDoubleClickEvent(QMouseEvent* event)
{
    if (clickEye(*event))
        return;
    QTreeView::mouseDoubleClickEvent(event);
    if (const QModelIndex index = indexAt(event->position().toPoint()); index.isValid())
        emit focusRequested(index);
}

} // namespace vrkview
