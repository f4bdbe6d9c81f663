#include "window/FrameActions.h"

#include "edit/MenuAction.h"
#include "window/Glyphs.h"

#include <QAction>
#include <QActionGroup>
#include <QMenu>
#include <QToolBar>
#include <QToolButton>

#include <array>

namespace vrkview {

using Way = FrameTool::Way;

FrameActions::FrameActions(QWidget& window, FrameTool& framer) : QObject(&window), window(window), framer(framer)
{
    addWays();
    addUses();
    connect(&framer, &FrameTool::changed, this, &FrameActions::followTool);
    followTool();
}

void FrameActions::addWays()
{
    struct Text {
        Way way;
        const char* text;
        QKeySequence key;
    };
    const std::array texts = {
        Text{Way::Axes, QT_TR_NOOP("&Origin, x and side of y"), Qt::Key_O},
        Text{Way::ThreePoints, QT_TR_NOOP("&Two points on x, one on y"), Qt::SHIFT | Qt::Key_O},
        Text{Way::Face, QT_TR_NOOP("&Middle of a face"), Qt::ALT | Qt::Key_O},
        Text{Way::Circle, QT_TR_NOOP("&Centre of a circle"), Qt::ALT | Qt::SHIFT | Qt::Key_O},
    };
    for (const Text& each : texts) {
        QAction* action = menuAction<FrameActions>(window, this, tr(each.text), each.key, nullptr);
        action->setCheckable(true);
        connect(action, &QAction::triggered, this, [this, way = each.way] { begin(way); });
        ways.emplace_back(each.way, action);
    }
}

/// Without keys: they are chosen once for a piece of work.
void FrameActions::addUses()
{
    auto* group = new QActionGroup(this);
    const auto add = [&](FrameUse use, const QString& text) {
        auto* action = new QAction(text, group);
        action->setCheckable(true);
        connect(action, &QAction::triggered, this, [this, use] { framer.setUse(use); });
        uses.emplace_back(use, action);
    };
    add(FrameUse::Frame, tr("Becomes a &frame"));
    add(FrameUse::UserFrame, tr("Becomes the &user frame of the selected work object"));
    add(FrameUse::WorkObject, tr("Becomes a new &work object"));
}

void FrameActions::fillMenu(QMenu& menu) const
{
    for (const auto& [way, action] : ways)
        menu.addAction(action);
    menu.addSeparator();
    for (const auto& [use, action] : uses)
        menu.addAction(action);
}

void FrameActions::fillToolBar(QToolBar& bar) const
{
    auto* button = new QToolButton(&bar);
    auto* menu = new QMenu(button);
    fillMenu(*menu);
    button->setIcon(glyph(Glyph::DefineFrame));
    button->setToolTip(tr("Define a frame"));
    button->setPopupMode(QToolButton::InstantPopup);
    button->setMenu(menu);
    bar.addWidget(button);
}

/// The way that is gone already is left.
void FrameActions::begin(Way way)
{
    if (framer.getWay() == way)
        framer.end();
    else
        framer.start(way);
    followTool(); // the menu has turned its mark over
}

void FrameActions::followTool()
{
    for (const auto& [way, action] : ways)
        action->setChecked(framer.getWay() == way);
    for (const auto& [use, action] : uses)
        action->setChecked(framer.getUse() == use);
}

} // namespace vrkview
