#include "visual/PointVisual.h"

#include "scene/core/SceneCore.h"
#include "visual/ManualDrawing.h"
#include "visual/Picking.h"

#include <array>

namespace vrk::visual {
namespace {

constexpr const char* previewMaterial = "PointPreview";
constexpr const char* stationMaterial = "Point";
constexpr rob::Colorf previewColor(1.0f, 0.843f, 0.0f);
constexpr rob::Colorf normalColor(0.8f, 0.8f, 0.8f);
constexpr rob::Colorf highlightColor(0.88f, 0.69f, 0.25f);
constexpr rob::Colorf selectionColor(0.0f, 0.184f, 0.655f);

} // namespace

PointVisual::PointVisual(Visual* parent, rob::PosTemplate<float> position)
    : Visual(parent), drawing(makePointDrawing(*this, previewMaterial, std::array{position})), position(position)
{
    type = VisualType::Point;
    setColor(previewColor, 1.0f);
}

PointVisual::PointVisual(Visual* parent, sdf::SdfNode* node, rob::PosTemplate<float> position)
    : Visual(node, parent), drawing(makePointDrawing(*this, stationMaterial, std::array{position})), position(position)
{
    type = VisualType::Point;
}

PointVisual::~PointVisual() = default;

PointVisual* PointVisual::Build(unsigned parentId, double x, double y, double z)
{
    SceneCore& scene = *SceneCore::Get();
    Visual* parent = parentId == 0 ? scene.worldVisual : scene.visuals.get(parentId);
    return new PointVisual(parent, rob::PosTemplate<float>(rob::Posd(x, y, z)));
}

Visual* PointVisual::Build(Visual* parent, rob::PosTemplate<float> position)
{
    return new PointVisual(parent, position);
}

Visual* PointVisual::Build(Visual* parent, sdf::SdfNode* node, rob::PosTemplate<float> position)
{
    auto* visual = new PointVisual(parent, node, position);
    SceneCore::Get()->visuals.enter(visual);
    visual->setMaterial(stationMaterial, "PointSelected", "PointHighlighted");
    picking::addPointVisual(visual, false);
    return visual;
}

void PointVisual::resetAppearance()
{
    Visual::resetAppearance();
    setColor(normalColor, 1.0f);
}

void PointVisual::setSelected()
{
    Visual::setSelected();
    setColor(selectionColor, 1.0f);
}

void PointVisual::setHighlighted()
{
    Visual::setHighlighted();
    setColor(highlightColor, 1.0f);
}

void PointVisual::setColor(const rob::ColorTemplate<float>& color, float alpha)
{
    drawing->setColor(color, alpha);
}

void PointVisual::useMaterial(const std::string& name)
{
    drawing->setMaterial(name);
}

} // namespace vrk::visual
