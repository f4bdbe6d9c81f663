#pragma once

#include "docks/TreeView.h"

namespace vrkview {

/// The tree of the programs. In a row the last text goes on to the end of the row, over columns that have nothing to tell:
/// the text of a condition is longer than the word for a move.
class ProgramView : public TreeView {
    Q_OBJECT

public:
    explicit ProgramView(QWidget* parent = nullptr);

protected:
    void drawRow(QPainter* painter, const QStyleOptionViewItem& options, const QModelIndex& index) const override;
};

} // namespace vrkview
