#pragma once

#include <QAction>
#include <QKeySequence>
#include <QString>
#include <QWidget>

namespace vrkview {

/// An action of `owner` that a menu of the window may hold; its key works while no menu is open, too.
/// @param run  null for an action that the owner connects itself.
template <typename Owner>
QAction* menuAction(QWidget& window, Owner* owner, const QString& text, const QKeySequence& key, void (Owner::*run)())
{
    auto* action = new QAction(text, &window);
    action->setShortcut(key);
    if (run)
        QObject::connect(action, &QAction::triggered, owner, run);
    window.addAction(action);
    return action;
}

} // namespace vrkview
