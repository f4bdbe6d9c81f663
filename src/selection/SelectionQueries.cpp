#include "selection/VisualSelection.h"

#include "scene/core/SceneCore.h"
#include "selection/SelectableObject.h"
#include "selection/ViewPixels.h"
#include "selection/geometry/BVHWalk.h"

#include <cmath>
#include <utility>

/// The questions that `VisualSelection` answers.
namespace vrk::selection {
namespace {

const SelectableObject& asObject(const BVHPrimitive* primitive)
{
    return *static_cast<const SelectableObject*>(primitive);
}

/// Where the ray, or its line behind the camera, meets the plane of the grid through the origin.
rob::PosTemplate<float> groundPoint(const visual::Ray& ray)
{
    constexpr float parallel = 1.1920929e-7f;
    // A caller's ray may be asked about before there is a scene.
    const visual::SceneCore* scene = visual::SceneCore::Get();
    const int dir = scene ? scene->settings.gridNormalDir : 2;
    const unsigned axis = dir >= 0 && dir < 3 ? static_cast<unsigned>(dir) : 2;
    const rob::Vec3Template<float> direction(ray.direction), origin(ray.origin);
    if (std::abs(direction[axis]) < parallel)
        return {};
    const float t = -origin[axis] / direction[axis];
    return ray.origin + direction * t;
}

/// The first hit with priority, else the nearest one.
Result pick(const BVHNode* root, const visual::Ray& ray)
{
    Result best;
    Result found;
    const RayBoxTest test(ray);
    const Reach reach(ray);
    const std::optional<float> pixelAt1 = worldUnitsPerPixel(1);
    walkRay(root, ray, [&](const BVHPrimitive* primitive) {
        const SelectableObject& object = asObject(primitive);
        if (object.priority) { // from any distance
            object.intersectRay(found, ray);
            if (found.hit)
                best = std::move(found);
            return !found.hit;
        }
        if (object.isHitWithinBox() && test.entry(object.box) > reach(best.distance))
            return true;
        if (!object.mayBeHit(ray, {best.distance, pixelAt1}))
            return true;
        object.intersectRayWithin(found, ray, best.distance);
        if (found.hit && best.distance > found.distance)
            best = std::move(found);
        return true;
    });
    return best;
}

} // namespace

Result VisualSelection::select(float x, float y) const
{
    if (dirty)
        return {};
    const std::optional<visual::Ray> ray = viewportRay(x, y);
    return ray ? select(*ray) : Result();
}

Result VisualSelection::select(const visual::Ray& ray) const
{
    if (dirty)
        return {};
    Result best = pick(containers[0].bvh.root, ray);
    if (!best.hit)
        best.position = groundPoint(ray);
    return best;
}

Result VisualSelection::selectPointInCloud(float x, float y) const
{
    if (dirty)
        return {};
    const std::optional<visual::Ray> ray = viewportRay(x, y);
    return ray ? selectPointInCloud(*ray) : Result();
}

Result VisualSelection::selectPointInCloud(const visual::Ray& ray) const
{
    return dirty ? Result() : pick(containers[clouds].bvh.root, ray);
}

Result VisualSelection::sense(const rob::LineTemplate<float>& line) const
{
    Result result;
    result.valid = !dirty;
    if (!result.valid)
        return result;
    walkLine(containers[0].bvh.root, line, [&](const BVHPrimitive* primitive) {
        if (asObject(primitive).detectable)
            primitive->intersectLine(result, line);
        return !result.hit;
    });
    return result;
}

Result VisualSelection::sense(const rob::TriangleTemplate<float>& triangle) const
{
    Result result;
    result.valid = !dirty;
    if (!result.valid)
        return result;
    walkTriangle(containers[0].bvh.root, triangle, [&](const BVHPrimitive* primitive) {
        if (asObject(primitive).detectable)
            primitive->intersectTriangle(result, triangle);
        return !result.hit;
    });
    return result;
}

} // namespace vrk::selection
