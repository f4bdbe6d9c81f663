#include "selection/SensitivePoints.h"

#include "selection/CloudPoints.h"
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

SensitivePoints::SensitivePoints(visual::PointCloudVisual* visual, std::vector<unsigned>&& numbers)
    : ownIndices(std::move(numbers)), indices(ownIndices), visual(visual)
{
    const std::vector<rob::PosTemplate<float>>& points = visual->getPoints();
    ownPlaces.reserve(indices.size());
    for (const unsigned index : indices)
        ownPlaces.push_back(points[index]);
    places = ownPlaces;
    settleBox();
}

SensitivePoints::SensitivePoints(visual::PointCloudVisual* visual, const std::shared_ptr<const CloudPoints>& points,
                                 std::size_t group)
    : shared(points), visual(visual)
{
    const CloudPoints::Node& node = points->getNodes()[group];
    indices = points->getNumbers().subspan(node.begin, node.end - node.begin);
    places = points->getPlaces().subspan(node.begin, node.end - node.begin);
    settleBox();
}

void SensitivePoints::settleBox()
{
    if (places.empty())
        return;
    box.addPoints(places);
    box.expand();
    box.updateCenter();
}

void SensitivePoints::intersectRay(Result& result, const visual::Ray& ray) const
{
    result = Result();
    nearestWithin(result, ray, std::numeric_limits<float>::infinity());
}

bool SensitivePoints::nearestWithin(Result& result, const visual::Ray& ray, float limit,
                                    const layout::PointSet* hidden) const
{
    if (distanceTo(box, ray.origin) > limit)
        return false;
    const NearRay nearRay(ray);
    const rob::PosTemplate<float>* nearest = nullptr;
    for (const rob::PosTemplate<float>& place : places) {
        if (nearRay.isOutside(place))
            continue;
        if (!(tolerance > Math::DistancePointLine(place, ray.origin, ray.direction)))
            continue;
        const float range = (place - ray.origin).length();
        if (!(range < limit) || (hidden && hidden->contains(indices[static_cast<std::size_t>(&place - places.data())])))
            continue;
        limit = range;
        nearest = &place;
    }
    if (!nearest)
        return false;
    result = Result();
    result.hit = true;
    result.distance = limit;
    result.position = *nearest;
    result.localPosition = result.position;
    result.visual = visual;
    result.pointIndex = static_cast<int>(indices[static_cast<std::size_t>(nearest - places.data())]);
    return true;
}

} // namespace vrk::selection
