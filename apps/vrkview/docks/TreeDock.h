#pragma once

#include <QDockWidget>

#include <unordered_set>

class QLineEdit;
class QSortFilterProxyModel;

namespace vrkview {

class StationTreeModel;
class TreeSelection;
class TreeView;
class ViewState;

/// The dock with the station's tree: what is selected in it is selected in the view, and the other way round.
class TreeDock : public QDockWidget {
    Q_OBJECT

public:
    /// @param state  outlives this.
    explicit TreeDock(ViewState& state, QWidget* parent = nullptr);

    TreeView& getTreeView() const { return *tree; }
    QLineEdit& getFilter() const { return *filter; }
    StationTreeModel& getModel() const { return *model; }

    /// Has the user edit the name of this thing.
    void editName(unsigned id);

signals:
    /// The user wants to look at this visual.
    void focusRequested(unsigned id);

private:
    void buildTree();
    void applyFilter(const QString& text);
    void keepExpanded();
    void toggleEye(const QModelIndex& index);
    unsigned idOf(const QModelIndex& index) const;

    ViewState& state;
    TreeSelection* selection = nullptr;
    QLineEdit* filter;
    TreeView* tree;
    StationTreeModel* model;
    QSortFilterProxyModel* filtered;
    std::unordered_set<unsigned> expanded; // what is open, over a filter and another station
};

} // namespace vrkview
