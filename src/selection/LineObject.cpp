#include "selection/LineObject.h"

#include "selection/SensitiveLine.h"
#include "selection/geometry/BoxTests.h"
#include "visual/DynamicLines.h"
#include "visual/LineVisual.h"

#include <cmath>
#include <utility>

namespace vrk::selection {

LineObject::LineObject(visual::Visual* visual) : SelectableObject(ObjectKind::Line, visual) {}

void LineObject::buildPrimitives()
{
    ofFrame = appendFrameAxes();
    if (!ofFrame)
        appendSections();
    buildSphere();
    // Of a few lines, as the frame of a target has, a hierarchy is a single leaf, and takes a whole block of memory.
    if (isFew())
        buildWhenAsked();
    else
        buildHierarchy();
}

void LineObject::appendSections()
{
    const auto* lines = dynamic_cast<const visual::LineVisual*>(visual);
    if (!lines)
        return;
    for (const auto& section : lines->getLines()) {
        const std::vector<rob::PosTemplate<float>>& points = section->getPoints();
        const visual::RenderOpType type = section->getRenderOpType();
        if (type != visual::RenderOpType::Lines && type != visual::RenderOpType::LineStrip)
            continue;
        const std::size_t step = type == visual::RenderOpType::Lines ? 2 : 1;
        for (std::size_t i = 0; i + 1 < points.size(); i += step)
            primitives.push_back(new SensitiveLine(points[i], points[i + 1]));
    }
}

void LineObject::buildSphere()
{
    visual::Box ends;
    for (const BVHPrimitive* primitive : primitives) {
        const auto* line = static_cast<const SensitiveLine*>(primitive);
        ends.addPoint(line->getStart());
        ends.addPoint(line->getEnd());
    }
    if (!ends.isValid())
        return;
    middle = ends.getCenter();
    radius = (ends.max - middle).length();
}

visual::Box LineObject::partsBox() const
{
    if (!isFew())
        return SelectableObject::partsBox();
    visual::Box all;
    for (const BVHPrimitive* primitive : primitives)
        all.addBox(primitive->box);
    return all;
}

bool LineObject::mayBeHit(const visual::Ray& ray, const PickLimits& limits) const
{
    // More than all rounding below: of the coordinates, and of the product that the distance from the ray comes from.
    constexpr float relative = 1e-5f;
    const rob::PosTemplate<float> at = worldPose * middle;
    const rob::Vec3Template<float> toMiddle = at - ray.origin;
    const rob::Vec3Template<float> direction(ray.direction);
    const float away = toMiddle.length();
    const float slack =
        relative * (away + radius + std::abs(ray.origin.x) + std::abs(ray.origin.y) + std::abs(ray.origin.z));
    const float tolerance = limits.pixelAt1 ? linePixels * *limits.pixelAt1 * (away + radius + slack) : lineWithoutView;
    const float reach = radius + tolerance + slack;
    // Also NaN goes on to the lines themselves.
    if (away - reach - tolerance > limits.nearest)
        return false;
    if (toMiddle.dot(direction) < -reach)
        return false;
    return !(toMiddle.cross(direction).squaredLength() > reach * reach * (1 + relative));
}

void LineObject::intersectRay(Result& result, const visual::Ray& ray) const
{
    const visual::Ray local = ray.transformed(inverseWorldPose);
    if (isFew())
        closestHitOfFew(result, local);
    else
        closestHitRay(result, local);
    finish(result);
}

/// As the walk through a single leaf answers.
void LineObject::closestHitOfFew(Result& result, const visual::Ray& ray) const
{
    result = Result();
    Result found;
    const RayBoxTest test(ray);
    for (const BVHPrimitive* primitive : primitives) {
        if (!test(primitive->box))
            continue;
        primitive->intersectRay(found, ray);
        if (found.hit && result.distance > found.distance)
            result = std::move(found);
    }
}

} // namespace vrk::selection
