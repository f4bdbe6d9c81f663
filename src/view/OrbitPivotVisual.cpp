#include "view/OrbitPivotVisual.h"

#include "view/ScreenScale.h"

#include <algorithm>

namespace vrk::visual {
namespace {

constexpr float axisLength = 1.0f; // the scale makes it visible
constexpr float minScale = 1.0f;

} // namespace

const float OrbitPivotVisual::ScreenRatio = 0.06f;

OrbitPivotVisual::OrbitPivotVisual(Visual* parent)
    : FrameVisual(parent, axisLength),
      screenScale(std::make_unique<ScreenScale>(*this, [this](float distance) { fitTo(distance); }))
{
}

OrbitPivotVisual::~OrbitPivotVisual() = default;

void OrbitPivotVisual::updateScale()
{
    screenScale->update();
}

void OrbitPivotVisual::fitTo(float distance)
{
    if (!visible)
        return;
    const float scale = std::max(minScale, distance * ScreenRatio);
    setScale(scale, scale, scale);
}

} // namespace vrk::visual
