#include "edit/BandActions.h"

#include "canvas/ViewState.h"
#include "edit/Attempt.h"
#include "edit/Bands.h"
#include "edit/History.h"
#include "edit/MenuAction.h"

#include <QAction>
#include <QActionGroup>
#include <QInputDialog>
#include <QMenu>

#include <algorithm>
#include <stdexcept>

namespace vrkview {
namespace {

using vrk::task::ToolSide;

// Millimetres
constexpr double finest = 0.001, coarsest = 100;
constexpr int decimals = 3;

} // namespace

BandActions::BandActions(QWidget& window, ViewState& state)
    : QObject(&window), window(window), state(state),
      band(add(tr("Make a &Band"), QKeySequence(Qt::CTRL | Qt::Key_B), nullptr)),
      bandOfChain(add(tr("Make a Band along the &Tangent Chain"), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_B),
                      &BandActions::makeBandOfChain)),
      path(add(tr("Make a Pat&h"), QKeySequence(Qt::CTRL | Qt::Key_H), &BandActions::makePath))
{
    connect(band, &QAction::triggered, this, [this] { makeBand(); });
    connect(&state, &ViewState::selectionChanged, this, &BandActions::followState);
    connect(&state, &ViewState::stationChanged, this, &BandActions::followState);
    followState();
}

QAction* BandActions::add(const QString& text, const QKeySequence& key, void (BandActions::*run)())
{
    return menuAction(window, this, text, key, run);
}

void BandActions::fillMenu(QMenu& menu)
{
    menu.addActions({band, bandOfChain, path});
    QMenu& direction = *menu.addMenu(tr("Tool D&irection of a Band"));
    auto* sides = new QActionGroup(this);
    const auto addSide = [&](const QString& text, ToolSide side) {
        QAction* action = direction.addAction(text);
        action->setCheckable(true);
        action->setChecked(options.side == side);
        sides->addAction(action);
        connect(action, &QAction::triggered, this, [this, side] { setSide(side); });
    };
    addSide(tr("&Halfway between the two faces"), ToolSide::Between);
    addSide(tr("Along the normal of the face to the &left"), ToolSide::Left);
    addSide(tr("Along the normal of the face to the &right"), ToolSide::Right);
    connect(menu.addAction(tr("Chord Toleran&ce of a Band…")), &QAction::triggered, this, &BandActions::askForChord);
}

void BandActions::fillTreeMenu(QWidget& tree) const
{
    tree.addActions({path});
}

void BandActions::makeBand()
{
    makeBand([](unsigned, const std::vector<unsigned>& edges) { return edges; });
}

void BandActions::makeBandOfChain()
{
    makeBand(tangentChainOf);
}

void BandActions::makeBand(const std::function<std::vector<unsigned>(unsigned, const std::vector<unsigned>&)>& pick)
{
    const std::vector<std::pair<unsigned, unsigned>> selected = state.getSelectedEdges();
    if (selected.empty())
        return;
    attempt([&] {
        const unsigned body = selected.front().first;
        std::vector<unsigned> edges;
        for (const auto& [of, edge] : selected) {
            if (of != body)
                throw std::invalid_argument("the edges of a band are of one body");
            edges.push_back(edge);
        }
        auto change = std::make_unique<AddBand>(body, pick(body, edges), options);
        const unsigned made = change->getBand();
        state.getHistory().push(std::move(change));
        state.selectVisuals({made});
    });
}

void BandActions::makePath()
{
    if (state.getSelected().size() == 1)
        attempt([this] { state.getHistory().push(std::make_unique<AddSeamPath>(state.getSelected().front())); });
}

void BandActions::askForChord()
{
    auto* dialog = new QInputDialog(&window);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setWindowTitle(tr("Chord Tolerance"));
    dialog->setLabelText(tr("How far the straight lines between the points of the next band may lie\n"
                            "from its edges, in millimetres:"));
    dialog->setInputMode(QInputDialog::DoubleInput);
    dialog->setDoubleDecimals(decimals);
    dialog->setDoubleRange(finest, coarsest);
    dialog->setDoubleValue(options.chordTolerance);
    connect(dialog, &QInputDialog::doubleValueSelected, this, &BandActions::setChordTolerance);
    dialog->open();
}

void BandActions::attempt(const std::function<void()>& act)
{
    vrkview::attempt(act, [this](const QString& text) { emit failed(text); });
}

void BandActions::followState()
{
    const bool areEdges = !state.getSelectedEdges().empty();
    band->setEnabled(areEdges);
    bandOfChain->setEnabled(areEdges);
    path->setEnabled(state.getSelected().size() == 1 && isBand(state.getSelected().front()));
}

} // namespace vrkview
