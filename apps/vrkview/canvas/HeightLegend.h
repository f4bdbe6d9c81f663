#pragma once

#include <QImage>
#include <QLinearGradient>
#include <QString>

#include <optional>
#include <vector>

namespace vrkview {

struct ShownHeights;

/// The colours of heights between two places of a picture or widget.
QLinearGradient heightGradient(const QPointF& lowest, const QPointF& highest);

/// What stands beside the legend's bar.
struct HeightMark {
    double part; ///< of the bar, from 0, its lower end, to 1
    QString text;
};
/// The numbers of both ends and round ones between them, in ascending order; words where there is no range.
/// @param lines  of text that have room along the bar, at least 1.
std::vector<HeightMark> heightMarks(const ShownHeights& heights, double lines);

/// Draws what the colours of scans say into the lower right corner of a picture, in proportion to it: heights in millimetres.
/// Nothing where no scan is coloured by height, or where those that are make a small part of what is shown. Needs Qt's
/// application, for the font. Render thread, after `processMsgs`.
void addHeightLegend(QImage& picture);

/// The same by itself, for the corner of a view.
struct CornerLegend {
    QImage picture; ///< red, green, blue and alpha, which the colours are multiplied by
    int margin;     ///< to the edges of the view, pixels
};
/// Nothing where a picture of this size would have none.
/// @param view   device pixels.
/// @param ratio  device pixels for a logical one: letters have at least ten of the latter.
std::optional<CornerLegend> heightLegend(const QSize& view, double ratio);

} // namespace vrkview
