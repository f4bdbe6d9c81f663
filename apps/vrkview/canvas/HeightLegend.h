#pragma once

#include <QLinearGradient>
#include <QString>

#include <vector>

class QImage;

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

} // namespace vrkview
