#include "paint/PaintActions.h"

#include "canvas/ViewState.h"
#include "edit/Attempt.h"
#include "edit/Changes.h"
#include "edit/History.h"
#include "edit/MenuAction.h"
#include "edit/ModelPlaces.h"
#include "paint/BodyCoats.h"
#include "paint/SprayPaths.h"
#include "paint/SprayRun.h"
#include "paint/SprayStroke.h"

#include "platform/process/ThicknessMap.h"

#include <QAction>
#include <QFileDialog>
#include <QFileInfo>
#include <QGuiApplication>
#include <QMenu>

#include <algorithm>

namespace vrkview {
namespace {

constexpr float sameVertex = 1e-3f; // model units: what a map may be off, which holds single precision

/// The paint of several bodies goes as one step.
class ClearPaint : public Changes {
public:
    ClearPaint(BodyCoats& coats, const std::vector<unsigned>& bodies)
        : Changes(QObject::tr("Clear paint of %1").arg(nameOfThings(bodies)), Touched::Nothing)
    {
        for (const unsigned body : bodies)
            add(std::make_unique<ExchangePaint>(QString(), coats, body,
                                                std::vector<float>(coats.getThickness(body).size())));
    }
};

/// The mouse tells that the program works on a skin, for which a large body takes a second.
class WaitCursor {
public:
    WaitCursor() { QGuiApplication::setOverrideCursor(Qt::WaitCursor); }
    ~WaitCursor() { QGuiApplication::restoreOverrideCursor(); }
    WaitCursor(const WaitCursor&) = delete;
    WaitCursor& operator=(const WaitCursor&) = delete;
};

} // namespace

PaintActions::PaintActions(QWidget& window, ViewState& state, BodyCoats& coats, SprayRun& run)
    : QObject(&window), window(window), state(state), coats(coats), run(run),
      beginAction(menuAction(window, this, tr("&Spray along the selected way"), {}, &PaintActions::begin)),
      clear(menuAction(window, this, tr("&Clear paint"), {}, &PaintActions::clearPaint)),
      open(menuAction(window, this, tr("&Open map of thickness…"), {}, &PaintActions::askForMap)),
      save(menuAction(window, this, tr("Save &map of thickness…"), {}, &PaintActions::askWhereToSave))
{
    connect(&state, &ViewState::selectionChanged, this, &PaintActions::followState);
    connect(&state, &ViewState::stationChanged, this, &PaintActions::followState);
    connect(&coats, &BodyCoats::changed, this, &PaintActions::followState);
    followState();
}

void PaintActions::fillMenu(QMenu& menu) const
{
    menu.addActions({beginAction, clear});
    menu.addSeparator();
    menu.addActions({open, save});
}

void PaintActions::fillTreeMenu(QWidget& tree) const
{
    tree.addAction(beginAction);
}

void PaintActions::begin()
{
    std::vector<unsigned> things = state.getSelected();
    const auto path = std::ranges::find_if(things, isSprayPath);
    if (path == things.end())
        return;
    const unsigned way = *path;
    things.erase(path);
    if (things.empty())
        things = {bodyOfSprayPath(way)};
    attempt([&] {
        const WaitCursor waiting;
        if (sprayWaysOf(way, run.getSettings().distance).empty())
            throw std::runtime_error(
                tr("%1 has no moves along which a gun could spray.").arg(nameOfThing(way)).toStdString());
        const std::vector<unsigned> bodies = coats.cover(things);
        if (bodies.empty())
            throw std::runtime_error(tr("%1: nothing here takes paint.").arg(nameOfThings(things)).toStdString());
        run.begin(way, bodies);
        state.clear(); // the look of what is selected would hide the paint
        emit began();
    });
}

void PaintActions::clearPaint()
{
    attempt([this] { state.getHistory().push(std::make_unique<ClearPaint>(coats, paintedOnes())); });
}

/// What is painted in the selection; without a selection all that is.
std::vector<unsigned> PaintActions::paintedOnes() const
{
    std::vector<unsigned> bodies = coats.getBodies();
    const std::vector<unsigned>& selected = state.getSelected();
    if (!selected.empty())
        std::erase_if(bodies, [&](unsigned body) {
            return std::ranges::none_of(selected, [&](unsigned thing) { return isBelow(body, thing); });
        });
    return bodies;
}

unsigned PaintActions::theOne(std::vector<unsigned> bodies)
{
    if (bodies.size() == 1)
        return bodies.front();
    throw std::runtime_error(tr("A map is that of one body. Select it.").toStdString());
}

void PaintActions::askWhereToSave()
{
    const QString path =
        QFileDialog::getSaveFileName(&window, tr("Save map of thickness"), {}, tr("Maps of thickness (*.ply)"));
    if (!path.isEmpty())
        saveMapTo(path);
}

void PaintActions::saveMapTo(QString path)
{
    if (QFileInfo(path).suffix().compare("ply", Qt::CaseInsensitive) != 0)
        path += ".ply";
    attempt([&] {
        const auto map = coats.mapOf(theOne(paintedOnes()));
        if (!map)
            throw std::runtime_error(tr("The body is not in the view.").toStdString());
        vrk::process::saveThicknessMap(path.toStdString(), *map);
        emit saved(path);
    });
}

void PaintActions::askForMap()
{
    const QString path =
        QFileDialog::getOpenFileName(&window, tr("Open map of thickness"), {}, tr("Maps of thickness (*.ply)"));
    if (!path.isEmpty())
        openMap(path);
}

void PaintActions::openMap(const QString& path)
{
    attempt([&] {
        const WaitCursor waiting;
        const std::vector<unsigned> known = coats.getBodies();
        const unsigned body = theOne(state.getSelected().empty() ? known : coats.cover(state.getSelected()));
        try {
            const auto map = coats.mapOf(body);
            if (!map)
                throw std::runtime_error(tr("The body is not in the view.").toStdString());
            std::vector<float> thickness =
                vrk::process::loadThicknessMap(path.toStdString(), map->vertices, sameVertex);
            state.getHistory().push(std::make_unique<ExchangePaint>(tr("Open map on %1").arg(nameOfThing(body)), coats,
                                                                    body, std::move(thickness)));
        } catch (...) {
            if (std::ranges::find(known, body) == known.end())
                coats.uncover({body});
            throw;
        }
        state.clear();
        emit began();
    });
}

void PaintActions::attempt(const std::function<void()>& act)
{
    vrkview::attempt(act, [this](const QString& text) { emit failed(text); });
}

void PaintActions::followState()
{
    const std::vector<unsigned>& ids = state.getSelected();
    const auto ways = std::ranges::count_if(ids, isSprayPath);
    const bool isOverBody = ids.size() > 1 || (ways == 1 && bodyOfSprayPath(ids.front()) != 0);
    beginAction->setEnabled(ways == 1 && isOverBody);
    const bool isAny = !coats.getBodies().empty();
    clear->setEnabled(isAny);
    open->setEnabled(isAny || !ids.empty());
    save->setEnabled(isAny);
}

} // namespace vrkview
