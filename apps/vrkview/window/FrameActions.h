#pragma once

#include "canvas/FrameTool.h"

#include <QObject>

#include <utility>
#include <vector>

class QAction;
class QMenu;
class QToolBar;
class QWidget;

namespace vrkview {

/// The commands that define a frame by clicks on the station, and the choice of what it becomes. They know their keys, which
/// hold in the whole window.
class FrameActions : public QObject {
    Q_OBJECT

public:
    /// @param window  gets the actions, which are its children then; outlives this, as the tool does.
    FrameActions(QWidget& window, FrameTool& framer);

    void fillMenu(QMenu& menu) const;
    /// One button with all of it.
    void fillToolBar(QToolBar& bar) const;

private:
    void addWays();
    void addUses();
    void begin(FrameTool::Way way);
    void followTool();

    QWidget& window;
    FrameTool& framer;
    std::vector<std::pair<FrameTool::Way, QAction*>> ways;
    std::vector<std::pair<FrameUse, QAction*>> uses;
};

} // namespace vrkview
