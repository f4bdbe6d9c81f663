#include "preview/PreviewCurve.h"

#include "visual/DynamicLines.h"
#include "visual/MeshVisual.h"

namespace vrk::visual {

PreviewCurve::PreviewCurve(const std::string& name, Visual* parent) : LineVisual(name, parent)
{
    type = VisualType::PreviewCurve;
}

void PreviewCurve::addStrip(const std::vector<rob::PosTemplate<float>>& points)
{
    DynamicLines* line = createDynamicLine(RenderOpType::LineStrip);
    for (const rob::Posf& point : points)
        line->addPoint(point.x, point.y, point.z);
}

void PreviewCurve::addArrow(const rob::PosTemplate<float>& point, const rob::Vec3Template<float>& direction)
{
    arrow = MeshVisual::BuildArrow(this, point, rob::normalized(direction));
}

} // namespace vrk::visual
