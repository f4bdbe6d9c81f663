#include "selection/SensitivePoints.h"

#include "selection/geometry/Math.h"
#include "visual/PointCloudVisual.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace vrk::selection {
namespace {

constexpr float tolerance = 3.0f; // units of the scene, not pixels

/// No point in the box is nearer to `p`.
float distanceTo(const Box& box, const rob::PosTemplate<float>& p)
{
    const auto outside = [](float from, float v, float to) { return std::max({from - v, v - to, 0.0f}); };
    return rob::Vec3Template<float>(outside(box.min.x, p.x, box.max.x), outside(box.min.y, p.y, box.max.y),
                                    outside(box.min.z, p.z, box.max.z))
        .length();
}

/// A quick look at a point, before the exact one: most of a group's points are far from the ray.
class NearRay {
public:
    explicit NearRay(const visual::Ray& ray) : origin(ray.origin), direction(ray.direction)
    {
        length = direction.squaredLength();
    }
    /// Whether the point is farther from the ray's line than the tolerance, beyond doubt.
    bool isOutside(const rob::PosTemplate<float>& p) const
    {
        constexpr float surely = 1.01f * tolerance * tolerance;
        const rob::Vec3Template<float> across = (p - origin).cross(direction);
        return across.squaredLength() > surely * length + 1e-5f * (p - origin).squaredLength() * length;
    }

private:
    rob::PosTemplate<float> origin;
    rob::Vec3Template<float> direction;
    float length; // of the direction, squared
};

} // namespace

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
    result = Result();
    nearestWithin(result, ray, std::numeric_limits<float>::infinity());
}

bool SensitivePoints::nearestWithin(Result& result, const visual::Ray& ray, float limit) const
{
    if (distanceTo(box, ray.origin) > limit)
        return false;
    const std::vector<rob::PosTemplate<float>>& points = visual->getPoints();
    const NearRay nearRay(ray);
    int nearest = -1;
    for (const unsigned index : indices) {
        if (nearRay.isOutside(points[index]))
            continue;
        if (!(tolerance > Math::DistancePointLine(points[index], ray.origin, ray.direction)))
            continue;
        const float range = (points[index] - ray.origin).length();
        if (!(range < limit))
            continue;
        limit = range;
        nearest = static_cast<int>(index);
    }
    if (nearest < 0)
        return false;
    result = Result();
    result.hit = true;
    result.distance = limit;
    result.position = points[static_cast<unsigned>(nearest)];
    result.localPosition = result.position;
    result.visual = visual;
    result.pointIndex = nearest;
    return true;
}

} // namespace vrk::selection
