#include "selection/ViewPixels.h"

#include "view/Camera.h"

#include <cmath>

namespace vrk::selection {
namespace {

/// Null where there is nothing to measure pixels by.
const visual::Camera* cameraWithPixels()
{
    const visual::Camera* camera = visual::Camera::Get();
    const bool isUsable = camera && camera->ogreCamera() && camera->isRenderTargetValid() &&
                          camera->viewportWidth() > 0 && camera->viewportHeight() > 0;
    return isUsable ? camera : nullptr;
}

} // namespace

std::optional<float> worldUnitsPerPixel(float distance)
{
    const visual::Camera* camera = cameraWithPixels();
    if (!camera)
        return std::nullopt;
    return std::tan(camera->getVFOV() * 0.5f) * (distance + distance) / static_cast<float>(camera->viewportHeight());
}

std::optional<visual::Ray> viewportRay(float x, float y)
{
    const visual::Camera* camera = cameraWithPixels();
    if (!camera)
        return std::nullopt;
    return camera->getViewportRay(x, y);
}

std::optional<rob::PosTemplate<float>> cameraPosition()
{
    const visual::Camera* camera = cameraWithPixels();
    if (!camera)
        return std::nullopt;
    return camera->getWorldPosition();
}

} // namespace vrk::selection
