#pragma once

#include "platform/common/Export.h"

#include <optional>

class TopoDS_Face;

namespace vrk::geometry {

struct SurfaceParameters {
    double u;
    double v;
};

/// The nearest foot of the perpendicular from a point (model units) to the surface of a face: within the parameters that the
/// face spans or, where it has none there, on the whole surface. Empty where there is no surface or no foot. Any thread.
VRK_EXPORT std::optional<SurfaceParameters> ProjectPoint(double x, double y, double z, const TopoDS_Face& face);

} // namespace vrk::geometry
