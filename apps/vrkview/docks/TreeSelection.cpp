#include "docks/TreeSelection.h"

#include "canvas/ViewState.h"
#include "docks/TreeView.h"

#include <utility>
#include <vector>

namespace vrkview {

TreeSelection::TreeSelection(TreeView& tree, ViewState& state, int idRole, std::function<QModelIndex(unsigned)> indexOf,
                             QObject* parent)
    : QObject(parent), tree(tree), state(state), idRole(idRole), indexOf(std::move(indexOf))
{
    connect(tree.selectionModel(), &QItemSelectionModel::selectionChanged, this, &TreeSelection::take);
    connect(&state, &ViewState::selectionChanged, this, &TreeSelection::show);
}

void TreeSelection::take()
{
    if (isHeld)
        return;
    std::vector<unsigned> ids;
    if (tree.isExtending())
        for (const unsigned id : state.getSelected())
            if (!indexOf(id).isValid())
                ids.push_back(id);
    for (const QModelIndex& index : tree.selectionModel()->selectedRows())
        ids.push_back(index.data(idRole).toUInt());
    {
        const auto held = hold(); // the tree has it already
        state.selectVisuals(ids);
    }
    if (state.getSelected() != ids)
        show(); // but for what is hidden, which cannot be selected
}

void TreeSelection::show()
{
    if (isHeld)
        return;
    const auto held = hold();
    std::vector<QModelIndex> rows;
    for (const unsigned id : state.getSelected())
        if (const QModelIndex index = indexOf(id); index.isValid())
            rows.push_back(index);
    tree.markRows(rows);
}

} // namespace vrkview
