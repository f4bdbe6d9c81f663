#include "selection/SensitivePoints.h"

#include "selection/geometry/Math.h"
#include "visual/PointCloudVisual.h"

#include <utility>

namespace vrk::selection {

SensitivePoints::SensitivePoints(visual::PointCloudVisual* visual, std::vector<unsigned>&& indices)
    : indices(std::move(indices)), visual(visual)
{
    const std::vector<rob::PosTemplate<float>>& points = visual->getPoints();
    for (const unsigned index : this->indices)
        box.addPoint(points[index]);
    if (this->indices.empty())
        return;
    box.expand();
    box.updateCenter();
}

void SensitivePoints::intersectRay(Result& result, const visual::Ray& ray) const
{
    constexpr float tolerance = 3.0f; // units of the scene, not pixels
    result = Result();
    const std::vector<rob::PosTemplate<float>>& points = visual->getPoints();
    for (const unsigned index : indices) {
        const rob::PosTemplate<float>& point = points[index];
        if (!(tolerance > Math::DistancePointLine(point, ray.origin, ray.direction)))
            continue;
        const float range = (point - ray.origin).length();
        if (result.hit && !(range < result.distance))
            continue;
        result.hit = true;
        result.distance = range;
        result.position = point;
        result.localPosition = point;
        result.visual = visual;
        result.pointIndex = static_cast<int>(index);
    }
}

} // namespace vrk::selection
