#pragma once

#include <QObject>

#include <functional>
#include <memory>

class QAction;
class QMenu;
class QWidget;

namespace vrkview {

class Change;
class ViewState;

/// The commands that change the station, and those that take a change back and make it again. They know their keys, which
/// hold in the whole window.
class EditActions : public QObject {
    Q_OBJECT

public:
    /// @param window  gets the actions, which are its children then; outlives this, as `state` does.
    EditActions(QWidget& window, ViewState& state);

    void fillEditMenu(QMenu& menu) const;
    /// Appends to the context menu of the tree.
    void fillTreeMenu(QWidget& tree) const;

    void undo();
    void redo();
    void removeSelected();
    /// Hangs what is selected on the thing that was selected last.
    void attachSelected();
    void detachSelected();
    /// Asks for the place of the one thing that is selected.
    void askForPlace();

signals:
    /// The name of this thing is to be edited.
    void renameRequested(unsigned id);
    /// @param text  says what is wrong. The station is as before.
    void failed(const QString& text);

private:
    QAction* add(const QString& text, const QKeySequence& key, void (EditActions::*run)());
    void attempt(const std::function<void()>& act);
    void push(std::unique_ptr<Change> change);
    void followSteps();
    void followState();

    QWidget& window;
    ViewState& state;
    QAction* undoAction;
    QAction* redoAction;
    QAction* rename;
    QAction* place;
    QAction* attach;
    QAction* detach;
    QAction* remove;
};

} // namespace vrkview
