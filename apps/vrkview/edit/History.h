#pragma once

#include "edit/Change.h"

#include <QObject>
#include <QUndoStack>

#include <memory>

namespace vrkview {

/// The steps of work on the station, in the order in which they were made: each can be taken back and made again. It also
/// knows whether the station is as it was last saved.
///
/// Thread: the application's, which is the render thread.
class History : public QObject {
    Q_OBJECT

public:
    explicit History(QObject* parent = nullptr);

    /// Makes the change and keeps it as the last step; the steps that were taken back are forgotten. A change that merges
    /// with the last step makes no step of its own; one that would change nothing is passed over.
    /// @throws what `Change::apply` throws; there is no new step then.
    void push(std::unique_ptr<Change> change);
    /// Takes the last step back, or makes the next one again; nothing where there is none.
    /// @throws what `Change::apply` throws; the step is as before then.
    void undo();
    void redo();
    bool canUndo() const { return stack.canUndo(); }
    bool canRedo() const { return stack.canRedo(); }
    /// What is done by the step that `undo` or `redo` would take next: "Move Bracket"; empty where there is none.
    QString undoText() const { return stack.undoText(); }
    QString redoText() const { return stack.redoText(); }
    int count() const { return stack.count(); }

    bool isSaved() const { return stack.isClean(); }
    void noteSaved() { stack.setClean(); }
    /// Call it when another station took the place of the one before.
    void forget() { stack.clear(); }

signals:
    /// After a change was made or taken back.
    void changed(vrkview::Touches touches);
    /// What could be taken back or made again is another step now.
    void stepsChanged();
    void savedChanged(bool isSaved);

private:
    Touches touchesOf(int step) const;

    QUndoStack stack; // of nothing but `Change`
};

} // namespace vrkview
