#include "window/KeysHelp.h"

#include <QAction>
#include <QCoreApplication>
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
            rows += QString("<tr><td align='right' style='white-space:nowrap'>%1</td><td "
                            "style='white-space:nowrap'>%2%3</td></tr>")
                        .arg(keysOf(*action), group, withoutMarks(action->text()));
}

QString heading(const QString& text)
{
    return QString("<tr><td></td><td><br><big>%1</big></td></tr>").arg(text);
}

QString table(const QString& rows)
{
    return "<table cellspacing='0' cellpadding='3'>" + rows + "</table>";
}

QString keysHelp(const QMenuBar& menus)
{
    QString all;
    for (const QAction* action : menus.actions()) {
        QString rows;
        appendRows(*action->menu(), {}, rows);
        if (!rows.isEmpty())
            all += heading(withoutMarks(action->text())) + rows;
    }
    return table(all);
}

QString tr(const char* text)
{
    return QCoreApplication::translate("KeysHelp", text);
}

QString mouseHelp(Settings::MouseStyle style)
{
    QString rows;
    const auto add = [&rows](const QString& gesture, const QString& effect) {
        rows += QString("<tr><td align='right' style='white-space:nowrap'><b>%1</b></td><td "
                        "style='white-space:nowrap'>%2</td></tr>")
                    .arg(gesture, effect);
    };
    rows += heading(tr("Navigating"));
    const QString orbit = tr("orbits about what is under the mouse");
    if (style == Settings::MouseStyle::OrbitWithLeft) {
        add(tr("Left or middle drag"), orbit);
        add(tr("Right or Shift+middle drag"), tr("moves the view"));
    } else {
        add(tr("Middle drag"), orbit);
        add(tr("Left drag in empty space"), tr("orbits, too"));
        add(tr("Shift+middle drag"), tr("moves the view"));
    }
    add(tr("Wheel"), tr("zooms to what is under the mouse"));
    add(tr("Double click"), tr("flies to what is under the mouse"));
    rows += heading(tr("Selecting"));
    add(tr("Click"), tr("selects a part, robot, tool or device"));
    add(tr("Ctrl+click"), tr("adds it or takes it out"));
    add(tr("Click in empty space"), tr("selects nothing"));
    add(tr("Long press"), tr("lists all that a click there could mean"));
    add(tr("Shift+left drag"), tr("to the right selects what lies in the rectangle, to the left what it touches"));
    add(tr("Ctrl+Shift+left drag"), tr("adds that, or takes it out"));
    add(tr("With the lasso: drag, or click by click"), tr("selects what lies inside"));
    add(tr("Alt+click"), tr("selects a face as base, or takes it out"));
    add(tr("Alt+Shift+click"), tr("selects a face as side, or takes it out"));
    add(tr("Alt+Ctrl+click"), tr("selects the edge that is near by, or takes it out"));
    rows += heading(tr("Moving by hand"));
    add(tr("Drag of an arrow or a ring"), tr("moves or turns what is selected"));
    add(tr("Ctrl"), tr("goes in steps"));
    add(tr("V, held in a drag of an arrow"), tr("snaps to the corner, edge, circle or face under the mouse"));
    add(tr("Digits, -, . and Return"), tr("move by this number along the handle that was used last"));
    rows += heading(tr("Measuring"));
    add(tr("Click, and click"), tr("measures between two vertices, edges, faces, points or frames"));
    add(tr("Click twice on one, or Return"), tr("measures that alone: diameter, length, area, place"));
    add(tr("Shift+click"), tr("takes a whole body, for the minimum distance"));
    add(tr("Click on a number"), tr("selects its dimension, while nothing is measured"));
    return table(rows);
}

} // namespace

QString keysAndMouseHelp(const QMenuBar& menus, Settings::MouseStyle style)
{
    return QString("<table><tr><td>%1</td><td width='32'></td><td>%2</td></tr></table>")
        .arg(keysHelp(menus), mouseHelp(style));
}

} // namespace vrkview
