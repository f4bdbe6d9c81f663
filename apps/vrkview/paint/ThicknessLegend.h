#pragma once

#include "platform/process/ThicknessColors.h"

#include <QWidget>

namespace vrkview {

/// The scale by which a map of paint is to be read: its colours from bare to twice the target, with the patterns that tell too
/// thin and too thick without them. Application thread.
class ThicknessLegend : public QWidget {
    Q_OBJECT

public:
    explicit ThicknessLegend(QWidget* parent = nullptr);

    void setTarget(const vrk::process::ThicknessTarget& wanted);
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    double placeOf(double thickness) const;
    void paintPatterns(QPainter& painter, const QRectF& bar) const;
    void paintMarks(QPainter& painter, const QRectF& bar) const;

    vrk::process::ThicknessTarget target;
};

} // namespace vrkview
