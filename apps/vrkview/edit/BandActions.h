#pragma once

#include "platform/task/Seam.h"

#include <QObject>

#include <functional>
#include <vector>

class QAction;
class QMenu;
class QWidget;

namespace vrkview {

class ViewState;

/// The commands that make bands of selected edges, and paths of bands, with what the next band is made by.
class BandActions : public QObject {
    Q_OBJECT

public:
    /// @param window  gets the actions, which are its children then; outlives this, as `state` does.
    BandActions(QWidget& window, ViewState& state);

    void fillMenu(QMenu& menu);
    void fillTreeMenu(QWidget& tree) const;

    /// Of the selected edges, which have to be of one body and one chain. The band is selected then.
    void makeBand();
    /// The same of the edges that go on from them without a corner.
    void makeBandOfChain();
    /// Along the one band that is selected.
    void makePath();
    void askForChord();

    void setSide(vrk::task::ToolSide side) { options.side = side; }
    void setChordTolerance(double tolerance) { options.chordTolerance = tolerance; }

signals:
    /// @param text  says what is wrong. The station is as before.
    void failed(const QString& text);

private:
    QAction* add(const QString& text, const QKeySequence& key, void (BandActions::*run)());
    void makeBand(const std::function<std::vector<unsigned>(unsigned, const std::vector<unsigned>&)>& pick);
    void attempt(const std::function<void()>& act);
    void followState();

    QWidget& window;
    ViewState& state;
    vrk::task::SeamOptions options;
    QAction* band;
    QAction* bandOfChain;
    QAction* path;
};

} // namespace vrkview
