#pragma once

#include "platform/common/Export.h"
#include "scene/math/Vec.h"

#include <cstdint>

namespace vrk::visual {

/// What the application decides at start-up. The scene keeps a copy and some operations write to it later.
///
/// The constructor sets only the camera's places and clip distances: every other field is the application's to set.
struct VRK_EXPORT SceneSettings {
    SceneSettings() : cameraTarget(), cameraPosition(), nearClip(0), farClip(0) {}

    // Sizes of frames, in model units
    std::int32_t worldFrameSize;
    std::int32_t wobjFrameSize;
    std::int32_t targetFrameSize;
    std::int32_t jointTargetFrameSize;
    std::int32_t tcpFrameSize;
    std::int32_t arrowSizeLevel; ///< of the arrows on previewed curves

    rob::PosTemplate<float> cameraTarget;
    rob::PosTemplate<float> cameraPosition;
    float nearClip;
    float farClip;

    // Start values of the orbit navigation
    float zoomStepLimit;
    float zoomMinDistance;
    float orbitReserved; ///< read by nobody

    // What is drawn of robot programs
    bool drawSegVisual;
    bool drawPathArrow;
    bool drawTargetZAxisOnly;
    bool drawTargetVisual;

    std::int32_t gridNormalDir; ///< the axis that points up: 0 for x, 1 for y, 2 for z
    float handleScale;
};

} // namespace vrk::visual
