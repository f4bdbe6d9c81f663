#include "preview/PolylineVisual.h"

#include "platform/common/Logger.h"
#include "platform/sdf/SdfManager.h"
#include "visual/MeshVisual.h"

namespace vrk::visual {
namespace {

constexpr const char* material = "PreviewCurve";

} // namespace

PolylineVisual::PolylineVisual(unsigned id, Visual* parent) : Visual(id, "polyline" + std::to_string(id), parent)
{
    attachObject(&line);
}

PolylineVisual* PolylineVisual::Build(Visual* parent, const std::vector<rob::PosTemplate<float>>& points, bool arrow)
{
    auto* visual = new PolylineVisual(sdf::SdfManager::GenerateTransientId(), parent);
    visual->setMaterial(material, material, material);
    for (const rob::Posf& point : points)
        visual->line.addPoint(point.x, point.y, point.z);
    if (arrow && points.size() >= 2)
        MeshVisual::BuildArrow(visual, points[0], rob::normalized(points[1] - points[0]));
    else if (arrow)
        AppLogger::inst()->warn("a polyline has no arrow: it needs two points");
    visual->update();
    return visual;
}

void PolylineVisual::update()
{
    line.update();
}

} // namespace vrk::visual
