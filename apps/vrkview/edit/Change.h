#pragma once

#include <QFlags>
#include <QString>
#include <QUndoCommand>

namespace vrkview {

/// What a change makes different, for those who show the station.
enum class Touched {
    Nothing = 0,
    Things = 1, ///< something came, went, hangs elsewhere or has another name
    Visibility = 2,
    Colors = 4,
    Points = 8, ///< which points of clouds there are, or are hidden
    Reach = 16, ///< of which robots it is shown how far they reach
    Dimensions = 32,
};
Q_DECLARE_FLAGS(Touches, Touched)

/// One step of work on the station that can be taken back: a change of the model that tells the scene, where there is one,
/// by its public operations. The model is the only place that holds the state; a change keeps what it needs to go either way.
///
/// How another kind of change joins: derive a class in files of its own in this folder, named after what the user does;
/// read in its constructor what the model holds now; in `apply` and `revert` write the model under its lock and post to the
/// scene; say in the constructor what is touched. Nothing else knows the kinds: who makes one hands it to `History::push`,
/// and the docks follow `History::changed`. A change that consists of others is a `Changes`.
///
/// `revert` leaves the model exactly as it was, order of lists included, so that a station that is saved then is the same
/// file to the byte. It may count on finding what `apply` left.
///
/// Thread: the application's, which is the render thread.
class Change : public QUndoCommand {
public:
    /// @param text  as it stands in the menu behind "Undo": "Move Bracket".
    Change(const QString& text, Touches touches) : QUndoCommand(text), touches(touches) {}

    Touches getTouches() const { return touches; }
    /// Whether it would change anything. What would not makes no step.
    virtual bool isNeeded() const { return true; }
    /// @throws std::exception, Standard_Failure  what cannot be shown; nothing has changed then.
    virtual void apply() = 0;
    /// @throws as `apply`
    virtual void revert() = 0;

    void redo() final { apply(); }
    void undo() final { revert(); }

private:
    Touches touches;
};

} // namespace vrkview
