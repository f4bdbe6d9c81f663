#pragma once

#include "canvas/CameraFlight.h"
#include "canvas/ViewState.h"
#include "files/Station.h"
#include "files/StationFiles.h"
#include "window/Settings.h"

#include <boost/signals2/connection.hpp>

#include <QLabel>
#include <QMainWindow>
#include <QTimer>

namespace vrkview {

class BandActions;
class BandTool;
class BodyCoats;
class CloudActions;
class DimensionDock;
class EditActions;
class FrameActions;
class FrameTool;
class JointDock;
class MeasureActions;
class MeasureTool;
class MessageBar;
class Mouse;
class MoveTool;
class PaintActions;
class PaintDock;
class ProgramDock;
class PropertyDock;
class ReachActions;
class RegionTool;
class RobotReaches;
class SimplifyActions;
class SprayRun;
class TreeDock;
class ViewActions;
class ViewWidget;

/// The viewer's window: the view, the docks and menus around it, and below it a line with what is shown and how long the
/// last frame took. Files that are dropped on it are opened.
///
/// Thread: the application's, which is the render thread.
class ViewWindow : public QMainWindow {
    Q_OBJECT

public:
    /// Needs a started library with the station built and shown in this mode.
    ViewWindow(const Station& station, const DrawMode& mode);
    ~ViewWindow() override;

    ViewWidget& getView() const { return *view; }
    ViewState& getState() { return state; }
    const ViewState& getState() const { return state; }
    Settings& getSettings() { return settings; }
    CameraFlight& getFlight() { return flight; }
    StationFiles& getFiles() { return files; }
    Mouse& getMouse() const { return *mouse; }
    MoveTool& getMover() const { return *mover; }
    BandTool& getBandTool() const { return *bandTool; }
    MeasureTool& getMeasurer() const { return *measurer; }
    FrameTool& getFramer() const { return *framer; }
    RegionTool& getRegion() const { return *region; }
    TreeDock& getTreeDock() const { return *tree; }
    JointDock& getJointDock() const { return *joints; }
    ProgramDock& getProgramDock() const { return *program; }
    PropertyDock& getPropertyDock() const { return *properties; }
    DimensionDock& getDimensionDock() const { return *dimensions; }
    EditActions& getEdits() const { return *edits; }
    BandActions& getBands() const { return *bands; }
    CloudActions& getClouds() const { return *clouds; }
    ReachActions& getReachActions() const { return *reachActions; }
    RobotReaches& getReaches() const { return *reaches; }
    BodyCoats& getCoats() const { return *coats; }
    SprayRun& getSprayRun() const { return *sprayRun; }
    PaintActions& getPaints() const { return *paints; }
    SimplifyActions& getSimplifies() const { return *simplifies; }
    PaintDock& getPaintDock() const { return *paintDock; }
    MeasureActions& getMeasures() const { return *measures; }
    QString getSelectionText() const { return selection->text(); }
    MessageBar& getMessageBar() const { return *messages; }

protected:
    void closeEvent(QCloseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void buildCentre();
    void buildDocks();
    void buildStatusLine();
    void buildMenus();
    void buildFileMenu();
    void connectEdits();
    void connectMeasures();
    void connectPaint();
    void connectTools();
    void buildPreferences();
    void connectView();
    void connectFiles();
    void fillRecentMenu();
    QAction* addCommand(QMenu& menu, const QString& text, const QKeySequence& key, void (ViewWindow::*run)());
    void restoreLayout();
    void saveLayout();
    void showDockIfUsed(QDockWidget& dock, bool isUsed);
    void showNewDocks();

    void startView();
    void followScene();
    void showContents();
    void showFrameTime(double milliseconds);
    void askForFiles();
    /// False where it was not saved.
    bool askWhereToSave();
    /// Asks what to do with changes that are not saved; false where they are to stay.
    bool mayLoseChanges();
    void askForScreenshot();
    void showKeys();
    void showAbout();

    Settings settings;
    ViewState state;
    CameraFlight flight;
    StationFiles files;
    bool hadJoints = false; // when the station last changed
    bool hadPrograms = false;
    bool hadDimensions = false;
    QTimer propertiesTimer; // while things move they are read some times a second
    // Qt's, as children of this
    ViewWidget* view;
    RegionTool* region;
    MoveTool* mover;
    BandTool* bandTool;
    MeasureTool* measurer;
    FrameTool* framer;
    Mouse* mouse;
    MessageBar* messages;
    TreeDock* tree;
    JointDock* joints;
    ProgramDock* program;
    PropertyDock* properties;
    DimensionDock* dimensions;
    BodyCoats* coats;
    SprayRun* sprayRun;
    PaintDock* paintDock;
    ViewActions* actions;
    EditActions* edits;
    BandActions* bands;
    CloudActions* clouds;
    RobotReaches* reaches;
    ReachActions* reachActions;
    MeasureActions* measures;
    FrameActions* frameActions;
    PaintActions* paints;
    SimplifyActions* simplifies;
    QMenu* recent = nullptr;
    QLabel* contents;
    QLabel* underMouse;
    QLabel* selection;
    QLabel* coarseness;
    QLabel* frameTime;
    boost::signals2::scoped_connection frameTicked;
    boost::signals2::scoped_connection dimensionsChanged;
};

} // namespace vrkview
