#pragma once

#include "scene/math/Pose.h"

#include <QPointF>
#include <QString>

#include <optional>
#include <vector>

namespace vrk::selection {
struct PickCandidate;
}

namespace vrkview {

class StationTree;
class ViewWidget;

/// A place of the station's geometry that things can be put to.
struct SnapPlace {
    enum class Kind { Corner, Middle, Centre, Face };

    Kind kind = Kind::Face;
    vrk::rob::Posd place; ///< in the world
    QString text;         ///< "corner of Pedestal", "centre of a circle of Gear unit"
    unsigned body = 0;    ///< the visual that has it
    unsigned face = 0;    ///< from 1; 0 where it is no place of a face
    unsigned edge = 0;    ///< likewise
};

/// What a tool asks for.
enum class SnapFor {
    Place,
    Face, ///< of a solid
    Edge, ///< likewise
};

/// What lies under the mouse: a corner, the centre of a circle that an edge is of, the middle of another edge, or the place
/// of a face, in this order. Corners and edges count within some pixels. Picking must be up to date. Render thread.
///
/// @param mouse    device pixels of the view.
/// @param without  ids of things that do not count, with all that hangs on them; neither does the handle.
std::optional<SnapPlace> snapPlaceAt(const ViewWidget& view, const StationTree& tree, const QPointF& mouse,
                                     const std::vector<unsigned>& without, SnapFor what = SnapFor::Place);

/// The place that a pick found, likewise.
SnapPlace snapPlaceOf(const StationTree& tree, const vrk::selection::PickCandidate& found);

/// The outline of the sign of such a place: a square for a corner, a triangle for a middle, a circle for a centre, a diamond
/// for a face.
///
/// @param radius  device pixels.
std::vector<QPointF> signOf(SnapPlace::Kind kind, const QPointF& middle, double radius);

} // namespace vrkview
