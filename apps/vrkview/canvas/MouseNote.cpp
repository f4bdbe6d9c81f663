#include "canvas/MouseNote.h"

#include "canvas/ViewWidget.h"

#include <QCoreApplication>
#include <QMouseEvent>
#include <QWheelEvent>

namespace vrkview {
namespace {

constexpr QPoint offset(18, 14); // logical pixels from the mouse
constexpr int aroundText = 4;
constexpr int clearance = 10; // logical pixels about what is to be seen

/// A quick mouse may land on it: whatever it does there is meant for the view below.
class NoteLabel : public QLabel {
public:
    explicit NoteLabel(ViewWidget& view) : QLabel(&view, Qt::ToolTip), view(view)
    {
        setAttribute(Qt::WA_ShowWithoutActivating);
        setMouseTracking(true);
        setMargin(aroundText);
    }

protected:
    bool event(QEvent* event) override
    {
        switch (event->type()) {
        case QEvent::MouseMove:
        case QEvent::MouseButtonPress:
        case QEvent::MouseButtonRelease:
        case QEvent::MouseButtonDblClick: {
            const auto& mouse = static_cast<const QMouseEvent&>(*event);
            QMouseEvent passed(mouse.type(), view.mapFromGlobal(mouse.globalPosition()), mouse.globalPosition(),
                               mouse.button(), mouse.buttons(), mouse.modifiers(), mouse.pointingDevice());
            return QCoreApplication::sendEvent(&view, &passed);
        }
        case QEvent::Wheel: {
            const auto& wheel = static_cast<const QWheelEvent&>(*event);
            QWheelEvent passed(view.mapFromGlobal(wheel.globalPosition()), wheel.globalPosition(), wheel.pixelDelta(),
                               wheel.angleDelta(), wheel.buttons(), wheel.modifiers(), wheel.phase(), wheel.inverted());
            return QCoreApplication::sendEvent(&view, &passed);
        }
        default:
            return QLabel::event(event);
        }
    }

private:
    ViewWidget& view;
};

} // namespace

MouseNote::MouseNote(ViewWidget& view) : view(view), label(new NoteLabel(view)) {}

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
