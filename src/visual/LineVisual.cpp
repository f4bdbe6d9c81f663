#include "visual/LineVisual.h"

#include "visual/DynamicLines.h"

namespace vrk::visual {

LineVisual::LineVisual(const std::string& name, Visual* parent) : Visual(name, parent) {}

LineVisual::LineVisual(sdf::SdfNode* node, Visual* parent) : Visual(node, parent) {}

LineVisual::LineVisual(Visual* parent) : Visual(parent) {}

LineVisual::LineVisual(const LineVisual& other) : Visual(other) {}

LineVisual::~LineVisual() = default;

LineVisual* LineVisual::Build(Visual* parent, std::vector<rob::PosTemplate<float>>* points)
{
    auto* visual = new LineVisual("previewedCurveVisual", parent);
    DynamicLines* line = visual->createDynamicLine(RenderOpType::LineStrip);
    for (const rob::PosTemplate<float>& point : *points)
        line->addPoint(point.x, point.y, point.z);
    visual->update();
    visual->setMaterial("PreviewCurve", "PreviewCurve", "PreviewCurve");
    return visual;
}

DynamicLines* LineVisual::createDynamicLine(RenderOpType type)
{
    DynamicLines* line = lines.emplace_back(std::make_unique<DynamicLines>(type)).get();
    attachObject(line);
    return line;
}

void LineVisual::update()
{
    if (!visible)
        return;
    for (const std::unique_ptr<DynamicLines>& line : lines)
        line->update();
}

} // namespace vrk::visual
