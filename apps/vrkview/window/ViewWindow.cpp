#include "window/ViewWindow.h"

#include "canvas/BandTool.h"
#include "canvas/CoarseFrames.h"
#include "canvas/Contents.h"
#include "canvas/Counted.h"
#include "canvas/DrawMode.h"
#include "canvas/FrameTool.h"
#include "canvas/HeightLegend.h"
#include "canvas/Mouse.h"
#include "canvas/MoveTool.h"
#include "canvas/ProgramParts.h"
#include "canvas/RegionTool.h"
#include "canvas/RobotReaches.h"
#include "canvas/Surroundings.h"
#include "canvas/ViewLegend.h"
#include "canvas/ViewWidget.h"
#include "canvas/Views.h"
#include "docks/JointDock.h"
#include "docks/ProgramDock.h"
#include "docks/ProgramView.h"
#include "docks/PropertyDock.h"
#include "docks/TreeDock.h"
#include "docks/TreeView.h"
#include "edit/BandActions.h"
#include "edit/CloudActions.h"
#include "edit/EditActions.h"
#include "edit/History.h"
#include "edit/ReachActions.h"
#include "edit/SimplifyActions.h"
#include "files/PictureFile.h"
#include "measure/DimensionDock.h"
#include "measure/MeasureActions.h"
#include "measure/MeasureTool.h"
#include "measure/NearestWork.h"
#include "measure/StationDimensions.h"
#include "paint/BodyCoats.h"
#include "paint/PaintActions.h"
#include "paint/PaintDock.h"
#include "paint/SprayRun.h"
#include "start/StartUp.h"
#include "window/FrameActions.h"
#include "window/Glyphs.h"
#include "window/HeightScale.h"
#include "window/KeysHelp.h"
#include "window/MessageBar.h"
#include "window/ProgressStrip.h"
#include "window/SelectionLine.h"
#include "window/UnitMenu.h"
#include "window/ViewActions.h"

#include "platform/broker/SignalBroker.h"
#include "scene/Scene.h"
#include "view/Camera.h"

#include <QActionGroup>
#include <QDragEnterEvent>
#include <QFileDialog>
#include <QLocale>
#include <QMenuBar>
#include <QMessageBox>
#include <QMimeData>
#include <QPointer>
#include <QScreen>
#include <QStatusBar>
#include <QToolBar>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <utility>

namespace vrkview {
namespace {

constexpr QSize startSize(1400, 880);
constexpr int leftWidth = 270;
constexpr int rightWidth = 300;
constexpr int treeHeight = 400;
constexpr int propertiesHeight = 400;
constexpr int jointsHeight = 420;
constexpr int programHeight = 380;
constexpr int toolIcon = 20;
constexpr int propertiesInterval = 100; // milliseconds
constexpr int noteTime = 5000;          // milliseconds that a note stays in the status line
constexpr int longNoteTime = 15000;     // one with numbers to read

QString describe(const StationTree& tree)
{
    const Contents contents = contentsOf(*vrk::visual::Scene::GetWorldVisual());
    const auto clouds = std::ranges::count(tree.getRows(), vrk::VisualType::PointCloud, &StationTree::Row::kind);
    QStringList counts;
    if (contents.bodies > 0)
        counts << counted(contents.bodies, "body", "bodies") << counted(contents.faces, "face", "faces")
               << counted(contents.triangles, "triangle", "triangles");
    if (contents.curves > 0)
        counts << counted(contents.curves, "curve", "curves");
    if (clouds > 0)
        counts << counted(static_cast<std::uint64_t>(clouds), "cloud", "clouds");
    if (contents.points > 0)
        counts << counted(contents.points, "point", "points");
    return counts.join(", ");
}

QStringList localFiles(const QMimeData& data)
{
    QStringList paths;
    for (const QUrl& url : data.urls())
        if (url.isLocalFile())
            paths << url.toLocalFile();
    return paths;
}

} // namespace

ViewWindow::ViewWindow(const Station& station, const DrawMode& mode)
    : state(mode, station.hiddenFaces), files(state, settings, QString::fromStdString(station.title)),
      view(new ViewWidget(this)), region(new RegionTool(*view, state, this)), mover(new MoveTool(*view, state, this)),
      bandTool(new BandTool(*view, state, *mover, this)), measurer(new MeasureTool(*view, state, this)),
      framer(new FrameTool(*view, state, this)),
      mouse(new Mouse(*view, state, settings, flight, *region, *mover, *bandTool, *measurer, *framer, this)),
      messages(new MessageBar), tree(new TreeDock(state, this)), joints(new JointDock(state, this)),
      program(new ProgramDock(state, this)), properties(new PropertyDock(state, this)),
      dimensions(new DimensionDock(state, this)), coats(new BodyCoats(state, this)),
      sprayRun(new SprayRun(*coats, state.getHistory(), this)), paintDock(new PaintDock(*coats, *sprayRun, this)),
      actions(new ViewActions(*this, state, flight, settings, *region, *mover, *bandTool, *measurer, *framer, *mouse)),
      edits(new EditActions(*this, state)), bands(new BandActions(*this, state)),
      clouds(new CloudActions(*this, state)), reaches(new RobotReaches(state, this)),
      reachActions(new ReachActions(*this, state)), measures(new MeasureActions(*this, state, *measurer)),
      frameActions(new FrameActions(*this, *framer)), paints(new PaintActions(*this, state, *coats, *sprayRun)),
      simplifies(new SimplifyActions(*this, state)), contents(new QLabel), underMouse(new QLabel),
      selection(new SelectionLine(state)), coarseness(new QLabel), frameTime(new QLabel)
{
    setAcceptDrops(true);
    setDockOptions(AnimatedDocks | AllowTabbedDocks | AllowNestedDocks);
    buildCentre();
    buildDocks();
    buildStatusLine();
    buildMenus();
    connectView();
    connectFiles();
    connectEdits();
    connectMeasures();
    connectPaint();
    connectTools();
    showContents();
    restoreLayout();
}

ViewWindow::~ViewWindow() = default;

// Building

void ViewWindow::buildCentre()
{
    auto* centre = new QWidget;
    auto* column = new QVBoxLayout(centre);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(messages);
    column->addWidget(view, 1);
    setCentralWidget(centre);
}

void ViewWindow::buildDocks()
{
    addDockWidget(Qt::LeftDockWidgetArea, tree);
    addDockWidget(Qt::LeftDockWidgetArea, properties);
    addDockWidget(Qt::RightDockWidgetArea, joints);
    addDockWidget(Qt::RightDockWidgetArea, program);
    addDockWidget(Qt::RightDockWidgetArea, dimensions);
    addDockWidget(Qt::RightDockWidgetArea, paintDock);
    tabifyDockWidget(joints, paintDock);
    paintDock->hide(); // until a spray is led, or it is asked for
    resizeDocks({tree, properties}, {treeHeight, propertiesHeight}, Qt::Vertical);
    resizeDocks({tree, joints}, {leftWidth, rightWidth}, Qt::Horizontal);
    resizeDocks({joints, program}, {jointsHeight, programHeight}, Qt::Vertical);
    hadJoints = !joints->getRows().empty();
    hadPrograms = program->hasPrograms();
    hadDimensions = !StationDimensions::Get().getEntries().empty();
    connect(tree, &TreeDock::focusRequested, actions, &ViewActions::focusOn);
    connect(program, &ProgramDock::focusRequested, actions, &ViewActions::focusOn);
    program->getTreeView().setContextMenuPolicy(Qt::ActionsContextMenu);
    tree->getTreeView().setContextMenuPolicy(Qt::ActionsContextMenu);
}

void ViewWindow::buildStatusLine()
{
    QStatusBar& line = *statusBar();
    line.setSizeGripEnabled(false);
    line.addWidget(contents);
    line.addWidget(underMouse, 1);
    line.addPermanentWidget(coarseness); // first, so that none of the others gives way to it
    line.addPermanentWidget(selection);
    line.addPermanentWidget(new ProgressStrip(files.getOpening()));
    auto* reachProgress = new ProgressStrip(*reaches);
    reachProgress->setObjectName("reach_progress");
    line.addPermanentWidget(reachProgress);
    auto* measureProgress = new ProgressStrip(*new NearestWork(this));
    measureProgress->setObjectName("measure_progress");
    line.addPermanentWidget(measureProgress);
    auto* simplifyProgress = new ProgressStrip(simplifies->getWork());
    simplifyProgress->setObjectName("simplify_progress");
    line.addPermanentWidget(simplifyProgress);
    line.addPermanentWidget(new HeightScale(state));
    line.addPermanentWidget(frameTime);
    contents->setContentsMargins(6, 0, 0, 0);
    selection->setContentsMargins(0, 0, 12, 0);
    coarseness->setObjectName("coarseness");
    coarseness->setContentsMargins(0, 0, 12, 0);
    coarseness->setMinimumWidth(1); // it must not widen the window either
    coarseness->hide();
    underMouse->setContentsMargins(24, 0, 0, 0);
    underMouse->setTextFormat(Qt::PlainText);                                // names come from files
    underMouse->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred); // a long one must not widen the window
    frameTime->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    frameTime->setContentsMargins(0, 0, 8, 0);
    frameTime->setToolTip(tr("How long the last frame took"));
    frameTime->setMinimumWidth(fontMetrics().horizontalAdvance("10,000.0 ms"));
}

QAction* ViewWindow::addCommand(QMenu& menu, const QString& text, const QKeySequence& key, void (ViewWindow::*run)())
{
    auto* action = menu.addAction(text);
    action->setShortcut(key);
    connect(action, &QAction::triggered, this, run);
    return action;
}

void ViewWindow::buildFileMenu()
{
    QMenu& menu = *menuBar()->addMenu(tr("&File"));
    QAction* open = addCommand(menu, tr("&Open…"), QKeySequence::Open, &ViewWindow::askForFiles);
    open->setIcon(glyph(Glyph::Open));
    recent = menu.addMenu(tr("Open &recent"));
    fillRecentMenu();
    connect(&settings, &Settings::recentFilesChanged, this, &ViewWindow::fillRecentMenu);
    fillUnitMenu(*menu.addMenu(tr("&Unit of meshes and scans")), files.getOpening());
    menu.addSeparator();
    QAction* save = menu.addAction(tr("&Save station as…"));
    save->setShortcut(Qt::CTRL | Qt::SHIFT | Qt::Key_S);
    connect(save, &QAction::triggered, this, &ViewWindow::askWhereToSave);
    save->setIcon(glyph(Glyph::Save));
    QAction* shot = addCommand(menu, tr("S&creenshot…"), QKeySequence(Qt::Key_F12), &ViewWindow::askForScreenshot);
    shot->setIcon(glyph(Glyph::Screenshot));
    menu.addSeparator();
    QAction* quit = menu.addAction(tr("&Quit"));
    quit->setShortcut(Qt::CTRL | Qt::Key_Q);
    connect(quit, &QAction::triggered, this, &QWidget::close);

    auto* bar = new QToolBar(tr("Toolbar"));
    bar->setObjectName("toolbar");
    bar->setIconSize({toolIcon, toolIcon});
    bar->setMovable(false);
    for (QAction* action : {open, save, shot}) {
        action->setToolTip(QString("%1 (%2)").arg(action->text().remove('&').remove(QStringLiteral("…")),
                                                  action->shortcut().toString(QKeySequence::NativeText)));
        bar->addAction(action);
    }
    bar->addSeparator();
    actions->fillToolBar(*bar);
    bar->addSeparator();
    measures->fillToolBar(*bar);
    frameActions->fillToolBar(*bar);
    addToolBar(bar);
}

void ViewWindow::buildPreferences()
{
    QMenu& menu = *menuBar()->addMenu(tr("&Preferences"));
    QMenu& mouse = *menu.addMenu(tr("&Mouse"));
    auto* styles = new QActionGroup(this);
    const auto add = [&](const QString& text, Settings::MouseStyle style) {
        QAction* action = mouse.addAction(text);
        action->setCheckable(true);
        action->setChecked(settings.mouseStyle() == style);
        styles->addAction(action);
        connect(action, &QAction::triggered, this, [this, style] { settings.setMouseStyle(style); });
    };
    add(tr("Orbit with the &middle button"), Settings::MouseStyle::OrbitWithMiddle);
    add(tr("Orbit with the &left button"), Settings::MouseStyle::OrbitWithLeft);
}

void ViewWindow::buildMenus()
{
    buildFileMenu();
    QMenu& editMenu = *menuBar()->addMenu(tr("&Edit"));
    edits->fillEditMenu(editMenu);
    actions->fillEditMenu(editMenu);
    frameActions->fillMenu(*editMenu.addMenu(tr("Define a &frame")));
    simplifies->fillMenu(editMenu);
    paints->fillMenu(*editMenu.addMenu(tr("&Paint by a spray")));
    editMenu.addSeparator();
    bands->fillMenu(editMenu);
    editMenu.addSeparator();
    clouds->fillMenu(editMenu);
    editMenu.addSeparator();
    measures->fillMenu(editMenu);
    QMenu& viewMenu = *menuBar()->addMenu(tr("&View"));
    actions->fillViewMenu(viewMenu);
    reachActions->fillMenu(viewMenu);
    viewMenu.addSeparator();
    QMenu& docks = *viewMenu.addMenu(tr("&Docks"));
    for (QDockWidget* dock :
         std::initializer_list<QDockWidget*>{tree, properties, joints, program, dimensions, paintDock})
        docks.addAction(dock->toggleViewAction());
    actions->fillSelectMenu(*menuBar()->addMenu(tr("&Select")));
    buildPreferences();
    QMenu& help = *menuBar()->addMenu(tr("&Help"));
    addCommand(help, tr("&Keys and mouse"), QKeySequence(Qt::Key_F1), &ViewWindow::showKeys);
    addCommand(help, tr("&About vrkview"), {}, &ViewWindow::showAbout);
    actions->fillTreeMenu(tree->getTreeView());
    edits->fillTreeMenu(tree->getTreeView());
    bands->fillTreeMenu(tree->getTreeView());
    clouds->fillTreeMenu(tree->getTreeView());
    paints->fillTreeMenu(tree->getTreeView());
    simplifies->fillTreeMenu(tree->getTreeView());
    reachActions->fillTreeMenu(tree->getTreeView());
    measures->fillListMenu(dimensions->getList());
}

void ViewWindow::connectView()
{
    new ViewLegend(*view, state);
    frameTicked = vrk::broker::SignalBroker::onFrameTicked([this](double ms) { showFrameTime(ms); });
    connect(view, &ViewWidget::ready, this, &ViewWindow::startView);
    connect(view, &ViewWidget::drained, this, &ViewWindow::followScene);
    connect(view, &ViewWidget::failed, messages, &MessageBar::tell);
    connect(view, &ViewWidget::coarsenessChanged, this, [this](vrk::visual::Coarseness now) {
        coarseness->setText(textOf(now));
        coarseness->setVisible(!coarseness->text().isEmpty());
    });
    connect(mouse, &Mouse::focusRequested, actions, &ViewActions::focusOn);
    connect(&mouse->getHover(), &Hover::textChanged, underMouse, &QLabel::setText);
    connect(region, &RegionTool::textChanged, underMouse, &QLabel::setText);
    connect(mover, &MoveTool::textChanged, underMouse, &QLabel::setText);
    connect(bandTool, &BandTool::textChanged, underMouse, &QLabel::setText);
    connect(framer, &FrameTool::textChanged, underMouse, &QLabel::setText);
    connect(framer, &FrameTool::failed, messages, &MessageBar::tell);
    connect(region, &RegionTool::failed, messages, &MessageBar::tell);
    connect(reaches, &RobotReaches::failed, messages, &MessageBar::tell);
    connect(&state, &ViewState::stationChanged, this, [this] {
        // Behind the posts that hide what is hidden, faces too: they do not count.
        vrk::visual::Scene::Get()->addRenderTask(
            [window = QPointer<ViewWindow>(this)] {
                if (window)
                    window->showContents();
            },
            0);
    });
    propertiesTimer.setSingleShot(true);
    propertiesTimer.setInterval(propertiesInterval);
    connect(&propertiesTimer, &QTimer::timeout, properties, &PropertyDock::refresh);
}

void ViewWindow::connectFiles()
{
    connect(&files, &StationFiles::failed, messages, &MessageBar::tell);
    connect(&files, &StationFiles::saved, this, [this](const QString& path) {
        messages->hide();
        statusBar()->showMessage(tr("Saved %1").arg(path), noteTime);
    });
    connect(&files, &StationFiles::programsShown, this,
            [this](const QString& summary) { statusBar()->showMessage(summary, longNoteTime); });
    connect(&files.getOpening(), &FileOpening::cancelled, this,
            [this] { statusBar()->showMessage(tr("Opening given up; nothing was added"), noteTime); });
    connect(&files, &StationFiles::shown, this, [this](bool isAnother) {
        messages->hide();
        suitCameraToScene();
        if (isAnother) {
            sprayRun->end();
            coats->forget();
            suitSurroundings();
        }
        showNewDocks();
        showContents();
        flight.flyTo(isAnother ? poseAsLeft() : poseForAll());
    });
}

void ViewWindow::connectEdits()
{
    connect(edits, &EditActions::failed, messages, &MessageBar::tell);
    connect(joints, &JointDock::limited, this,
            [this](const QString& text) { statusBar()->showMessage(text, longNoteTime); });
    connect(simplifies, &SimplifyActions::failed, messages, &MessageBar::tell);
    connect(simplifies, &SimplifyActions::told, this,
            [this](const QString& text) { statusBar()->showMessage(text, longNoteTime); });
    connect(bands, &BandActions::failed, messages, &MessageBar::tell);
    connect(clouds, &CloudActions::failed, messages, &MessageBar::tell);
    connect(clouds, &CloudActions::saved, this,
            [this](const QString& path) { statusBar()->showMessage(tr("Saved %1").arg(path), noteTime); });
    connect(edits, &EditActions::renameRequested, tree, &TreeDock::editName);
    connect(&state.getHistory(), &History::savedChanged, this, [this](bool isSaved) { setWindowModified(!isSaved); });
    files.askBeforeLoss([this] { return mayLoseChanges(); });
}

void ViewWindow::connectMeasures()
{
    connect(measurer, &MeasureTool::textChanged, underMouse, &QLabel::setText);
    connect(measurer, &MeasureTool::failed, messages, &MessageBar::tell);
    connect(dimensions, &DimensionDock::focusRequested, this,
            [this](const vrk::visual::Box& box) { flight.flyTo(poseForBox(box)); });
    dimensionsChanged = StationDimensions::Get().changed.connect([this] { showNewDocks(); });
}

void ViewWindow::connectPaint()
{
    connect(paints, &PaintActions::failed, messages, &MessageBar::tell);
    connect(sprayRun, &SprayRun::failed, messages, &MessageBar::tell);
    connect(paints, &PaintActions::saved, this,
            [this](const QString& path) { statusBar()->showMessage(tr("Saved %1").arg(path), noteTime); });
    connect(paints, &PaintActions::began, this, [this] {
        messages->hide();
        paintDock->show();
        paintDock->raise();
    });
    connect(paintDock, &PaintDock::clearRequested, paints, &PaintActions::clearPaint);
    connect(paintDock, &PaintDock::openRequested, paints, &PaintActions::askForMap);
    connect(paintDock, &PaintDock::saveRequested, paints, &PaintActions::askWhereToSave);
    connect(coats, &BodyCoats::changed, view, &ViewWidget::requestFrame);
    mouse->getHover().setRemark([this](const Picked& found) {
        const vrk::rob::Vec3d toEye =
            vrk::rob::Posd(vrk::visual::Camera::Get()->getSnapshot().pose.position) - found.candidate.place;
        const auto thickness = coats->thicknessAt(found.candidate.visualId, found.candidate.place, toEye);
        return thickness ? coats->textOf(*thickness) : QString();
    });
}

/// What measures or defines a frame takes every click: it ends what else has the mouse, and is ended by it.
void ViewWindow::connectTools()
{
    const auto endDrags = [this] {
        mover->setOn(false);
        region->setLassoOn(false);
    };
    connect(measurer, &MeasureTool::changed, this, [this, endDrags] {
        if (!measurer->isOn())
            return;
        framer->end();
        endDrags();
    });
    connect(framer, &FrameTool::changed, this, [this, endDrags] {
        if (!framer->isOn())
            return;
        measurer->setOn(false);
        endDrags();
    });
    const auto endClicks = [this](bool isNeeded) {
        if (!isNeeded)
            return;
        measurer->setOn(false);
        framer->end();
    };
    connect(mover, &MoveTool::changed, this, [this, endClicks] { endClicks(mover->isOn()); });
    connect(region, &RegionTool::changed, this, [this, endClicks] { endClicks(region->isLassoOn()); });
}

void ViewWindow::fillRecentMenu()
{
    recent->clear();
    const QStringList paths = settings.recentFiles();
    for (const QString& path : paths) {
        QString text = QFileInfo(path).fileName();
        QAction* action = recent->addAction(text.replace('&', "&&"));
        action->setStatusTip(path);
        connect(action, &QAction::triggered, this, [this, path] { files.open({path}); });
    }
    recent->setEnabled(!paths.isEmpty());
    if (paths.isEmpty())
        return;
    recent->addSeparator();
    connect(recent->addAction(tr("&Clear this list")), &QAction::triggered, &settings, &Settings::forgetRecentFiles);
}

void ViewWindow::restoreLayout()
{
    if (!restoreGeometry(settings.windowGeometry()))
        resize(startSize.boundedTo(screen()->availableSize()));
    restoreState(settings.windowState());
    // As it was left, a dock may have been hidden only because the station had nothing for it.
    showDockIfUsed(*joints, hadJoints);
    showDockIfUsed(*program, hadPrograms);
    showDockIfUsed(*dimensions, hadDimensions);
}

void ViewWindow::showDockIfUsed(QDockWidget& dock, bool isUsed)
{
    dock.setVisible(isUsed && !settings.closedDocks().contains(dock.objectName()));
}

/// Of what the station has for the first time, or no longer.
void ViewWindow::showNewDocks()
{
    if (const bool any = !joints->getRows().empty(); any != std::exchange(hadJoints, any))
        showDockIfUsed(*joints, any); // an empty one would only take room
    if (const bool any = program->hasPrograms(); any != std::exchange(hadPrograms, any))
        showDockIfUsed(*program, any);
    const bool anyDimension = !StationDimensions::Get().getEntries().empty();
    if (anyDimension != std::exchange(hadDimensions, anyDimension) && anyDimension) {
        showDockIfUsed(*dimensions, true);
        resizeDocks({dimensions}, {rightWidth}, Qt::Horizontal); // it would take half of a small window
    }
}

void ViewWindow::saveLayout()
{
    QStringList closed = settings.closedDocks();
    const auto note = [&](const QDockWidget& dock, bool isUsed) {
        if (!isUsed)
            return; // nobody was asked
        closed.removeAll(dock.objectName());
        if (dock.isHidden())
            closed << dock.objectName();
    };
    note(*joints, hadJoints);
    note(*program, hadPrograms);
    note(*dimensions, hadDimensions);
    settings.setWindow(saveGeometry(), saveState());
    settings.setClosedDocks(closed);
}

// Running

void ViewWindow::startView()
{
    enlargeCross(static_cast<float>(devicePixelRatioF()));
    suitCameraToScene();
    showGrid(settings.isGridShown(isGridShown()));
    for (const ProgramPartName& each : allProgramParts())
        draw(each.part, settings.isDrawn(each.part));
    lookAsLeft();
    view->setFocus(); // and not the filter of the tree, into which keys would be typed
}

void ViewWindow::followScene()
{
    state.followScene();
    StationDimensions::Get().setPixelRatio(view->devicePixelRatioF()); // which another screen changes
    StationDimensions::Get().update();
    actions->follow();
    if (!state.getSelected().empty() && !propertiesTimer.isActive())
        propertiesTimer.start();
}

void ViewWindow::showContents()
{
    QString name = files.getTitle();
    setWindowTitle(name.replace("[*]", "[*][*]") + "[*] - vrkview"); // the place of the mark; twice it is a text
    contents->setText(files.getTitle() + ":   " + describe(state.getTree()));
}

void ViewWindow::showFrameTime(double milliseconds)
{
    frameTime->setText(QLocale(QLocale::English).toString(milliseconds, 'f', 1) + " ms");
}

void ViewWindow::closeEvent(QCloseEvent* event)
{
    if (!mayLoseChanges()) {
        event->ignore();
        return;
    }
    saveLayout();
    QMainWindow::closeEvent(event);
}

void ViewWindow::dragEnterEvent(QDragEnterEvent* event)
{
    if (!localFiles(*event->mimeData()).isEmpty())
        event->acceptProposedAction();
}

void ViewWindow::dropEvent(QDropEvent* event)
{
    files.open(localFiles(*event->mimeData()));
    event->acceptProposedAction();
}

// Commands

void ViewWindow::askForFiles()
{
    files.open(QFileDialog::getOpenFileNames(this, tr("Open"), {}, StationFiles::OpenFilter()));
}

bool ViewWindow::askWhereToSave()
{
    const QString path = QFileDialog::getSaveFileName(this, tr("Save station as"), {}, tr("Stations (*.station.json)"));
    return !path.isEmpty() && files.save(path);
}

bool ViewWindow::mayLoseChanges()
{
    if (state.getHistory().isSaved())
        return true;
    QMessageBox box(QMessageBox::Warning, tr("Changes that are not saved"),
                    tr("The station was changed. Save it before the changes are lost?"),
                    QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel, this);
    box.setDefaultButton(QMessageBox::Save);
    switch (box.exec()) {
    case QMessageBox::Save:
        return askWhereToSave();
    case QMessageBox::Discard:
        return true;
    default:
        return false;
    }
}

void ViewWindow::askForScreenshot()
{
    QString path = QFileDialog::getSaveFileName(this, tr("Screenshot"), {}, tr("Pictures (*.png)"));
    if (path.isEmpty())
        return;
    if (QFileInfo(path).suffix().isEmpty())
        path += ".png";
    QImage picture = view->takePicture(view->toDevice(view->size()));
    addHeightLegend(picture);
    if (picture.save(path))
        statusBar()->showMessage(tr("Saved %1").arg(path), noteTime);
    else
        messages->tell(QString::fromStdString(pictureCannotBeWritten(path.toStdString())) +
                       tr(". Choose another folder or name."));
}

void ViewWindow::showKeys()
{
    auto* box = new QMessageBox(QMessageBox::NoIcon, tr("Keys and mouse"),
                                keysAndMouseHelp(*menuBar(), settings.mouseStyle()), QMessageBox::Close, this);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->open();
}

void ViewWindow::showAbout()
{
    auto* box = new QMessageBox(QMessageBox::NoIcon, tr("About vrkview"),
                                tr("<h3>vrkview %1</h3><p>Shows robot cells, CAD files, meshes and point clouds.</p>"
                                   "<p>Drawn by OGRE, with geometry by Open CASCADE and a window by Qt %2.</p>")
                                    .arg(VRK_VERSION, qVersion()),
                                QMessageBox::Close, this);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->open();
}

} // namespace vrkview
