#pragma once

#include <QObject>

class QAction;
class QMenu;
class QWidget;

namespace vrkview {

class ViewState;

/// The switch of how far the selected robots reach.
class ReachActions : public QObject {
    Q_OBJECT

public:
    /// @param window  gets the action, which is its child then; outlives this, as `state` does.
    ReachActions(QWidget& window, ViewState& state);

    void fillMenu(QMenu& menu) const;
    void fillTreeMenu(QWidget& tree) const;

    /// Shows how far all of the selected robots reach or, where all of that is shown, no longer.
    void toggle();

private:
    void followState();

    ViewState& state;
    QAction* reach;
};

} // namespace vrkview
