#include "visual/PointsVisual.h"

#include "visual/ManualDrawing.h"

namespace vrk::visual {
namespace {

constexpr rob::Colorf startColor(0.8f, 0.8f, 0.8f);

} // namespace

PointsVisual::PointsVisual(Visual* parent, const std::vector<rob::PosTemplate<float>>& points)
    : Visual(parent), drawing(makePointDrawing(*this, "PointBase", points))
{
    setColor(startColor, 1.0f);
}

PointsVisual::~PointsVisual() = default;

void PointsVisual::setColor(const rob::ColorTemplate<float>& color, float alpha)
{
    drawing->setColor(color, alpha);
}

} // namespace vrk::visual
