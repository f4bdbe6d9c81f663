#include "visual/PointsVisual.h"

#include "visual/PointObject.h"

namespace vrk::visual {
namespace {

constexpr rob::Colorf startColor(0.8f, 0.8f, 0.8f);

} // namespace

PointsVisual::PointsVisual(Visual* parent, const std::vector<rob::PosTemplate<float>>& points)
    : Visual(parent), object(makePoints(*this, "PointBase", points))
{
    setColor(startColor, 1.0f);
}

PointsVisual::~PointsVisual()
{
    destroyPoints(*this, object);
}

void PointsVisual::setColor(const rob::ColorTemplate<float>& color, float alpha)
{
    setPointColor(*object, color, alpha);
}

} // namespace vrk::visual
