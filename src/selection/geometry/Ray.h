#pragma once

#include "platform/common/Export.h"
#include "scene/math/Shapes.h"

#include <limits>

namespace vrk::visual {

/// A half-line, or the part of one up to a length.
struct VRK_EXPORT Ray {
    rob::PosTemplate<float> origin;
    rob::DirTemplate<float> direction; ///< of unit length when it comes from a camera
    float length = std::numeric_limits<float>::max();

    Ray() = default;
    Ray(const rob::PosTemplate<float>& origin, const rob::DirTemplate<float>& direction,
        float length = std::numeric_limits<float>::max())
        : origin(origin), direction(direction), length(length)
    {
    }

    /// The ray in the frame that `pose` maps to. It has no end any more, whatever its length was.
    Ray transformed(const rob::PoseTemplate<float>& pose) const { return {pose * origin, pose * direction}; }
};

} // namespace vrk::visual

namespace vrk::selection {
using visual::Ray;
}
