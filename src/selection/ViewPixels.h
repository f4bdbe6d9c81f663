#pragma once

#include "platform/common/Export.h"
#include "selection/geometry/Ray.h"

#include <optional>

/// What picking asks of the main camera. Empty without a camera, or while it draws into nothing or into no pixels.
///
/// Thread: render thread, or while it is idle; the camera is read without a lock.
namespace vrk::selection {

/// The size in the world of a pixel at this distance from the camera, by the perspective formula whatever the projection.
VRK_EXPORT std::optional<float> worldUnitsPerPixel(float distance);
/// Through a pixel, counted from the top left corner.
/// @throws std::overflow_error "0-length vector cannot be normalized."
std::optional<visual::Ray> viewportRay(float x, float y);
std::optional<rob::PosTemplate<float>> cameraPosition();

} // namespace vrk::selection
