#include "selection/PointCloudObject.h"

#include "selection/CloudPoints.h"
#include "selection/SensitivePoints.h"
#include "selection/geometry/BVHWalk.h"
#include "visual/PointCloudVisual.h"

#include <limits>

namespace vrk::selection {

PointCloudObject::PointCloudObject(visual::PointCloudVisual* visual)
    : SelectableObject(ObjectKind::PointCloud, visual), hidden(visual->getHiddenPoints()), cloud(visual)
{
}

void PointCloudObject::buildPrimitives()
{
    points = std::make_shared<const CloudPoints>(cloud->getPoints(), cloud->getBoxOfAllPoints());
    const std::span<const CloudPoints::Node> nodes = points->getNodes();
    for (std::size_t i = 0; i < nodes.size(); ++i)
        if (nodes[i].isGroup(i))
            primitives.push_back(new SensitivePoints(cloud, points, i));
    buildHierarchy();
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
        if (static_cast<const SensitivePoints*>(group)->nearestWithin(result, local, limit, hidden.get()))
            limit = result.distance;
    });
    if (result.hit)
        result.position = worldPose * result.position;
}

} // namespace vrk::selection
