#pragma once

#include "platform/common/Export.h"
#include "scene/math/Vec.h"

#include <array>

namespace vrk::visual {
struct CameraSnapshot;
}

namespace vrk::selection {

/// A half-line in the world, in double precision. The direction has unit length.
struct PickRay {
    rob::Posd origin;
    rob::Vec3d direction;

    rob::Posd at(double distance) const { return origin + direction * distance; }
};

/// What a camera sees, as a value: what a pick needs of it, in double precision, and nothing of OGRE. Any thread.
///
/// Perspective and parallel projections, each also off the middle. What lies before the near plane is not seen; what lies
/// beyond the far plane is.
struct VRK_EXPORT PickCamera {
    using Matrix = std::array<double, 16>; ///< row after row; it is applied to columns

    Matrix view{};       ///< from the world to the camera, which looks along its negative z axis; turns and moves only
    Matrix projection{}; ///< from the camera to the cube that reaches from -1 to 1
    unsigned width = 0;  ///< of the viewport, in its own (device) pixels
    unsigned height = 0;
    double devicePixelRatio = 1; ///< device pixels for one that the user thinks in

    bool operator==(const PickCamera&) const = default;

    /// The view of the snapshot's pose, worked out in double precision, and its projection.
    static PickCamera From(const visual::CameraSnapshot& snapshot, double devicePixelRatio = 1);
    /// The main camera as it was after its last change; one without pixels where there is none.
    static PickCamera Main(double devicePixelRatio = 1);

    bool hasPixels() const { return width > 0 && height > 0; }
    /// From the near plane on, through a device pixel, counted from the top left corner.
    /// @throws std::invalid_argument "The camera of a pick has no pixels",
    ///         "The matrices of the camera of a pick cannot be inverted"
    PickRay rayThrough(double x, double y) const;
};

} // namespace vrk::selection
