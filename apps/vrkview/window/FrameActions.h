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

class MoveTool;
class RegionTool;

/// The commands that define a frame by clicks on the station, and the choice of what it becomes. They know their keys, which
/// hold in the whole window. One tool has the mouse: whichever is taken up ends the others.
class FrameActions : public QObject {
    Q_OBJECT

public:
    /// @param window  gets the actions, which are its children then; outlives this, as all others do.
    FrameActions(QWidget& window, FrameTool& framer, MoveTool& mover, RegionTool& region);

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
    MoveTool& mover;
    RegionTool& region;
    std::vector<std::pair<FrameTool::Way, QAction*>> ways;
    std::vector<std::pair<FrameUse, QAction*>> uses;
};

} // namespace vrkview
