#include "selection/PointCloudObject.h"

#include "selection/SensitivePoints.h"
#include "selection/geometry/BVHWalk.h"
#include "visual/PointCloudVisual.h"

#include <limits>
#include <utility>

namespace vrk::selection {
namespace {

constexpr std::size_t largestGroup = 1000;

rob::PosTemplate<float> withCoordinate(const rob::PosTemplate<float>& p, unsigned axis, float value)
{
    return {axis == 0 ? value : p.x, axis == 1 ? value : p.y, axis == 2 ? value : p.z};
}

} // namespace

PointCloudObject::PointCloudObject(visual::PointCloudVisual* visual)
    : SelectableObject(ObjectKind::PointCloud, visual), cloud(visual)
{
}

void PointCloudObject::buildPrimitives()
{
    const std::vector<rob::PosTemplate<float>>& points = cloud->getPoints();
    std::vector<unsigned> indices;
    indices.reserve(points.size());
    for (std::size_t i = 0; i < points.size(); ++i)
        if (points[i].isFinite()) // the others are not drawn, and no ray passes near them
            indices.push_back(static_cast<unsigned>(i));
    const Box bounds = cloud->getBoundingBox();
    splitPoints(std::move(indices), {bounds.min, bounds.max});
    buildHierarchy();
}

void PointCloudObject::splitPoints(std::vector<unsigned>&& indices, const Corners& box)
{
    if (indices.empty())
        return;
    const unsigned axis = Box(box.min.x, box.min.y, box.min.z, box.max.x, box.max.y, box.max.z).maxDim();
    const float from = rob::Vec3Template<float>(box.min)[axis], to = rob::Vec3Template<float>(box.max)[axis];
    const float split = (from + to) * 0.5f;
    // A box that cannot be halved any more holds points that are all but one: they stay together, however many.
    if (indices.size() <= largestGroup || !(split > from && split < to)) {
        primitives.push_back(new SensitivePoints(cloud, std::move(indices)));
        return;
    }
    const std::vector<rob::PosTemplate<float>>& points = cloud->getPoints();
    std::vector<unsigned> lower, upper;
    for (const unsigned index : indices)
        (split > rob::Vec3Template<float>(points[index])[axis] ? lower : upper).push_back(index);
    std::vector<unsigned>().swap(indices);
    splitPoints(std::move(lower), {box.min, withCoordinate(box.max, axis, split)});
    splitPoints(std::move(upper), {withCoordinate(box.min, axis, split), box.max});
}

void PointCloudObject::intersectRay(Result& result, const visual::Ray& ray) const
{
    intersectRayWithin(result, ray, std::numeric_limits<float>::infinity());
}

/// What `closestHitRay` answers; groups that lie farther away than the best point are not looked into.
void PointCloudObject::intersectRayWithin(Result& result, const visual::Ray& ray, float limit) const
{
    result = Result();
    const visual::Ray local = ray.transformed(inverseWorldPose);
    walkRay(bvh.root, local, [&](const BVHPrimitive* group) {
        if (static_cast<const SensitivePoints*>(group)->nearestWithin(result, local, limit))
            limit = result.distance;
    });
    if (result.hit)
        result.position = worldPose * result.position;
}

} // namespace vrk::selection
