#pragma once

#include <QDockWidget>

#include <unordered_set>

class QLineEdit;

namespace vrkview {

class ProgramModel;
class ProgramView;
class TreeSelection;
class ViewState;

/// The dock with the station's programs, their paths and their instructions: what is selected in it is selected in the view,
/// and the other way round. What draws nothing is told in a weaker colour.
class ProgramDock : public QDockWidget {
    Q_OBJECT

public:
    /// @param state  outlives this.
    explicit ProgramDock(ViewState& state, QWidget* parent = nullptr);

    ProgramView& getTreeView() const { return *tree; }
    QLineEdit& getFilter() const { return *filter; }
    ProgramModel& getModel() const { return *model; }
    bool hasPrograms() const;

signals:
    /// The user wants to look at this program, path or move.
    void focusRequested(unsigned id);

private:
    void buildTree();
    void followStation();
    void applyFilter(const QString& text);
    void expandNew();
    unsigned idOf(const QModelIndex& index) const;

    ViewState& state;
    TreeSelection* selection = nullptr;
    QLineEdit* filter;
    ProgramView* tree;
    ProgramModel* model;
    std::unordered_set<unsigned> known;    // programs that were there before, which stay as the user left them
    std::unordered_set<unsigned> expanded; // what is open, over a filter
};

} // namespace vrkview
