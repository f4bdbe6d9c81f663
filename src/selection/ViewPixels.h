#pragma once

#include "platform/common/Export.h"
#include "selection/geometry/Ray.h"

#include <memory>
#include <optional>

namespace vrk::visual {
struct CameraSnapshot;
}

/// What picking asks of the main camera. Empty without a camera, or while it draws into nothing or into no pixels.
///
/// Thread: any. Each answer is that of the camera as it was after its last change.
namespace vrk::selection {

/// The camera itself; null instead of empty.
VRK_EXPORT std::shared_ptr<const visual::CameraSnapshot> cameraWithPixels();
/// The size in the world of a pixel at this distance from the camera, by the perspective formula whatever the projection.
VRK_EXPORT std::optional<float> worldUnitsPerPixel(float distance);
/// The same at a place.
VRK_EXPORT std::optional<float> worldUnitsPerPixelAt(const rob::PosTemplate<float>& place);
/// Through a pixel, counted from the top left corner.
/// @throws std::overflow_error "0-length vector cannot be normalized."
VRK_EXPORT std::optional<visual::Ray> viewportRay(float x, float y);

} // namespace vrk::selection
