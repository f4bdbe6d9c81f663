#include "docks/TreeView.h"

#include "docks/StationTreeModel.h"

#include <QHeaderView>
#include <QMouseEvent>

namespace vrkview {

TreeView::TreeView(QWidget* parent) : QTreeView(parent)
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

bool TreeView::clickEye(const QMouseEvent& event)
{
    const QModelIndex index = indexAt(event.position().toPoint());
    if (event.button() != Qt::LeftButton || index.column() != StationTreeModel::Eye)
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
