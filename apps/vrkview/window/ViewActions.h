#pragma once

#include "canvas/ViewPick.h"
#include "canvas/ViewState.h"

#include <QObject>

#include <functional>
#include <utility>
#include <vector>

class QAction;
class QActionGroup;
class QMenu;
class QToolBar;

namespace vrkview {

class BandTool;
class CameraFlight;
class FaceDirections;
class FrameTool;
class Ghosts;
class MeasureTool;
class Mouse;
class MoveTool;
class RegionTool;
class Settings;

/// The commands that change what is seen: views, display modes, grid, frames, selection, regions, what is picked, and
/// visibility. They know their keys, which hold in the whole window.
class ViewActions : public QObject {
    Q_OBJECT

public:
    /// @param window  gets the actions, which are its children then; outlives this, as all others do.
    ViewActions(QWidget& window, ViewState& state, CameraFlight& flight, Settings& settings, RegionTool& region,
                MoveTool& mover, BandTool& bandTool, MeasureTool& measurer, FrameTool& framer, Mouse& mouse);

    void fillViewMenu(QMenu& menu) const;
    void fillSelectMenu(QMenu& menu) const;
    /// Moving by hand.
    void fillEditMenu(QMenu& menu) const;
    /// The context menu of the tree.
    void fillTreeMenu(QWidget& tree) const;
    void fillToolBar(QToolBar& bar) const;

    /// Flies to where this visual fills the view; nothing for an unknown id.
    void focusOn(unsigned id);
    /// Ticks what holds now. Call it after the scene has worked off its posts.
    void follow();

private:
    QAction* add(const QString& text, const QList<QKeySequence>& keys, std::function<void()> run);
    void addViews();
    void addModes();
    void addSurroundings();
    void addCoarser();
    void addProgramParts();
    void addSelection();
    void addRegions();
    void addPicks();
    void addMoves();
    void addSteps();
    void followState();

    QWidget& window;
    ViewState& state;
    CameraFlight& flight;
    Settings& settings;
    RegionTool& region;
    MoveTool& mover;
    BandTool& bandTool;
    MeasureTool& measurer;
    FrameTool& framer;
    Mouse& mouse;
    QAction* fit = nullptr;
    QAction* focus = nullptr;
    std::vector<QAction*> views;
    QActionGroup* modes = nullptr;
    QAction* grid = nullptr;
    QAction* turnedGrid = nullptr;
    FaceDirections* directions; // Qt's, a child of this
    QAction* showDirections = nullptr;
    Ghosts* ghosts; // likewise
    QAction* showGhosts = nullptr;
    QAction* byHeight = nullptr;
    QAction* depthShade = nullptr;
    QAction* groundShadow = nullptr;
    QAction* coarser = nullptr; // while the view moves
    QAction* longerFrames = nullptr;
    QAction* shorterFrames = nullptr;
    std::vector<QAction*> programParts; // in the order of all of them
    QAction* clear = nullptr;
    QAction* lasso = nullptr;
    QAction* pointsOnly = nullptr;
    QAction* closeLasso = nullptr;
    QAction* dropCorner = nullptr;
    std::vector<std::pair<PickGroup, QAction*>> picks;
    QAction* move = nullptr;
    QAction* worldAxes = nullptr;
    std::vector<std::pair<double, QAction*>> lengthSteps; // with Ctrl
    std::vector<std::pair<double, QAction*>> angleSteps;
    QAction* listCandidates = nullptr;
    QAction* listBackwards = nullptr;
    QAction* hide = nullptr;
    QAction* show = nullptr;
};

} // namespace vrkview
