#include "KeysHelp.h"

#include <QAction>
#include <QMenu>
#include <QMenuBar>
#include <QStringList>

namespace vrkview {
namespace {

QString withoutMarks(QString text)
{
    return text.remove('&').remove(QStringLiteral("…")).toHtmlEscaped();
}

QString keysOf(const QAction& action)
{
    QStringList keys;
    for (const QKeySequence& key : action.shortcuts())
        keys << "<b>" + key.toString(QKeySequence::NativeText).toHtmlEscaped() + "</b>";
    return keys.join(QStringLiteral(" or "));
}

/// @param group  what the commands of a submenu have in common; empty for a menu of the bar.
void appendRows(const QMenu& menu, const QString& group, QString& rows)
{
    for (const QAction* action : menu.actions())
        if (const QMenu* below = action->menu())
            appendRows(*below, withoutMarks(below->title()) + ": ", rows);
        else if (!action->shortcuts().isEmpty())
            rows += QString("<tr><td align='right'>%1</td><td>%2%3</td></tr>")
                        .arg(keysOf(*action), group, withoutMarks(action->text()));
}

} // namespace

QString keysHelp(const QMenuBar& menus)
{
    QString columns;
    for (const QAction* action : menus.actions()) {
        QString rows;
        appendRows(*action->menu(), {}, rows);
        if (!rows.isEmpty())
            columns +=
                QString("<tr><td></td><td><br><big>%1</big></td></tr>%2").arg(withoutMarks(action->text()), rows);
    }
    return "<table cellspacing='0' cellpadding='3'>" + columns + "</table>";
}

} // namespace vrkview
