#include "window/GlyphEngine.h"

#include <QGuiApplication>
#include <QPainter>
#include <QPalette>

namespace vrkview {
namespace {

constexpr double units = 16;

QColor inkFor(QIcon::Mode mode)
{
    const QPalette palette = QGuiApplication::palette();
    switch (mode) {
    case QIcon::Selected:
        return palette.color(QPalette::HighlightedText);
    default:
        return palette.color(QPalette::WindowText);
    }
}

} // namespace

void GlyphEngine::paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State)
{
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    const double side = std::min(rect.width(), rect.height());
    painter->translate(rect.x() + (rect.width() - side) / 2, rect.y() + (rect.height() - side) / 2);
    painter->scale(side / units, side / units);
    if (mode == QIcon::Disabled)
        painter->setOpacity(0.3); // what is coloured by itself fades, too
    draw(*painter, inkFor(mode), which);
    painter->restore();
}

QPixmap GlyphEngine::pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state)
{
    QPixmap pixels(size);
    pixels.fill(Qt::transparent);
    QPainter painter(&pixels);
    paint(&painter, QRect(QPoint(0, 0), size), mode, state);
    return pixels;
}

} // namespace vrkview
