#include "window/GlyphEngine.h"
#include "window/Glyphs.h"

#include <QPainter>
#include <QPainterPath>

namespace vrkview {
namespace {

const QColor way(150, 96, 184), sheet(128, 140, 152), place(58, 110, 210);

QPen pen(const QColor& color, double width = 1.6)
{
    return {QBrush(color), width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin};
}

void drawTarget(QPainter& painter, const QPointF& at)
{
    painter.setPen(Qt::NoPen);
    painter.setBrush(place);
    painter.drawEllipse(at, 2.1, 2.1);
    painter.setBrush(Qt::NoBrush);
}

/// A sheet with lines of text.
void drawProgram(QPainter& painter)
{
    painter.setPen(pen(sheet, 1.3));
    painter.drawRoundedRect(QRectF(2.8, 1.8, 10.4, 12.4), 1.4, 1.4);
    painter.setPen(pen(way, 1.3));
    for (const double y : {5.2, 8.0, 10.8})
        painter.drawLine(QPointF(5.4, y), QPointF(y == 8.0 ? 9.0 : 10.6, y));
}

/// Places that a line joins.
void drawPath(QPainter& painter)
{
    painter.setPen(pen(way));
    painter.drawPolyline(QPolygonF({{2.6, 12.6}, {5.6, 4.6}, {10.2, 10.4}, {13.4, 3.4}}));
    for (const QPointF& at : {QPointF(2.6, 12.6), QPointF(5.6, 4.6), QPointF(10.2, 10.4), QPointF(13.4, 3.4)})
        drawTarget(painter, at);
}

void drawMove(QPainter& painter, StepIcon which)
{
    QPen line = pen(way);
    if (which == StepIcon::Dashed)
        line.setDashPattern({1.2, 1.8});
    painter.setPen(line);
    QPainterPath moved(QPointF(2.4, 12.8));
    if (which == StepIcon::Circular)
        moved.arcTo(QRectF(2.4, 3.4, 18.8, 18.8), 180, -90);
    else
        moved.lineTo(12.2, 4);
    painter.drawPath(moved);
    drawTarget(painter, which == StepIcon::Circular ? QPointF(12.2, 3.6) : QPointF(12.6, 3.6));
}

void drawStep(QPainter& painter, const QColor&, int number)
{
    switch (const auto which = static_cast<StepIcon>(number)) {
    case StepIcon::Program:
        return drawProgram(painter);
    case StepIcon::Path:
        return drawPath(painter);
    case StepIcon::Other:
        painter.setPen(Qt::NoPen);
        painter.setBrush(sheet);
        painter.drawEllipse(QPointF(8, 8), 1.5, 1.5);
        return;
    default:
        return drawMove(painter, which);
    }
}

} // namespace

QIcon stepIcon(StepIcon which)
{
    return QIcon(new GlyphEngine(drawStep, static_cast<int>(which)));
}

} // namespace vrkview
