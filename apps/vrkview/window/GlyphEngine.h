#pragma once

#include <QIconEngine>

namespace vrkview {

/// An icon that a function draws on a square of 16 x 16 units, in the ink that the palette has for it.
class GlyphEngine : public QIconEngine {
public:
    using Draw = void (*)(QPainter& painter, const QColor& ink, int which);

    /// @param which  what is handed on to `draw`.
    GlyphEngine(Draw draw, int which) : draw(draw), which(which) {}

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State state) override;
    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override;
    QIconEngine* clone() const override { return new GlyphEngine(draw, which); }

private:
    Draw draw;
    int which;
};

} // namespace vrkview
