#include "edit/EditActions.h"

#include "canvas/ViewState.h"
#include "edit/Attaching.h"
#include "edit/Attempt.h"
#include "edit/Bands.h"
#include "edit/Changes.h"
#include "edit/History.h"
#include "edit/MenuAction.h"
#include "edit/ModelPlaces.h"
#include "edit/MoveThings.h"
#include "edit/PlaceDialog.h"
#include "edit/RemoveThings.h"

#include <QAction>
#include <QMenu>

#include <algorithm>

namespace vrkview {
namespace {

/// Several things hang on one, or on nothing, from now on.
class AttachSeveral : public Changes {
public:
    /// @param carrier  0 for nothing.
    AttachSeveral(const QString& text, const std::vector<unsigned>& things, unsigned carrier)
        : Changes(text, Touched::Things), things(things), carrier(carrier)
    {
    }

    bool isNeeded() const override { return !things.empty(); }
    void apply() override
    {
        if (isMade)
            return Changes::apply();
        try {
            for (const unsigned thing : things)
                if (carrier == 0)
                    applyAndAdd(std::make_unique<DetachThing>(thing));
                else
                    applyAndAdd(std::make_unique<AttachThing>(thing, carrier));
        } catch (...) {
            Changes::revert();
            throw;
        }
        isMade = true;
    }

private:
    std::vector<unsigned> things;
    unsigned carrier;
    bool isMade = false; // of steps
};

/// Bands and things leave together, a band ahead of what it lies on.
class RemoveSelection : public Changes {
public:
    explicit RemoveSelection(const std::vector<unsigned>& ids)
        : Changes(QObject::tr("Delete %1").arg(nameOfThings(ids)), Touched::Things)
    {
        std::vector<unsigned> things;
        for (const unsigned id : ids)
            if (isBand(id))
                add(std::make_unique<RemoveBand>(id));
            else
                things.push_back(id);
        add(std::make_unique<RemoveThings>(things));
    }
};

bool canRemove(unsigned id)
{
    return isPlaced(id) || isBand(id);
}

bool isCarried(unsigned id)
{
    return carrierOf(id).has_value();
}

bool canAttach(const std::vector<unsigned>& selected)
{
    return selected.size() >= 2 && std::all_of(selected.begin(), selected.end() - 1, [&selected](unsigned id) {
               return AttachThing::IsPossible(id, selected.back());
           });
}

} // namespace

EditActions::EditActions(QWidget& window, ViewState& state)
    : QObject(&window), window(window), state(state),
      undoAction(add(tr("&Undo"), QKeySequence(Qt::CTRL | Qt::Key_Z), &EditActions::undo)),
      redoAction(add(tr("&Redo"), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Z), &EditActions::redo)),
      rename(add(tr("Re&name…"), QKeySequence(Qt::Key_F2), nullptr)),
      place(add(tr("&Place…"), {}, &EditActions::askForPlace)),
      attach(add(tr("&Attach"), {}, &EditActions::attachSelected)),
      detach(add(tr("&Detach"), {}, &EditActions::detachSelected)),
      remove(add(tr("De&lete"), QKeySequence(Qt::Key_Delete), &EditActions::removeSelected))
{
    connect(rename, &QAction::triggered, this, [this] { emit renameRequested(this->state.getSelected().front()); });
    connect(&state.getHistory(), &History::stepsChanged, this, &EditActions::followSteps);
    connect(&state, &ViewState::selectionChanged, this, &EditActions::followState);
    connect(&state, &ViewState::stationChanged, this, &EditActions::followState);
    followSteps();
    followState();
}

QAction* EditActions::add(const QString& text, const QKeySequence& key, void (EditActions::*run)())
{
    return menuAction(window, this, text, key, run);
}

void EditActions::fillEditMenu(QMenu& menu) const
{
    menu.addActions({undoAction, redoAction});
    menu.addSeparator();
    menu.addActions({rename, place});
    menu.addSeparator();
    menu.addActions({attach, detach});
    menu.addSeparator();
    menu.addAction(remove);
}

void EditActions::fillTreeMenu(QWidget& tree) const
{
    tree.addActions({rename, place, attach, detach, remove});
}

// Commands

void EditActions::undo()
{
    attempt([this] { state.getHistory().undo(); });
}

void EditActions::redo()
{
    attempt([this] { state.getHistory().redo(); });
}

void EditActions::removeSelected()
{
    const std::vector<unsigned> ids = state.getSelected();
    state.clear(); // nothing of what goes stays selected
    push(std::make_unique<RemoveSelection>(ids));
}

void EditActions::attachSelected()
{
    std::vector<unsigned> ids = state.getSelected();
    if (!canAttach(ids))
        return;
    const unsigned carrier = ids.back();
    ids.pop_back();
    push(std::make_unique<AttachSeveral>(tr("Attach %1 to %2").arg(nameOfThings(ids), nameOfThing(carrier)), ids,
                                         carrier));
}

void EditActions::detachSelected()
{
    std::vector<unsigned> ids = state.getSelected();
    std::erase_if(ids, [](unsigned id) { return !isCarried(id); });
    push(std::make_unique<AttachSeveral>(tr("Detach %1").arg(nameOfThings(ids)), ids, 0));
}

void EditActions::askForPlace()
{
    const unsigned id = state.getSelected().front();
    const StationTree& tree = state.getTree();
    const int row = tree.find(id);
    const int above = row == StationTree::none ? row : tree.getRows()[static_cast<std::size_t>(row)].parent;
    const QString base = above == StationTree::none
                             ? QString()
                             : QString::fromStdString(tree.getRows()[static_cast<std::size_t>(above)].name);
    auto* dialog = new PlaceDialog(nameOfThing(id), base, poseOfThing(id), &window);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &QDialog::accepted, this,
            [this, dialog, id] { push(std::make_unique<MoveThings>(id, dialog->getPose())); });
    dialog->open();
}

void EditActions::push(std::unique_ptr<Change> change)
{
    attempt([this, &change] { state.getHistory().push(std::move(change)); });
}

void EditActions::attempt(const std::function<void()>& act)
{
    vrkview::attempt(act, [this](const QString& text) { emit failed(text); });
}

// Following

void EditActions::followSteps()
{
    const History& history = state.getHistory();
    const auto show = [](QAction& action, const QString& verb, QString step, bool isPossible) {
        action.setText(step.isEmpty() ? verb : verb + ' ' + step.replace('&', "&&"));
        action.setEnabled(isPossible);
    };
    show(*undoAction, tr("&Undo"), history.undoText(), history.canUndo());
    show(*redoAction, tr("&Redo"), history.redoText(), history.canRedo());
}

void EditActions::followState()
{
    const std::vector<unsigned>& ids = state.getSelected();
    const bool canAttachNow = canAttach(ids);
    rename->setEnabled(ids.size() == 1 && state.getTree().find(ids.front()) != StationTree::none);
    place->setEnabled(ids.size() == 1 && isPlaced(ids.front()));
    attach->setEnabled(canAttachNow);
    attach->setText(canAttachNow ? tr("&Attach to %1").arg(nameOfThing(ids.back()).replace('&', "&&")) : tr("&Attach"));
    detach->setEnabled(std::ranges::any_of(ids, isCarried));
    remove->setEnabled(!ids.empty() && std::ranges::all_of(ids, canRemove));
}

} // namespace vrkview
