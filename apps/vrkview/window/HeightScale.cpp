#include "window/HeightScale.h"

#include "canvas/CloudLooks.h"
#include "canvas/HeightLegend.h"
#include "canvas/ViewState.h"

#include <QLocale>
#include <QPainter>
#include <QTimer>

#include <algorithm>
#include <cmath>

namespace vrkview {
namespace {

constexpr int barWidth = 110;
constexpr int barHeight = 10;
constexpr int gap = 6;

QString textOf(double height)
{
    return QLocale().toString(height, 'f', std::abs(height) < 100 ? 1 : 0);
}

} // namespace

HeightScale::HeightScale(const ViewState& state, QWidget* parent) : QWidget(parent)
{
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Preferred);
    setAccessibleName(tr("Scale of the heights of scans"));
    hide();
    // When what was posted is done.
    const auto later = [this] { QTimer::singleShot(0, this, &HeightScale::refresh); };
    connect(&state, &ViewState::stationChanged, this, later);
    connect(&state, &ViewState::visibilityChanged, this, later);
    connect(&state, &ViewState::cloudLooksChanged, this, later);
    later();
}

void HeightScale::refresh()
{
    const ShownHeights heights = shownHeights();
    setVisible(heights.clouds > 0);
    low = heights.range ? textOf(heights.range->first) : tr("low");
    high = heights.range ? tr("%1 mm").arg(textOf(heights.range->second)) : tr("high");
    setToolTip(heights.range
                   ? tr("What the colours of the scan say: its height in the world")
                   : tr("What the colours of the scans say: heights, each scan from its lowest to its highest point"));
    updateGeometry();
    update();
}

QSize HeightScale::sizeHint() const
{
    const QFontMetrics metrics = fontMetrics();
    return {metrics.horizontalAdvance(low) + metrics.horizontalAdvance(high) + barWidth + 3 * gap,
            std::max(metrics.height(), barHeight)};
}

void HeightScale::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const int begin = fontMetrics().horizontalAdvance(low) + gap;
    const QRectF bar(begin + 0.5, (height() - barHeight) / 2 + 0.5, barWidth, barHeight);
    painter.fillRect(bar, heightGradient(bar.topLeft(), bar.topRight()));
    painter.setPen(palette().color(QPalette::Mid));
    painter.drawRect(bar);
    painter.setPen(palette().color(QPalette::WindowText));
    painter.drawText(QRect(0, 0, begin - gap, height()), Qt::AlignVCenter | Qt::AlignLeft, low);
    painter.drawText(QRectF(bar.right() + gap, 0, width() - bar.right() - gap, height()),
                     Qt::AlignVCenter | Qt::AlignLeft, high);
}

} // namespace vrkview
