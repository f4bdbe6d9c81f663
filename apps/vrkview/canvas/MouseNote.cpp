#include "canvas/MouseNote.h"

#include "canvas/ViewWidget.h"

namespace vrkview {
namespace {

constexpr QPoint offset(18, 14); // logical pixels from the mouse
constexpr int margin = 4;
constexpr int clearance = 10; // logical pixels about what is to be seen

} // namespace

/// A quick mouse may land on it: that is the view's, too.
MouseNote::MouseNote(ViewWidget& view)
    : view(view), label(new QLabel(&view, Qt::ToolTip | Qt::WindowTransparentForInput))
{
    label->setAttribute(Qt::WA_ShowWithoutActivating);
    label->setMargin(margin);
}

void MouseNote::tell(const QString& text, const QPointF& place, const std::optional<QPointF>& keepClear)
{
    label->setText(text);
    label->adjustSize();
    const auto toGlobal = [this](const QPointF& at) {
        return view.mapToGlobal((at / view.devicePixelRatioF()).toPoint());
    };
    QRect where(toGlobal(place) + offset, label->size());
    if (keepClear && where.adjusted(-clearance, -clearance, clearance, clearance).contains(toGlobal(*keepClear)))
        where.moveBottom(toGlobal(place).y() - offset.y());
    label->move(where.topLeft());
    label->show();
}

void MouseNote::hush()
{
    label->hide();
}

} // namespace vrkview
