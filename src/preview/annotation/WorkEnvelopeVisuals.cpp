#include "preview/annotation/WorkEnvelopeVisuals.h"

#include "visual/DynamicLines.h"
#include "visual/ManualDrawing.h"

#include <Ogre.h>

namespace vrk::visual {
namespace {

constexpr const char* curveMaterial = "PreviewCurve";
// The first is what the surface is begun with; the second is what it shows.
constexpr const char* firstMaterial = "WorkEnvelope";
constexpr const char* shownMaterial = "WorkEnvelope3D";
const std::string& group = Ogre::ResourceGroupManager::DEFAULT_RESOURCE_GROUP_NAME;

} // namespace

WorkEnvelope2DVisual::WorkEnvelope2DVisual(const std::string& name, Visual* parent)
    : LineVisual(name, parent), line(createDynamicLine(RenderOpType::LineStrip))
{
    type = VisualType::WorkEnvelope;
    setMaterial(curveMaterial, curveMaterial, curveMaterial);
}

void WorkEnvelope2DVisual::setCurve(std::span<const rob::PosTemplate<double>> points)
{
    line->clear();
    for (const rob::Posd& each : points) {
        const rob::Posf point(each);
        line->addPoint(point.x, point.y, point.z);
    }
    update();
}

WorkEnvelope3DVisual::WorkEnvelope3DVisual(const std::string& name, Visual* parent)
    : Visual(name, parent), surface(std::make_unique<ManualDrawing>(*this))
{
    type = VisualType::WorkEnvelope;
    setVisible(false, true);
}

WorkEnvelope3DVisual::~WorkEnvelope3DVisual() = default;

void WorkEnvelope3DVisual::setSurface(std::span<const rob::PosTemplate<double>> points,
                                      std::span<const rob::DirTemplate<double>> normals, double from, double to)
{
    Ogre::ManualObject& object = **surface;
    object.clear();
    if (points.size() < 2)
        return; // OGRE would draw the points of a section without triangles
    const auto n = static_cast<std::uint32_t>(points.size());
    object.estimateVertexCount(n * (steps + 1));
    object.estimateIndexCount(static_cast<std::size_t>(n - 1) * steps * 6);
    object.begin(firstMaterial, Ogre::RenderOperation::OT_TRIANGLE_LIST, group);
    const double step = (to - from) / steps;
    for (int i = 0; i <= steps; ++i) {
        const rob::Rotationd turn(from + i * step, rob::Dird(0, 0, 1));
        for (std::size_t j = 0; j < points.size(); ++j) {
            const rob::Posf point(turn * points[j]);
            const rob::Dirf normal(turn * normals[j]);
            object.position(point.x, point.y, point.z);
            object.normal(normal.x, normal.y, normal.z);
        }
    }
    for (std::uint32_t i = 0; i < steps; ++i)
        for (std::uint32_t j = 0; j + 1 < n; ++j) {
            const std::uint32_t p = n * i + j;
            const std::uint32_t q = n * (i + 1) + j;
            object.triangle(p, p + 1, q);
            object.triangle(q, p + 1, q + 1);
        }
    object.end();
    object.setMaterialName(0, shownMaterial, group);
}

} // namespace vrk::visual
