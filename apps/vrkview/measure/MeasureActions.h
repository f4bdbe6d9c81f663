#pragma once

#include <boost/signals2/connection.hpp>

#include <QObject>

class QAction;
class QMenu;
class QToolBar;
class QWidget;

namespace vrkview {

class MeasureTool;
class ViewState;

/// The commands that measure, and those for the dimensions that are selected. They know their keys, which hold in the whole
/// window.
class MeasureActions : public QObject {
    Q_OBJECT

public:
    /// @param window  gets the actions, which are its children then; outlives this, as the others do.
    MeasureActions(QWidget& window, ViewState& state, MeasureTool& tool);

    void fillMenu(QMenu& menu) const;
    void fillToolBar(QToolBar& bar) const;
    /// The context menu of the dimensions.
    void fillListMenu(QWidget& list) const;

    /// Of the dimensions that are selected, else of the newest one, else what the tool has told last, into the clipboard.
    void copy();
    void removeSelected();

private:
    QAction* add(const QString& text, const QKeySequence& key, void (MeasureActions::*run)());
    void followState();
    void toggle();
    void measureFirst();

    QWidget& window;
    ViewState& state;
    MeasureTool& tool;
    QAction* measure;
    QAction* alone;
    QAction* copyAction;
    QAction* remove;
    boost::signals2::scoped_connection following;
};

} // namespace vrkview
