#pragma once

#include "canvas/SnapPlace.h"

#include "platform/layout/Dimension.h"

#include <QPointF>
#include <QString>

#include <optional>

namespace vrkview {

class StationTree;
class ViewWidget;

/// Something under the mouse that can be measured.
struct MeasurePick {
    vrk::layout::DimensionEnd end;
    SnapPlace mark;
    QString text; ///< "edge 12 of Bracket, circle, diameter 40.00 mm"
};

/// What a dimension holds on to; where it was picked is no matter.
bool isSameThing(const vrk::layout::DimensionEnd& a, const vrk::layout::DimensionEnd& b);

/// What a click would measure: a vertex or a point, an edge, the origin of a frame, a point of a cloud, a face or the next
/// corner of a mesh; all but faces and meshes count within some pixels. Picking must be up to date. Render thread.
///
/// @param mouse     device pixels of the view.
/// @param isWhole   takes the whole body that lies there.
std::optional<MeasurePick> measurePickAt(const ViewWidget& view, const StationTree& tree, const QPointF& mouse,
                                         bool isWhole);

} // namespace vrkview
