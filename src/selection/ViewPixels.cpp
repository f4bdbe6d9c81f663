#include "selection/ViewPixels.h"

#include "scene/core/SceneCore.h"

namespace vrk::selection {

std::shared_ptr<const visual::CameraSnapshot> cameraWithPixels()
{
    const visual::SceneCore* core = visual::SceneCore::Get();
    std::shared_ptr<const visual::CameraSnapshot> camera = core ? core->mainCamera.latest() : nullptr;
    return camera && camera->hasPixels() ? camera : nullptr;
}

std::optional<float> worldUnitsPerPixel(float distance)
{
    const auto camera = cameraWithPixels();
    return camera ? std::optional(camera->unitsPerPixel(distance)) : std::nullopt;
}

std::optional<float> worldUnitsPerPixelAt(const rob::PosTemplate<float>& place)
{
    const auto camera = cameraWithPixels();
    return camera ? std::optional(camera->unitsPerPixelAt(place)) : std::nullopt;
}

std::optional<visual::Ray> viewportRay(float x, float y)
{
    const auto camera = cameraWithPixels();
    return camera ? std::optional(camera->rayThrough(x, y)) : std::nullopt;
}

} // namespace vrk::selection
