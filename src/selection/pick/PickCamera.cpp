#include "selection/pick/PickCamera.h"

#include "scene/core/CameraSnapshot.h"
#include "selection/ViewPixels.h"
#include "selection/pick/ObjectPlace.h"
#include "selection/pick/PickLens.h"

#include <algorithm>

namespace vrk::selection {

PickCamera PickCamera::From(const visual::CameraSnapshot& snapshot, double devicePixelRatio)
{
    PickCamera camera;
    camera.view = ObjectPlace(snapshot.pose).getToLocal();
    std::ranges::copy(snapshot.projection, camera.projection.begin());
    camera.width = snapshot.width;
    camera.height = snapshot.height;
    camera.devicePixelRatio = devicePixelRatio;
    return camera;
}

PickCamera PickCamera::Main(double devicePixelRatio)
{
    const auto snapshot = cameraWithPixels();
    return snapshot ? From(*snapshot, devicePixelRatio) : PickCamera();
}

PickRay PickCamera::rayThrough(double x, double y) const
{
    return PickLens(*this).rayThrough(x, y);
}

} // namespace vrk::selection
