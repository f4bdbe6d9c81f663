#include "selection/LineObject.h"

#include "selection/SensitiveLine.h"
#include "visual/DynamicLines.h"
#include "visual/LineVisual.h"

namespace vrk::selection {

LineObject::LineObject(visual::Visual* visual) : SelectableObject(ObjectKind::Line, visual) {}

void LineObject::buildPrimitives()
{
    ofFrame = appendFrameAxes();
    if (ofFrame) {
        buildHierarchy();
        return;
    }
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
    buildHierarchy();
}

void LineObject::intersectRay(Result& result, const visual::Ray& ray) const
{
    closestHitRay(result, ray.transformed(inverseWorldPose));
    finish(result);
}

} // namespace vrk::selection
