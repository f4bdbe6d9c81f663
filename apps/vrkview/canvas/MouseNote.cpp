#include "canvas/MouseNote.h"

#include "canvas/ViewWidget.h"

namespace vrkview {
namespace {

constexpr QPoint offset(18, 14); // logical pixels from the mouse
constexpr int margin = 4;

} // namespace

MouseNote::MouseNote(ViewWidget& view) : view(view), label(new QLabel(&view, Qt::ToolTip))
{
    label->setAttribute(Qt::WA_ShowWithoutActivating);
    label->setMargin(margin);
}

void MouseNote::tell(const QString& text, const QPointF& place)
{
    label->setText(text);
    label->adjustSize();
    label->move(view.mapToGlobal((place / view.devicePixelRatioF()).toPoint()) + offset);
    label->show();
}

void MouseNote::hush()
{
    label->hide();
}

} // namespace vrkview
