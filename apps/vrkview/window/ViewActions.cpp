#include "window/ViewActions.h"

#include "canvas/BandTool.h"
#include "canvas/CameraFlight.h"
#include "canvas/CloudLooks.h"
#include "canvas/CoarseFrames.h"
#include "canvas/DrawMode.h"
#include "canvas/FaceDirections.h"
#include "canvas/FrameShade.h"
#include "canvas/FrameTool.h"
#include "canvas/Ghosts.h"
#include "canvas/Mouse.h"
#include "canvas/MoveTool.h"
#include "canvas/ProgramParts.h"
#include "canvas/ProgramThings.h"
#include "canvas/RegionTool.h"
#include "canvas/Surroundings.h"
#include "canvas/Views.h"
#include "measure/MeasureTool.h"
#include "window/Glyphs.h"
#include "window/Settings.h"

#include "platform/broker/SignalBroker.h"
#include "scene/Scene.h"
#include "visual/Visual.h"

#include <QAction>
#include <QActionGroup>
#include <QMenu>
#include <QToolBar>

#include <algorithm>
#include <array>
#include <string_view>

namespace vrkview {
namespace {

using vrk::visual::Scene;

bool isMoveOnScreen(unsigned id)
{
    return Scene::HasVisual(id) && Scene::GetVisual(id)->getType() == vrk::VisualType::MoveInstruction;
}

struct Looks {
    std::string_view name; // of a view or a display mode
    const char* text;
    Glyph icon;
};

constexpr std::array looks = {
    Looks{"iso", QT_TRANSLATE_NOOP("ViewActions", "&Isometric"), Glyph::Isometric},
    Looks{"front", QT_TRANSLATE_NOOP("ViewActions", "&Front"), Glyph::Front},
    Looks{"back", QT_TRANSLATE_NOOP("ViewActions", "&Back"), Glyph::Back},
    Looks{"left", QT_TRANSLATE_NOOP("ViewActions", "&Left"), Glyph::Left},
    Looks{"right", QT_TRANSLATE_NOOP("ViewActions", "&Right"), Glyph::Right},
    Looks{"top", QT_TRANSLATE_NOOP("ViewActions", "&Top"), Glyph::Top},
    Looks{"bottom", QT_TRANSLATE_NOOP("ViewActions", "Botto&m"), Glyph::Bottom},
    Looks{"shaded", QT_TRANSLATE_NOOP("ViewActions", "&Shaded"), Glyph::Shaded},
    Looks{"shaded-edges", QT_TRANSLATE_NOOP("ViewActions", "Shaded with &edges"), Glyph::ShadedWithEdges},
    Looks{"edges", QT_TRANSLATE_NOOP("ViewActions", "E&dges only"), Glyph::Edges},
    Looks{"wire", QT_TRANSLATE_NOOP("ViewActions", "&Wire"), Glyph::Wire},
    Looks{"lines", QT_TRANSLATE_NOOP("ViewActions", "&Lines"), Glyph::Lines},
    Looks{"lines-dashed", QT_TRANSLATE_NOOP("ViewActions", "Lines, &hidden ones dashed"), Glyph::DashedLines},
};

const Looks& looksOf(std::string_view name)
{
    return *std::ranges::find(looks, name, &Looks::name);
}

} // namespace

ViewActions::ViewActions(QWidget& window, ViewState& state, CameraFlight& flight, Settings& settings,
                         RegionTool& region, MoveTool& mover, BandTool& bandTool, MeasureTool& measurer,
                         FrameTool& framer, Mouse& mouse)
    : QObject(&window), window(window), state(state), flight(flight), settings(settings), region(region), mover(mover),
      bandTool(bandTool), measurer(measurer), framer(framer), mouse(mouse), directions(new FaceDirections(state, this)),
      ghosts(new Ghosts(state, this))
{
    addViews();
    addModes();
    addSurroundings();
    addProgramParts();
    addSelection();
    addRegions();
    addPicks();
    addMoves();
    connect(&mover, &MoveTool::changed, this, &ViewActions::followState);
    connect(&measurer, &MeasureTool::changed, this, &ViewActions::followState);
    connect(&mouse.getPick(), &ViewPick::changed, this, &ViewActions::followState);
    connect(&mouse, &Mouse::candidatesChanged, this, &ViewActions::followState);
    connect(&mouse, &Mouse::pressedLong, listCandidates, &QAction::trigger);
    connect(&region, &RegionTool::changed, this, &ViewActions::followState);
    connect(&framer, &FrameTool::changed, this, &ViewActions::followState);
    connect(&state, &ViewState::selectionChanged, this, &ViewActions::followState);
    connect(&state, &ViewState::visibilityChanged, this, &ViewActions::followState);
    connect(&state, &ViewState::stationChanged, this, &ViewActions::followState);
    connect(&state, &ViewState::stationChanged, this, &followCloudLooks);
    connect(&state, &ViewState::drawModeChanged, this, &ViewActions::followState);
    followState();
}

QAction* ViewActions::add(const QString& text, const QList<QKeySequence>& keys, std::function<void()> run)
{
    auto* action = new QAction(text, &window);
    action->setShortcuts(keys);
    QString plain = text;
    plain.remove('&');
    action->setToolTip(QString("%1 (%2)").arg(plain, keys.front().toString(QKeySequence::NativeText)));
    connect(action, &QAction::triggered, this, std::move(run));
    window.addAction(action); // so that the key holds while no menu is open
    return action;
}

void ViewActions::addViews()
{
    fit = add(tr("&Fit everything"), {Qt::Key_F}, [this] { flight.flyTo(poseForAll()); });
    fit->setIcon(glyph(Glyph::Fit));
    focus = add(tr("F&ocus selected"), {Qt::SHIFT | Qt::Key_F}, [this] {
        if (!state.getSelected().empty())
            focusOn(state.getSelected().back());
    });
    focus->setIcon(glyph(Glyph::Focus));
    for (const View& view : allViews()) {
        QList<QKeySequence> keys = {Qt::Key(Qt::Key_0 + view.key)};
        if (view.key == 0)
            keys.append(Qt::Key_I);
        const Looks& look = looksOf(view.name);
        views.push_back(add(tr(look.text), keys, [this, &view] { flight.flyTo(poseAlong(view)); }));
        views.back()->setIcon(glyph(look.icon));
    }
}

void ViewActions::addModes()
{
    modes = new QActionGroup(this);
    for (const DrawMode& mode : allDrawModes()) {
        const Looks& look = looksOf(mode.name);
        QAction* action = add(tr(look.text), {Qt::Key(Qt::Key_F1 + mode.functionKey - 1)}, [this, &mode] {
            state.setDrawMode(mode);
            settings.setDrawMode(mode.name);
        });
        action->setIcon(glyph(look.icon));
        action->setCheckable(true);
        action->setData(QString(mode.name));
        modes->addAction(action);
    }
}

void ViewActions::addSurroundings()
{
    grid = add(tr("&Grid"), {Qt::Key_G}, [this] {
        showGrid(!isGridShown());
        settings.setGridShown(grid->isChecked());
    });
    grid->setCheckable(true);
    grid->setIcon(glyph(Glyph::Grid));
    turnedGrid = add(tr("Grid across the &next axis"), {Qt::Key_N}, [] { turnGrid(); });
    showDirections = add(tr("&U and V of the selected face"), {Qt::Key_U},
                         [this] { directions->setShown(showDirections->isChecked()); });
    showDirections->setCheckable(true);
    showGhosts = add(tr("&Everything else as ghosts"), {Qt::Key_E}, [this] { ghosts->setOn(showGhosts->isChecked()); });
    showGhosts->setCheckable(true);
    byHeight = add(tr("Scans by &height"), {Qt::Key_C}, [this] {
        showCloudsByHeight(byHeight->isChecked());
        emit state.cloudLooksChanged();
    });
    byHeight->setCheckable(true);
    byHeight->setChecked(areCloudsShownByHeight());
    depthShade = add(tr("Shade in &pockets and gaps"), {Qt::Key_K}, [this] {
        setDepthShaded(depthShade->isChecked());
        settings.setDepthShaded(depthShade->isChecked());
        vrk::broker::SignalBroker::updateScene();
    });
    depthShade->setCheckable(true);
    setDepthShaded(settings.isDepthShaded());
    depthShade->setChecked(isDepthShaded());
    groundShadow = add(tr("Shadow on the ground"), {Qt::Key_J}, [this] {
        setGroundShadowed(groundShadow->isChecked());
        settings.setGroundShadowed(groundShadow->isChecked());
        vrk::broker::SignalBroker::updateScene();
    });
    groundShadow->setCheckable(true);
    setGroundShadowed(isGroundShadowed() && settings.isGroundShadowed()); // the command line may have it off
    groundShadow->setChecked(isGroundShadowed());
    addCoarser();
    longerFrames = add(tr("&Longer"), {Qt::Key_Plus, Qt::Key_Equal}, [] { changeFrameSize(1); });
    shorterFrames = add(tr("&Shorter"), {Qt::Key_Minus}, [] { changeFrameSize(-1); });
}

/// Without a key: it is chosen once for a machine.
void ViewActions::addCoarser()
{
    coarser = new QAction(tr("Coarser while mo&ving"), &window);
    coarser->setCheckable(true);
    setCoarserWhileMoving(settings.isCoarserWhileMoving());
    coarser->setChecked(isCoarserWhileMoving());
    connect(coarser, &QAction::triggered, this, [this](bool isOn) {
        setCoarserWhileMoving(isOn);
        settings.setCoarserWhileMoving(isOn);
        vrk::broker::SignalBroker::updateScene();
    });
}

void ViewActions::addProgramParts()
{
    const auto addPart = [this](ProgramPart part, const QString& text, Qt::Key key) {
        QAction* action = add(text, {key}, [this, part] {
            draw(part, !isDrawn(part));
            settings.setDrawn(part, isDrawn(part));
        });
        action->setCheckable(true);
        programParts.push_back(action);
    };
    addPart(ProgramPart::Targets, tr("&Targets"), Qt::Key_T);
    addPart(ProgramPart::Arrows, tr("&Arrows"), Qt::Key_A);
    addPart(ProgramPart::Lines, tr("&Lines"), Qt::Key_L);
    addPart(ProgramPart::ZAxesOnly, tr("&Z axes only"), Qt::Key_Z);
}

void ViewActions::addSelection()
{
    clear = add(tr("&Clear selection"), {Qt::Key_Escape}, [this] {
        if (!framer.cancel() && !mover.cancel() && !bandTool.cancel() && !measurer.cancel() &&
            !mouse.closeCandidates() && !region.cancel())
            state.clear();
    });
    hide = add(tr("&Hide selected"), {Qt::Key_H}, [this] { state.hideSelected(); });
    hide->setIcon(glyph(Glyph::EyeClosed));
    show = add(tr("&Show all"), {Qt::SHIFT | Qt::Key_H}, [this] { state.showAll(); });
    show->setIcon(glyph(Glyph::EyeOpen));
}

void ViewActions::addRegions()
{
    lasso = add(tr("&Lasso"), {Qt::SHIFT | Qt::Key_L}, [this] { region.setLassoOn(!region.isLassoOn()); });
    lasso->setCheckable(true);
    lasso->setIcon(glyph(Glyph::Lasso));
    closeLasso = add(tr("Close the lasso"), {Qt::Key_Return, Qt::Key_Enter}, [this] { region.finish(); });
    dropCorner = add(tr("Take the last corner or pick back"), {Qt::Key_Backspace}, [this] {
        if (!framer.takeLastBack())
            region.removeLastCorner();
    });
    pointsOnly = add(tr("Only &points of clouds"), {Qt::SHIFT | Qt::Key_P},
                     [this] { region.setForPointsOnly(!region.isForPointsOnly()); });
    pointsOnly->setCheckable(true);
    pointsOnly->setIcon(glyph(Glyph::Points));
}

void ViewActions::addPicks()
{
    struct Text {
        PickGroup group;
        const char* text;
        Glyph icon;
    };
    static constexpr std::array texts = {
        Text{PickGroup::Bodies, QT_TR_NOOP("Pick &bodies"), Glyph::PickBodies},
        Text{PickGroup::Faces, QT_TR_NOOP("Pick &faces"), Glyph::PickFaces},
        Text{PickGroup::Edges, QT_TR_NOOP("Pick &edges and lines"), Glyph::PickEdges},
        Text{PickGroup::Vertices, QT_TR_NOOP("Pick &vertices"), Glyph::PickVertices},
        Text{PickGroup::Points, QT_TR_NOOP("Pick &points of clouds"), Glyph::PickPoints},
        Text{PickGroup::Frames, QT_TR_NOOP("Pick f&rames and targets"), Glyph::PickFrames},
    };
    int key = Qt::Key_1;
    for (const Text& each : texts) {
        QAction* action = add(tr(each.text), {QKeySequence(Qt::CTRL | static_cast<Qt::Key>(key++))}, [this, &each] {
            ViewPick& pick = mouse.getPick();
            pick.setTaken(each.group, !pick.takes(each.group));
        });
        action->setCheckable(true);
        action->setIcon(glyph(each.icon));
        picks.emplace_back(each.group, action);
    }
    listCandidates = add(tr("&List what is under the mouse"), {Qt::Key_Q}, [this] { mouse.listCandidates(1); });
    listBackwards = add(tr("Back in this list"), {Qt::SHIFT | Qt::Key_Q}, [this] { mouse.listCandidates(-1); });
}

void ViewActions::addMoves()
{
    move = add(tr("&Move by hand"), {Qt::Key_M}, [this] { mover.setOn(!mover.isOn()); });
    move->setCheckable(true);
    move->setIcon(glyph(Glyph::Move));
    worldAxes = add(tr("Along the axes of the &world"), {Qt::Key_X}, [this] {
        using vrk::visual::DragAxes;
        mover.setAxes(mover.getAxes() == DragAxes::World ? DragAxes::Local : DragAxes::World);
        followState();
    });
    worldAxes->setCheckable(true);
    addSteps();
}

/// Without keys: they are chosen once for a piece of work.
void ViewActions::addSteps()
{
    const auto addGroup = [this](const std::array<double, 3>& choices, const QString& unit, double MoveSteps::*which) {
        auto* group = new QActionGroup(this);
        std::vector<std::pair<double, QAction*>> actions;
        for (const double choice : choices) {
            auto* action = new QAction(QString::number(choice) + unit, group);
            action->setCheckable(true);
            connect(action, &QAction::triggered, this, [this, which, choice] {
                MoveSteps steps = mover.getSteps();
                steps.*which = choice;
                mover.setSteps(steps);
                settings.setMoveSteps(steps);
            });
            actions.emplace_back(choice, action);
        }
        return actions;
    };
    lengthSteps = addGroup(MoveSteps::lengths, tr(" mm"), &MoveSteps::length);
    angleSteps = addGroup(MoveSteps::angles, QStringLiteral("°"), &MoveSteps::angle);
    mover.setSteps(settings.moveSteps());
}

void ViewActions::fillViewMenu(QMenu& menu) const
{
    menu.addAction(fit);
    menu.addAction(focus);
    QMenu* standard = menu.addMenu(tr("&Standard views"));
    for (QAction* view : views)
        standard->addAction(view);
    menu.addSeparator();
    menu.addActions(modes->actions());
    menu.addAction(showGhosts);
    menu.addSeparator();
    menu.addAction(grid);
    menu.addAction(turnedGrid);
    menu.addAction(showDirections);
    menu.addAction(byHeight);
    menu.addAction(depthShade);
    menu.addAction(groundShadow);
    menu.addAction(coarser);
    QMenu* frames = menu.addMenu(tr("F&rames"));
    frames->addAction(longerFrames);
    frames->addAction(shorterFrames);
    QMenu* programs = menu.addMenu(tr("&Programs"));
    for (QAction* part : programParts)
        programs->addAction(part);
}

void ViewActions::fillSelectMenu(QMenu& menu) const
{
    menu.addAction(clear);
    menu.addSeparator();
    menu.addAction(lasso);
    menu.addAction(closeLasso);
    menu.addAction(dropCorner);
    menu.addAction(pointsOnly);
    menu.addSeparator();
    for (const auto& [group, action] : picks)
        menu.addAction(action);
    menu.addAction(listCandidates);
    menu.addAction(listBackwards);
    menu.addSeparator();
    menu.addAction(hide);
    menu.addAction(show);
}

void ViewActions::fillEditMenu(QMenu& menu) const
{
    menu.addAction(move);
    menu.addAction(worldAxes);
    QMenu& steps = *menu.addMenu(tr("&Steps with Ctrl"));
    for (const auto& [step, action] : lengthSteps)
        steps.addAction(action);
    steps.addSeparator();
    for (const auto& [step, action] : angleSteps)
        steps.addAction(action);
}

void ViewActions::fillTreeMenu(QWidget& tree) const
{
    tree.addActions({focus, hide, show});
}

void ViewActions::fillToolBar(QToolBar& bar) const
{
    bar.addAction(fit);
    bar.addAction(focus);
    bar.addSeparator();
    for (QAction* view : views)
        bar.addAction(view);
    bar.addSeparator();
    bar.addActions(modes->actions());
    bar.addSeparator();
    bar.addAction(grid);
    bar.addSeparator();
    bar.addAction(move);
    bar.addAction(lasso);
    bar.addAction(pointsOnly);
    bar.addSeparator();
    for (const auto& [group, action] : picks)
        bar.addAction(action);
    bar.addSeparator();
    bar.addAction(hide);
    bar.addAction(show);
}

void ViewActions::focusOn(unsigned id)
{
    // Programs and paths have no shape that the scene's own focus would find.
    if (isOfProgram(id) && !isMoveOnScreen(id)) {
        if (const vrk::visual::Box targets = boxOfTargets(id); targets.isValid())
            flight.flyTo(poseForBox(targets));
    } else if (Scene::HasVisual(id)) {
        flight.flyTo(Scene::Get()->getVisualFocusPose(id));
    }
}

void ViewActions::follow()
{
    grid->setChecked(isGridShown());
    for (std::size_t i = 0; i < programParts.size(); ++i)
        programParts[i]->setChecked(isDrawn(allProgramParts()[i].part));
}

void ViewActions::followState()
{
    const bool any = !state.getSelected().empty();
    clear->setEnabled(state.isAnySelected() || framer.isOn() || measurer.isOn() || region.isDrawing() ||
                      region.isLassoOn() || mouse.getCandidates().isOpen());
    const bool isPolygon = region.getShape() == RegionTool::Shape::Polygon;
    closeLasso->setEnabled(isPolygon);
    dropCorner->setEnabled(isPolygon || framer.pickCount() > 0);
    lasso->setChecked(region.isLassoOn());
    for (const auto& [group, action] : picks)
        action->setChecked(mouse.getPick().takes(group));
    move->setChecked(mover.isOn());
    worldAxes->setChecked(mover.getAxes() == vrk::visual::DragAxes::World);
    for (const auto& [step, action] : lengthSteps)
        action->setChecked(step == mover.getSteps().length);
    for (const auto& [step, action] : angleSteps)
        action->setChecked(step == mover.getSteps().angle);
    pointsOnly->setChecked(region.isForPointsOnly());
    hide->setEnabled(any);
    focus->setEnabled(any);
    show->setEnabled(state.isAnyHidden());
    for (QAction* action : modes->actions())
        action->setChecked(action->data().toString() == state.getDrawMode().name);
}

} // namespace vrkview
