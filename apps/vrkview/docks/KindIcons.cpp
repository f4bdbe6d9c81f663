#include "window/GlyphEngine.h"
#include "window/Glyphs.h"

#include <QPainter>
#include <QPainterPath>

namespace vrkview {
namespace {

using vrk::VisualType;

// One hue for each family, of middle lightness: they are read on light and on dark ground.
const QColor machine(224, 122, 40), body(92, 132, 176), holder(128, 140, 152), scan(38, 150, 136), path(150, 96, 184);
const QColor xAxis(214, 64, 56), yAxis(74, 160, 66), zAxis(58, 110, 210);

QPen pen(const QColor& color, double width = 1.4)
{
    return {QBrush(color), width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin};
}

void drawRobot(QPainter& painter)
{
    painter.setPen(pen(machine, 2.2));
    painter.drawPolyline(QPolygonF({{5.4, 12}, {4.6, 6.6}, {9, 3.4}, {12.6, 6.4}}));
    painter.setPen(pen(machine, 1.4));
    painter.drawPolyline(QPolygonF({{11, 8.6}, {12.6, 6.4}, {14.4, 8.2}}));
    painter.setPen(Qt::NoPen);
    painter.setBrush(machine.darker(125));
    painter.drawRoundedRect(QRectF(1.8, 11.8, 7.4, 2.4), 0.6, 0.6);
    for (const QPointF& joint : {QPointF(4.6, 6.6), QPointF(9, 3.4)})
        painter.drawEllipse(joint, 1.5, 1.5);
}

void drawTool(QPainter& painter)
{
    painter.setPen(pen(machine, 1.7));
    painter.drawLine(QPointF(8, 1.8), QPointF(8, 5.6));
    painter.drawPolyline(QPolygonF({{5, 14}, {4, 10.4}, {4, 6.4}, {12, 6.4}, {12, 10.4}, {11, 14}}));
}

void drawDevice(QPainter& painter)
{
    painter.setPen(Qt::NoPen);
    painter.setBrush(machine);
    painter.drawEllipse(QRectF(1.6, 2.8, 12.8, 4.8));
    painter.setBrush(machine.darker(125));
    painter.drawPolygon(QPolygonF({{5.6, 8.4}, {10.4, 8.4}, {12.4, 13.6}, {3.6, 13.6}}));
}

void drawLink(QPainter& painter)
{
    painter.setPen(pen(holder, 3.4));
    painter.drawLine(QPointF(4.4, 11.6), QPointF(11.6, 4.4));
    painter.setPen(pen(holder, 1));
    painter.setBrush(Qt::white);
    painter.drawEllipse(QPointF(4.4, 11.6), 1.9, 1.9);
    painter.drawEllipse(QPointF(11.6, 4.4), 1.9, 1.9);
}

void drawBox(QPainter& painter, const QRectF& box, const QColor& color)
{
    // The sides of a cube seen from above and the right.
    const double x = box.x(), y = box.y(), w = box.width() / 2, h = box.height() / 4;
    const QPointF top(x + w, y), right(x + 2 * w, y + h), middle(x + w, y + 2 * h), left(x, y + h);
    const QPointF down(0, 2 * h);
    painter.setPen(Qt::NoPen);
    painter.setBrush(color.lighter(140));
    painter.drawPolygon(QPolygonF({top, right, middle, left}));
    painter.setBrush(color);
    painter.drawPolygon(QPolygonF({left, middle, middle + down, left + down}));
    painter.setBrush(color.darker(130));
    painter.drawPolygon(QPolygonF({middle, right, right + down, middle + down}));
}

void drawMesh(QPainter& painter)
{
    painter.setPen(pen(body, 1));
    painter.setBrush(body.lighter(150));
    painter.drawPolygon(QPolygonF({{8, 1.8}, {14.2, 6.4}, {11.8, 13.8}, {4.2, 13.8}, {1.8, 6.4}}));
    for (const QPointF& corner :
         {QPointF(8, 1.8), QPointF(14.2, 6.4), QPointF(11.8, 13.8), QPointF(4.2, 13.8), QPointF(1.8, 6.4)})
        painter.drawLine(QPointF(8, 8.4), corner);
}

void drawCurve(QPainter& painter)
{
    QPainterPath curve(QPointF(2, 12.6));
    curve.cubicTo(5, 1, 10.4, 15.6, 14, 3.4);
    painter.setPen(pen(path, 1.7));
    painter.drawPath(curve);
}

void drawCloud(QPainter& painter)
{
    painter.setPen(Qt::NoPen);
    painter.setBrush(scan);
    for (const QPointF& point : {QPointF(3, 11.6), QPointF(5.2, 8.2), QPointF(6.2, 12.4), QPointF(8, 5),
                                 QPointF(9, 9.2), QPointF(10, 13), QPointF(11.4, 6.4), QPointF(12.8, 10.4),
                                 QPointF(5.4, 4.2), QPointF(9.8, 2.6), QPointF(13.6, 13.2), QPointF(2.6, 7)})
        painter.drawEllipse(point, 1.05, 1.05);
}

void drawFrame(QPainter& painter)
{
    painter.setPen(pen(zAxis, 1.7));
    painter.drawLine(QPointF(6, 10), QPointF(6, 2));
    painter.setPen(pen(xAxis, 1.7));
    painter.drawLine(QPointF(6, 10), QPointF(14, 11.6));
    painter.setPen(pen(yAxis, 1.7));
    painter.drawLine(QPointF(6, 10), QPointF(2, 14));
}

void drawWorkObject(QPainter& painter)
{
    painter.setPen(Qt::NoPen);
    painter.setBrush(holder.lighter(130));
    painter.drawPolygon(QPolygonF({{1.4, 13.4}, {4.6, 9.2}, {14.8, 9.2}, {12, 13.4}}));
    painter.translate(1, -1.4);
    drawFrame(painter);
}

void drawToolData(QPainter& painter)
{
    painter.setPen(pen(machine, 1.5));
    painter.drawPolyline(QPolygonF({{3, 2}, {8, 8.6}, {13, 2}}));
    painter.setPen(Qt::NoPen);
    painter.setBrush(xAxis);
    painter.drawEllipse(QPointF(8, 11.8), 2.2, 2.2);
}

void drawBand(QPainter& painter)
{
    // A ribbon that bends away, with its seam in front.
    QPainterPath ribbon(QPointF(1.6, 12.6));
    ribbon.cubicTo(5, 15.4, 9, 8.4, 14.4, 10.2);
    ribbon.lineTo(14.4, 3.4);
    ribbon.cubicTo(9, 1.6, 5, 8.6, 1.6, 5.8);
    ribbon.closeSubpath();
    QColor through = scan;
    through.setAlphaF(0.45f);
    painter.setPen(Qt::NoPen);
    painter.setBrush(through);
    painter.drawPath(ribbon);
    QPainterPath seam(QPointF(1.6, 12.6));
    seam.cubicTo(5, 15.4, 9, 8.4, 14.4, 10.2);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(pen(scan, 1.7));
    painter.drawPath(seam);
}

void drawKind(QPainter& painter, const QColor&, int number)
{
    switch (static_cast<VisualType>(number)) {
    case VisualType::Manipulator:
        return drawRobot(painter);
    case VisualType::Tool:
        return drawTool(painter);
    case VisualType::Device:
        return drawDevice(painter);
    case VisualType::Link:
        return drawLink(painter);
    case VisualType::Assembly:
        drawBox(painter, {5, 0.8, 7, 8}, body);
        drawBox(painter, {1, 7.2, 7, 8}, body);
        return drawBox(painter, {8.4, 7.2, 7, 8}, body);
    case VisualType::Part:
        return drawBox(painter, {1.8, 1.2, 12.4, 13.6}, body);
    case VisualType::Solid:
        return drawBox(painter, {3.2, 2.8, 9.6, 10.8}, holder);
    case VisualType::Mesh:
        return drawMesh(painter);
    case VisualType::Curve:
        return drawCurve(painter);
    case VisualType::Point:
        painter.setPen(Qt::NoPen);
        painter.setBrush(path);
        painter.drawEllipse(QPointF(8, 8), 2.4, 2.4);
        return;
    case VisualType::PointCloud:
        return drawCloud(painter);
    case VisualType::None:
        return drawBand(painter);
    case VisualType::WObj:
        return drawWorkObject(painter);
    case VisualType::Tcp:
        return drawToolData(painter);
    default: // frames and the wrist
        return drawFrame(painter);
    }
}

} // namespace

QIcon kindIcon(VisualType kind)
{
    if (kind == VisualType::Path)
        return stepIcon(StepIcon::Path);
    if (kind == VisualType::MoveInstruction)
        return stepIcon(StepIcon::Linear);
    return QIcon(new GlyphEngine(drawKind, static_cast<int>(kind)));
}

} // namespace vrkview
