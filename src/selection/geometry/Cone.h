#pragma once

#include "platform/common/Export.h"
#include "scene/math/Pose.h"

namespace vrk::visual {

/// A cone or a part of one between two parallel discs, along the z axis of a pose given with each question.
struct VRK_EXPORT Cone {
    double r0 = 0; ///< radius at the base, z = 0
    double r1 = 0; ///< radius at the tip end, z = h
    double h = 0;

    /// Points of the curved surface are outside; those of the end discs, less their rims, are inside.
    bool isPointInside(const rob::PoseTemplate<double>& pose, const rob::PosTemplate<double>& point) const;
};

} // namespace vrk::visual

namespace vrk::selection {
using visual::Cone;
}
