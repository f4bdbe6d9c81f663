#include "paint/ThicknessLegend.h"

#include <QPainter>

#include <array>
#include <cmath>

namespace vrkview {
namespace {

constexpr int barHeight = 22;
constexpr int gap = 4;   // between bar, marks and texts
constexpr int side = 22; // left of and right of the bar: half of a text
constexpr double micrometres = 1000;

QColor colorOf(double part)
{
    const vrk::rob::Colorf color = vrk::process::scaleColor(part);
    return QColor::fromRgbF(color.r, color.g, color.b);
}

} // namespace

ThicknessLegend::ThicknessLegend(QWidget* parent) : QWidget(parent)
{
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setAccessibleName(tr("Scale of the thickness"));
}

void ThicknessLegend::setTarget(const vrk::process::ThicknessTarget& wanted)
{
    target = wanted;
    update();
}

QSize ThicknessLegend::sizeHint() const
{
    return {200, barHeight + 2 * (gap + fontMetrics().height()) + gap};
}

double ThicknessLegend::placeOf(double thickness) const
{
    return side + (width() - 2 * side) * std::min(thickness / target.mostShown(), 1.0);
}

void ThicknessLegend::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF bar(side, 0.5, width() - 2 * side, barHeight);
    QLinearGradient scale(bar.topLeft(), bar.topRight());
    constexpr int stops = 32;
    for (int i = 0; i <= stops; ++i)
        scale.setColorAt(static_cast<double>(i) / stops, colorOf(static_cast<double>(i) / stops));
    painter.fillRect(bar, scale);
    paintPatterns(painter, bar);
    paintMarks(painter, bar);
}

/// As on the bodies: dark stripes on what is too thin, light dots on what is too thick, and a line at either border.
void ThicknessLegend::paintPatterns(QPainter& painter, const QRectF& bar) const
{
    const double low = placeOf(target.low()), high = placeOf(target.high());
    constexpr double step = 7;
    painter.save();
    painter.setClipRect(QRectF(bar.left(), bar.top(), low - bar.left(), bar.height()));
    painter.setPen(QPen(QColor(10, 8, 26, 150), 2.2));
    for (double x = bar.left() - bar.height(); x < low; x += step)
        painter.drawLine(QPointF(x, bar.bottom()), QPointF(x + bar.height(), bar.top()));
    painter.setClipRect(QRectF(high, bar.top(), bar.right() - high, bar.height()));
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(255, 255, 255, 215));
    for (int row = 0; row * step < bar.height(); ++row)
        for (double x = high + (row % 2 == 0 ? step / 2 : step); x < bar.right(); x += step)
            painter.drawEllipse(QPointF(x, bar.top() + step / 2 + row * step), 1.4, 1.4);
    painter.restore();
    painter.setPen(QPen(Qt::black, 1.5));
    for (const double border : {low, high})
        painter.drawLine(QPointF(border, bar.top()), QPointF(border, bar.bottom()));
    painter.setPen(QPen(palette().color(QPalette::Mid), 1));
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(bar);
}

void ThicknessLegend::paintMarks(QPainter& painter, const QRectF& bar) const
{
    const int height = fontMetrics().height();
    painter.setPen(palette().color(QPalette::WindowText));
    const double numbers = bar.bottom() + gap;
    for (const double thickness : {0.0, target.low(), target.high(), target.mostShown()}) {
        const QString text = QString::number(thickness * micrometres, 'g', 3);
        painter.drawText(QRectF(placeOf(thickness) - 2 * side, numbers, 4 * side, height), Qt::AlignCenter, text);
    }
    struct Range {
        double from, to;
        QString text;
    };
    const std::array ranges = {Range{0, target.low(), tr("below")}, Range{target.low(), target.high(), tr("on target")},
                               Range{target.high(), target.mostShown(), tr("above")}};
    for (const Range& range : ranges) {
        const double middle = (placeOf(range.from) + placeOf(range.to)) / 2;
        painter.drawText(QRectF(middle - 3 * side, numbers + height, 6 * side, height), Qt::AlignCenter, range.text);
    }
}

} // namespace vrkview
