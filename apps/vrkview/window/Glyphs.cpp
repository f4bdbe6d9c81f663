#include "window/Glyphs.h"

#include "window/GlyphEngine.h"

#include <QPainter>
#include <QPainterPath>

#include <array>

namespace vrkview {
namespace {

constexpr double line = 1.2; // of 16 units

// A cube seen from the front right and above: the corners that all its drawings share.
constexpr QPointF cubeTop(8, 1.8), cubeRight(13.6, 4.9), cubeLowRight(13.6, 11.1), cubeBottom(8, 14.2),
    cubeLowLeft(2.4, 11.1), cubeLeft(2.4, 4.9), cubeMiddle(8, 8);

// The same sides for a view: front and back lie left in the picture, left and right lie right.
const QPolygonF topSide({cubeTop, cubeRight, cubeMiddle, cubeLeft});
const QPolygonF leftSide({cubeLeft, cubeMiddle, cubeBottom, cubeLowLeft});
const QPolygonF rightSide({cubeMiddle, cubeRight, cubeLowRight, cubeBottom});

QPen pen(const QColor& color, double width = line)
{
    return {QBrush(color), width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin};
}

QColor faded(QColor color, double opacity)
{
    color.setAlphaF(static_cast<float>(opacity));
    return color;
}

const QColor accent(62, 124, 190);

void drawCubeEdges(QPainter& painter, const QColor& ink)
{
    painter.setBrush(Qt::NoBrush);
    painter.setPen(pen(ink));
    painter.drawPolygon(QPolygonF({cubeTop, cubeRight, cubeLowRight, cubeBottom, cubeLowLeft, cubeLeft}));
    painter.drawPolyline(QPolygonF({cubeLeft, cubeMiddle, cubeRight}));
    painter.drawLine(cubeMiddle, cubeBottom);
}

void drawCubeSides(QPainter& painter, const QColor& color)
{
    painter.setPen(Qt::NoPen);
    painter.setBrush(color.lighter(135));
    painter.drawPolygon(topSide);
    painter.setBrush(color);
    painter.drawPolygon(leftSide);
    painter.setBrush(color.darker(130));
    painter.drawPolygon(rightSide);
}

/// A cube with the side that a view looks at. Sides that face away are shown through the others, paler.
void drawView(QPainter& painter, const QColor& ink, const QPolygonF& side, bool facesAway)
{
    painter.setPen(Qt::NoPen);
    painter.setBrush(faded(accent, facesAway ? 0.45 : 1));
    painter.drawPolygon(side);
    drawCubeEdges(painter, ink);
    if (facesAway) {
        painter.setPen(pen(faded(ink, 0.5), 0.8));
        painter.drawPolygon(side);
    }
}

void drawEye(QPainter& painter, const QColor& ink, Glyph which)
{
    QPainterPath lid(QPointF(1.6, 8));
    lid.quadTo(8, 0.9, 14.4, 8);
    lid.quadTo(8, 15.1, 1.6, 8);
    const bool isOpen = which == Glyph::EyeOpen;
    const QColor color = faded(ink, isOpen ? 0.8 : 0.6);
    painter.setPen(pen(color, 1.1));
    if (which == Glyph::EyeClosed) {
        QPainterPath lower(QPointF(1.6, 7));
        lower.quadTo(8, 14.1, 14.4, 7);
        painter.drawPath(lower);
        for (const QLineF& lash : {QLineF(8, 10.7, 8, 13.1), QLineF(4.3, 9.6, 3.0, 11.6), QLineF(11.7, 9.6, 13, 11.6)})
            painter.drawLine(lash);
        return;
    }
    painter.drawPath(lid);
    painter.setBrush(isOpen ? QBrush(color) : QBrush(Qt::NoBrush));
    painter.drawEllipse(QPointF(8, 8), 2.1, 2.1);
}

void drawFolder(QPainter& painter, const QColor& ink)
{
    painter.setPen(pen(ink));
    painter.setBrush(QColor(232, 196, 106));
    painter.drawPolygon(QPolygonF({{1.8, 13.2}, {1.8, 3.2}, {6.2, 3.2}, {7.6, 5}, {13.4, 5}, {13.4, 7}}));
    painter.drawPolygon(QPolygonF({{1.8, 13.2}, {4.2, 7}, {15, 7}, {12.8, 13.2}}));
}

void drawDisk(QPainter& painter, const QColor& ink)
{
    painter.setPen(pen(ink));
    painter.setBrush(accent);
    painter.drawPolygon(QPolygonF({{2.2, 2.2}, {11.4, 2.2}, {13.8, 4.6}, {13.8, 13.8}, {2.2, 13.8}}));
    painter.setBrush(Qt::white);
    painter.drawRect(QRectF(4.8, 8.6, 6.4, 5.2));
    painter.drawRect(QRectF(5.4, 2.2, 4.6, 3.2));
}

void drawCameraBody(QPainter& painter, const QColor& ink)
{
    painter.setPen(pen(ink));
    painter.drawPolyline(QPolygonF({{5, 4.6}, {6.2, 2.8}, {9.8, 2.8}, {11, 4.6}}));
    painter.drawRoundedRect(QRectF(1.8, 4.6, 12.4, 8.8), 1.2, 1.2);
    painter.setBrush(accent);
    painter.drawEllipse(QPointF(8, 9), 2.7, 2.7);
}

void drawCorners(QPainter& painter, const QColor& ink)
{
    painter.setPen(pen(ink, 1.4));
    painter.drawPolyline(QPolygonF({{2, 5.2}, {2, 2}, {5.2, 2}}));
    painter.drawPolyline(QPolygonF({{10.8, 2}, {14, 2}, {14, 5.2}}));
    painter.drawPolyline(QPolygonF({{14, 10.8}, {14, 14}, {10.8, 14}}));
    painter.drawPolyline(QPolygonF({{5.2, 14}, {2, 14}, {2, 10.8}}));
}

void drawFit(QPainter& painter, const QColor& ink)
{
    drawCorners(painter, ink);
    painter.setPen(Qt::NoPen);
    painter.setBrush(accent);
    painter.drawRoundedRect(QRectF(4.8, 4.8, 6.4, 6.4), 1, 1);
}

void drawFocus(QPainter& painter, const QColor& ink)
{
    painter.setPen(pen(ink, 1.3));
    painter.drawEllipse(QPointF(8, 8), 4.6, 4.6);
    for (const QLineF& hair :
         {QLineF(8, 1.4, 8, 4.6), QLineF(8, 11.4, 8, 14.6), QLineF(1.4, 8, 4.6, 8), QLineF(11.4, 8, 14.6, 8)})
        painter.drawLine(hair);
    painter.setPen(Qt::NoPen);
    painter.setBrush(accent);
    painter.drawEllipse(QPointF(8, 8), 1.8, 1.8);
}

void drawGrid(QPainter& painter, const QColor& ink)
{
    painter.setPen(pen(ink, 1));
    for (int i = 0; i < 4; ++i) { // a floor that runs away from the eye
        const double t = i / 3.0;
        painter.drawLine(QPointF(4.2 + 7.6 * t, 3.6), QPointF(1.2 + 13.6 * t, 12.8));
        const double y = 3.6 + 9.2 * t * (0.62 + 0.38 * t);
        const double inset = 3.0 * (12.8 - y) / 9.2;
        painter.drawLine(QPointF(1.2 + inset, y), QPointF(14.8 - inset, y));
    }
}

void drawMove(QPainter& painter, const QColor& ink)
{
    painter.setPen(pen(ink, 1.3));
    painter.drawLine(QPointF(8, 2), QPointF(8, 14));
    painter.drawLine(QPointF(2, 8), QPointF(14, 8));
    for (const auto& [a, tip, b] : {std::array{QPointF(6, 4), QPointF(8, 1.6), QPointF(10, 4)},
                                    std::array{QPointF(6, 12), QPointF(8, 14.4), QPointF(10, 12)},
                                    std::array{QPointF(4, 6), QPointF(1.6, 8), QPointF(4, 10)},
                                    std::array{QPointF(12, 6), QPointF(14.4, 8), QPointF(12, 10)}})
        painter.drawPolyline(QPolygonF({a, tip, b}));
}

/// A dimension: two lines on, and an arrow between them from end to end.
void drawMeasure(QPainter& painter, const QColor& ink)
{
    painter.setPen(pen(ink, 1.3));
    painter.drawLine(QPointF(2, 2.4), QPointF(2, 13.6));
    painter.drawLine(QPointF(14, 2.4), QPointF(14, 13.6));
    painter.setPen(pen(accent, 1.3));
    painter.drawLine(QPointF(2.8, 8), QPointF(13.2, 8));
    for (const auto& [a, tip, b] : {std::array{QPointF(5.4, 5.6), QPointF(2.8, 8), QPointF(5.4, 10.4)},
                                    std::array{QPointF(10.6, 5.6), QPointF(13.2, 8), QPointF(10.6, 10.4)}})
        painter.drawPolyline(QPolygonF({a, tip, b}));
}

void drawLasso(QPainter& painter, const QColor& ink)
{
    painter.setPen(pen(ink, 1.2));
    QPainterPath loop; // with the end of the rope hanging down
    loop.addEllipse(QRectF(2, 2.2, 12, 7.4));
    loop.moveTo(5.2, 9);
    loop.cubicTo(3.6, 10.4, 6.6, 11.4, 5.2, 14);
    painter.drawPath(loop);
}

void drawPoints(QPainter& painter, const QColor& ink)
{
    painter.setPen(Qt::NoPen);
    painter.setBrush(ink);
    for (const QPointF& place : {QPointF(3.2, 11.6), QPointF(5.6, 7.2), QPointF(8.4, 4.2), QPointF(11.2, 7.6),
                                 QPointF(8.2, 9.4), QPointF(12.8, 12.2), QPointF(7.2, 13), QPointF(12.6, 3.6)})
        painter.drawEllipse(place, 1.05, 1.05);
}

constexpr double paleness = 0.45; // of what a click does not take

/// A pale cube, of which one piece can be picked.
void drawPickedFace(QPainter& painter, const QColor& ink)
{
    drawCubeEdges(painter, faded(ink, paleness));
    painter.setPen(pen(ink));
    painter.setBrush(accent);
    painter.drawPolygon(rightSide);
}

void drawPickedEdge(QPainter& painter, const QColor& ink)
{
    drawCubeEdges(painter, faded(ink, paleness));
    painter.setPen(pen(accent, 2.6));
    painter.drawLine(cubeMiddle, cubeBottom);
}

void drawPickedVertex(QPainter& painter, const QColor& ink)
{
    drawCubeEdges(painter, faded(ink, paleness));
    painter.setPen(Qt::NoPen);
    painter.setBrush(accent);
    painter.drawEllipse(cubeMiddle, 2.4, 2.4);
}

void drawFrame(QPainter& painter, const QColor&)
{
    constexpr QPointF origin(6.4, 9.4);
    const auto axis = [&painter, origin](const QPointF& end, const QColor& color) {
        painter.setPen(pen(color, 1.8));
        painter.drawLine(origin, end);
    };
    axis({6.4, 1.8}, QColor(58, 104, 208));
    axis({14.2, 11.2}, QColor(204, 60, 54));
    axis({1.8, 13.8}, QColor(58, 150, 68));
}

void drawWire(QPainter& painter, const QColor& ink)
{
    drawCubeEdges(painter, ink);
    painter.setPen(pen(faded(ink, 0.7), 0.8));
    painter.drawLine(cubeLeft, cubeRight);
    painter.drawLine(cubeLeft, cubeBottom);
    painter.drawLine(cubeMiddle, cubeLowRight);
}

/// By its outline.
void drawCylinder(QPainter& painter, const QColor& ink, bool isHiddenShown)
{
    painter.setPen(pen(ink));
    painter.setBrush(Qt::NoBrush);
    painter.drawEllipse(QRectF(2.8, 1.8, 10.4, 4.6));
    painter.drawLine(QPointF(2.8, 4.1), QPointF(2.8, 11.9));
    painter.drawLine(QPointF(13.2, 4.1), QPointF(13.2, 11.9));
    painter.drawArc(QRectF(2.8, 9.6, 10.4, 4.6), 180 * 16, 180 * 16);
    if (!isHiddenShown)
        return;
    QPen dashes = pen(faded(ink, 0.7), 0.9);
    dashes.setDashPattern({1.6, 2.4});
    painter.setPen(dashes);
    painter.drawArc(QRectF(2.8, 9.6, 10.4, 4.6), 0, 180 * 16);
}

void drawWarning(QPainter& painter, const QColor&)
{
    painter.setPen(pen(QColor(176, 106, 0), 1));
    painter.setBrush(QColor(250, 190, 60));
    painter.drawPolygon(QPolygonF({{8, 1.8}, {15, 14}, {1, 14}}));
    painter.setPen(pen(QColor(70, 45, 0), 1.5));
    painter.drawLine(QPointF(8, 6.2), QPointF(8, 9.8));
    painter.drawPoint(QPointF(8, 12));
}

void drawReset(QPainter& painter, const QColor& ink)
{
    painter.setPen(pen(ink, 1.4));
    painter.drawArc(QRectF(3, 3, 10, 10), 150 * 16, -285 * 16);
    painter.setBrush(ink);
    painter.drawPolygon(QPolygonF({{1.6, 3.2}, {3.0, 7.2}, {6.2, 4.6}}));
}

void drawGlyph(QPainter& painter, const QColor& ink, int number)
{
    switch (const auto which = static_cast<Glyph>(number)) {
    case Glyph::EyeOpen:
    case Glyph::EyeHalf:
    case Glyph::EyeClosed:
        return drawEye(painter, ink, which);
    case Glyph::Open:
        return drawFolder(painter, ink);
    case Glyph::Save:
        return drawDisk(painter, ink);
    case Glyph::Screenshot:
        return drawCameraBody(painter, ink);
    case Glyph::Fit:
        return drawFit(painter, ink);
    case Glyph::Focus:
        return drawFocus(painter, ink);
    case Glyph::Isometric:
        drawCubeSides(painter, accent);
        return drawCubeEdges(painter, ink);
    case Glyph::Front:
        return drawView(painter, ink, leftSide, false);
    case Glyph::Right:
        return drawView(painter, ink, rightSide, false);
    case Glyph::Top:
        return drawView(painter, ink, topSide, false);
    case Glyph::Back:
        return drawView(painter, ink, QPolygonF({cubeMiddle, cubeTop, cubeRight, cubeLowRight}), true);
    case Glyph::Left:
        return drawView(painter, ink, QPolygonF({cubeLeft, cubeTop, cubeMiddle, cubeLowLeft}), true);
    case Glyph::Bottom:
        return drawView(painter, ink, QPolygonF({cubeLowLeft, cubeMiddle, cubeLowRight, cubeBottom}), true);
    case Glyph::Shaded:
        return drawCubeSides(painter, QColor(140, 152, 166));
    case Glyph::ShadedWithEdges:
        drawCubeSides(painter, QColor(140, 152, 166));
        return drawCubeEdges(painter, ink);
    case Glyph::Edges:
        return drawCubeEdges(painter, ink);
    case Glyph::Wire:
        return drawWire(painter, ink);
    case Glyph::Lines:
        return drawCylinder(painter, ink, false);
    case Glyph::DashedLines:
        return drawCylinder(painter, ink, true);
    case Glyph::Grid:
        return drawGrid(painter, ink);
    case Glyph::Move:
        return drawMove(painter, ink);
    case Glyph::Measure:
        return drawMeasure(painter, ink);
    case Glyph::DefineFrame:
        drawFrame(painter, ink);
        painter.setPen(pen(ink, 1.3)); // and one more of it
        painter.drawLine(QPointF(12.6, 1.6), QPointF(12.6, 6));
        painter.drawLine(QPointF(10.4, 3.8), QPointF(14.8, 3.8));
        return;
    case Glyph::Lasso:
        return drawLasso(painter, ink);
    case Glyph::Points:
        return drawPoints(painter, ink);
    case Glyph::PickBodies:
        drawCubeSides(painter, accent);
        return drawCubeEdges(painter, ink);
    case Glyph::PickFaces:
        return drawPickedFace(painter, ink);
    case Glyph::PickEdges:
        return drawPickedEdge(painter, ink);
    case Glyph::PickVertices:
        return drawPickedVertex(painter, ink);
    case Glyph::PickPoints:
        return drawPoints(painter, accent);
    case Glyph::PickFrames:
        return drawFrame(painter, ink);
    case Glyph::Warning:
        return drawWarning(painter, ink);
    case Glyph::Close:
        painter.setPen(pen(ink, 1.4));
        painter.drawLine(QPointF(4, 4), QPointF(12, 12));
        painter.drawLine(QPointF(4, 12), QPointF(12, 4));
        return;
    case Glyph::Reset:
        return drawReset(painter, ink);
    }
}

} // namespace

QIcon glyph(Glyph which)
{
    return QIcon(new GlyphEngine(drawGlyph, static_cast<int>(which)));
}

} // namespace vrkview
