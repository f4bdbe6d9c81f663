#pragma once

#include "platform/common/Export.h"
#include "scene/math/Pose.h"
#include "selection/geometry/Ray.h"

#include <array>

namespace vrk::visual {

/// Where a camera stands and what it sees, at one moment: a value that never changes and touches no OGRE object. Its
/// answers are, bit by bit, those that the camera gave then. Any thread.
struct VRK_EXPORT CameraSnapshot {
    using Matrix = std::array<float, 16>; ///< row after row; it is applied to columns

    rob::PoseTemplate<float> pose; ///< in the world; the camera looks along its negative z axis
    Matrix view{};                 ///< from the world to the camera
    Matrix projection{};           ///< from the camera to the cube that reaches from -1 to 1
    Matrix cubeToWorld{};          ///< back through both
    float vfov = 0;                ///< the vertical angle in radians
    float nearClip = 0;            ///< model units
    float farClip = 0;
    unsigned width = 0; ///< pixels; none while the camera draws into nothing
    unsigned height = 0;

    bool operator==(const CameraSnapshot&) const = default;

    /// Whether there is anything to measure pixels by: the operations below are for that case.
    bool hasPixels() const { return width > 0 && height > 0; }
    /// From the near plane on, through a pixel, counted from the top left corner.
    /// @throws std::overflow_error "0-length vector cannot be normalized."
    Ray rayThrough(float x, float y) const;
    /// The size in the world of a pixel at this distance from the camera, by the perspective formula whatever the
    /// projection.
    float unitsPerPixel(float distance) const;
    /// The same at a place.
    float unitsPerPixelAt(const rob::PosTemplate<float>& place) const
    {
        return unitsPerPixel((place - pose.position).length());
    }
};

} // namespace vrk::visual
