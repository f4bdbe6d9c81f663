#include "docks/ProgramView.h"

#include "docks/ProgramModel.h"

#include <QPainter>
#include <QStyledItemDelegate>

namespace vrkview {
namespace {

constexpr int narrowIndentation = 12; // there are columns to show

/// The last column of the row with a text.
int lastWithText(const QModelIndex& row)
{
    for (int column = ProgramModel::Zone; column > ProgramModel::Step; --column)
        if (!row.siblingAtColumn(column).data().toString().isEmpty())
            return column;
    return ProgramModel::Step;
}

/// Leaves the text that goes on behind its column to the view.
class ShortTexts : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override
    {
        QStyledItemDelegate::initStyleOption(option, index);
        if (index.column() < ProgramModel::Zone && index.column() == lastWithText(index))
            option->text.clear();
    }
};

} // namespace

ProgramView::ProgramView(QWidget* parent) : TreeView(std::nullopt, parent)
{
    setItemDelegate(new ShortTexts(this));
    setHeaderHidden(false);
    setIndentation(narrowIndentation);
}

void ProgramView::drawRow(QPainter* painter, const QStyleOptionViewItem& options, const QModelIndex& index) const
{
    TreeView::drawRow(painter, options, index);
    const QModelIndex last = index.siblingAtColumn(lastWithText(index));
    if (last.column() == ProgramModel::Zone)
        return; // drawn in its column
    QStyleOptionViewItem item = options;
    item.rect = visualRect(last);
    item.features |= QStyleOptionViewItem::HasDisplay;
    if (last.column() == ProgramModel::Step)
        item.features |= QStyleOptionViewItem::HasDecoration; // the text begins behind it
    item.decorationSize = iconSize();
    item.widget = this;
    QRect room = style()->subElementRect(QStyle::SE_ItemViewItemText, &item, this);
    const int margin = style()->pixelMetric(QStyle::PM_FocusFrameHMargin, nullptr, this) + 1;
    room.adjust(margin, 0, 0, 0);
    room.setRight(viewport()->width() - margin);
    const QPalette::ColorGroup group = isActiveWindow() ? QPalette::Active : QPalette::Inactive;
    QPen pen(options.palette.color(group, QPalette::Text));
    if (selectionModel()->isSelected(index))
        pen = options.palette.color(group, QPalette::HighlightedText);
    else if (const QVariant brush = last.data(Qt::ForegroundRole); brush.isValid())
        pen = qvariant_cast<QBrush>(brush).color();
    painter->save();
    painter->setPen(pen);
    painter->drawText(room, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine,
                      fontMetrics().elidedText(last.data().toString(), Qt::ElideRight, room.width()));
    painter->restore();
}

} // namespace vrkview
