#include "selection/PointObject.h"

#include "selection/geometry/Math.h"
#include "visual/PointVisual.h"

#include <cmath>

namespace vrk::selection {

PointObject::PointObject(visual::PointVisual* visual) : SelectableObject(ObjectKind::Point, visual), point(visual) {}

void PointObject::update()
{
    constexpr float half = 5.0f;
    if (!beginUpdate())
        return;
    takePose(visual->getWorldPose() * rob::PoseTemplate<float>(point->getPntPos()));
    // Around the position of the node, which the world pose then moves once more: for a point that is told by its
    // coordinates, as all of the station's are, the node stands at the origin of its parent and the box at the point.
    const rob::PosTemplate<float> p = visual->getPosition();
    box = Box(p.x - half, p.y - half, p.z - half, p.x + half, p.y + half, p.z + half).transformed(worldPose);
    worldDirty = false;
}

rob::Posd PointObject::getDrawnPlace() const
{
    // The scale comes before the pose: it is undone for the way from the origin of the visual to its point.
    const rob::Posd at(point->getPntPos());
    const rob::Vec3Template<double> scale(worldScale);
    return {at.x - at.x / scale.x, at.y - at.y / scale.y, at.z - at.z / scale.z};
}

void PointObject::intersectRay(Result& result, const visual::Ray& ray) const
{
    constexpr float tolerance = 2.0f; // units of the scene, not pixels
    result = Result();
    const rob::PosTemplate<float> world = visual->getWorldPose() * point->getPntPos();
    if (!(tolerance > Math::DistancePointLine(world, ray.origin, ray.origin + ray.direction * 1.0f)))
        return;
    result.hit = true;
    result.distance = std::abs((world - ray.origin).dot(rob::Vec3Template<float>(ray.direction)));
    result.position = world;
    result.visual = visual;
}

} // namespace vrk::selection
