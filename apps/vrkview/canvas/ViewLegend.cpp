#include "canvas/ViewLegend.h"

#include "canvas/HeightLegend.h"
#include "canvas/ViewState.h"
#include "canvas/ViewWidget.h"

#include "scene/ViewLook.h"

#include <QEvent>

#include <utility>

namespace vrkview {

ViewLegend::ViewLegend(ViewWidget& view, const ViewState& state) : QObject(&view), view(view)
{
    later.setSingleShot(true);
    later.setInterval(0);
    connect(&later, &QTimer::timeout, this, &ViewLegend::refresh);
    const auto soon = [this] { later.start(); };
    connect(&state, &ViewState::stationChanged, this, soon);
    connect(&state, &ViewState::visibilityChanged, this, soon);
    connect(&state, &ViewState::cloudLooksChanged, this, soon);
    connect(&view, &ViewWidget::ready, this, soon);
    view.installEventFilter(this);
}

QRect ViewLegend::getArea() const
{
    const QSize all = view.toDevice(view.size());
    QRect area = picture.rect();
    if (!area.isEmpty())
        area.moveBottomRight({all.width() - margin - 1, all.height() - margin - 1});
    return area;
}

bool ViewLegend::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::Resize)
        later.start();
    return QObject::eventFilter(watched, event);
}

void ViewLegend::refresh()
{
    if (!view.isReady())
        return; // it has no size yet
    view.drain();
    const auto legend = heightLegend(view.toDevice(view.size()), view.devicePixelRatioF());
    const QImage wanted = legend ? legend->picture : QImage();
    if (wanted == picture)
        return;
    picture = wanted;
    if (!legend) {
        vrk::visual::ResetCornerPicture();
        return;
    }
    margin = legend->margin;
    vrk::visual::SetCornerPicture({picture.constBits(), static_cast<std::size_t>(picture.sizeInBytes())},
                                  static_cast<unsigned>(picture.width()), static_cast<unsigned>(picture.height()),
                                  static_cast<unsigned>(margin));
}

} // namespace vrkview
