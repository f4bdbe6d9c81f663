#pragma once

#include "platform/common/Export.h"

#include <optional>

class TopoDS_Face;

namespace vrk::geometry {

struct SurfaceParameters {
    double u;
    double v;
};

/// Where on the surface of a face a point is nearest: within the parameters that the face spans, or on the whole surface
/// for a point that has no foot there. Empty for a face without surface, and where nothing is nearest. Any thread.
VRK_EXPORT std::optional<SurfaceParameters> ProjectPoint(double x, double y, double z, const TopoDS_Face& face);

} // namespace vrk::geometry
