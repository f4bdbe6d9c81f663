#include "edit/History.h"

namespace vrkview {

History::History(QObject* parent) : QObject(parent)
{
    connect(&stack, &QUndoStack::indexChanged, this, &History::stepsChanged);
    connect(&stack, &QUndoStack::undoTextChanged, this, &History::stepsChanged);
    connect(&stack, &QUndoStack::cleanChanged, this, &History::savedChanged);
}

void History::push(std::unique_ptr<Change> change)
{
    if (!change->isNeeded())
        return;
    const Touches touches = change->getTouches();
    stack.push(change.get()); // makes it; a failure leaves the stack as it is
    change.release();         // it is the stack's now, or has merged and is gone
    emit changed(touches);
}

void History::undo()
{
    if (!stack.canUndo())
        return;
    const Touches touches = touchesOf(stack.index() - 1);
    stack.undo();
    emit changed(touches);
}

void History::redo()
{
    if (!stack.canRedo())
        return;
    const Touches touches = touchesOf(stack.index());
    stack.redo();
    emit changed(touches);
}

Touches History::touchesOf(int step) const
{
    return static_cast<const Change*>(stack.command(step))->getTouches();
}

} // namespace vrkview
