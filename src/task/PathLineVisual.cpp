#include "task/PathLineVisual.h"

#include "task/PathParts.h"
#include "task/PathSegments.h"
#include "visual/DynamicLines.h"

namespace vrk::visual {

PathLineVisual::PathLineVisual(Visual* parent, unsigned dashed, PartKeeper* keeper)
    : LineVisual("PathLine_0", parent), dashed(dashed), keeper(keeper)
{
}

PathLineVisual::~PathLineVisual()
{
    if (keeper)
        keeper->forgetPart(this);
}

void PathLineVisual::addSegment(const PathSegment& segment)
{
    std::vector<rob::PosTemplate<float>> points;
    if (isDashed())
        appendDashes(segment, points);
    else
        appendStrip(segment, !line || line->getPoints().empty(), points);
    if (points.empty())
        return;
    if (!line)
        line = createDynamicLine(isDashed() ? RenderOpType::Lines : RenderOpType::LineStrip);
    for (const rob::PosTemplate<float>& point : points)
        line->addPoint(point.x, point.y, point.z);
}

void PathLineVisual::finish()
{
    for (const std::unique_ptr<DynamicLines>& each : getLines())
        each->update();
    setMaterial("PathLine", "PathLineSelected", "PathLineHighlighted");
}

} // namespace vrk::visual
