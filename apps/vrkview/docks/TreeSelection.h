#pragma once

#include <QModelIndex>
#include <QObject>
#include <QScopedValueRollback>

#include <functional>

namespace vrkview {

class TreeView;
class ViewState;

/// Keeps what is marked in a tree and what is selected in the view the same, as far as the tree shows it. With Ctrl held,
/// what is selected beside the tree, in another tree or behind its filter, stays selected.
///
/// Owner: its parent, the dock of the tree.
class TreeSelection : public QObject {
    Q_OBJECT

public:
    /// @param tree     with its model.
    /// @param idRole   of the model: the id of a row's thing.
    /// @param indexOf  the row of a thing in the model; an invalid index where the tree does not show it.
    /// All outlive this.
    TreeSelection(TreeView& tree, ViewState& state, int idRole, std::function<QModelIndex(unsigned)> indexOf,
                  QObject* parent);

    /// Marks what is selected in the view.
    void show();
    /// While the result lives, neither follows the other: rows come and go without a choice of the user.
    [[nodiscard]] QScopedValueRollback<bool> hold() { return QScopedValueRollback<bool>(isHeld, true); }

private:
    void take();

    TreeView& tree;
    ViewState& state;
    int idRole;
    std::function<QModelIndex(unsigned)> indexOf;
    bool isHeld = false;
};

} // namespace vrkview
