#pragma once

#include "platform/common/Export.h"
#include "scene/math/Pose.h"

#include <optional>

namespace vrk::visual {

/// Why the mouse says nothing of how far something was dragged.
enum class DragRefusal {
    None,
    NoPixels,      ///< the view has no pixels
    NotFinite,     ///< a mouse place, the pose or the camera
    TowardsViewer, ///< the axis points at the viewer, there or as a whole
    SeenEdgeOn,    ///< the ring is seen from its edge
    BehindViewer,  ///< the place under the mouse is not before the camera
    AtCentre,      ///< the mouse is on the centre of the ring, which has no direction
};

/// A sentence about it for the user; empty for `None`.
VRK_EXPORT const char* reasonOf(DragRefusal refusal);

/// How far a drag has gone, or why that cannot be told: then what is dragged stays where it is.
struct DragAnswer {
    std::optional<double> value;
    DragRefusal refusal = DragRefusal::None;
};

/// Which axes a drag goes by.
enum class DragAxes { Local, World };

/// The direction in the world of an axis, 0 to 2, of a pose or of the world.
VRK_EXPORT rob::Dird dragDirection(const rob::Posed& pose, unsigned axis, DragAxes axes);

/// The multiple of a step that is nearest, by the same rule on either side of zero. A step that is not above zero changes
/// nothing.
VRK_EXPORT double toStep(double value, double step);

} // namespace vrk::visual
