#include "preview/marks/PickedMarks.h"

#include "scene/core/OgreCompat.h"
#include "visual/DynamicLines.h"

#include <Ogre.h>

namespace vrk::visual {
namespace {

constexpr const char* material = "WhiteFrameLine";
constexpr float acrossXY = 15.0f; // each way
constexpr float acrossZ = 25.0f;
constexpr float axisLength = 30.0f;

DynamicLines* makeSegment(LineVisual& visual, const std::string& materialName, const rob::Posf& from,
                          const rob::Posf& to)
{
    DynamicLines* line = visual.createDynamicLine(RenderOpType::Lines);
    line->setMaterial(materialByName(materialName));
    line->addPoint(from.x, from.y, from.z);
    line->addPoint(to.x, to.y, to.z);
    return line;
}

} // namespace

SelectPointVisual::SelectPointVisual(Visual* parent)
    : LineVisual(parent), lineX(makeSegment(*this, material, {-acrossXY, 0, 0}, {acrossXY, 0, 0})),
      lineY(makeSegment(*this, material, {0, -acrossXY, 0}, {0, acrossXY, 0})),
      lineZ(makeSegment(*this, material, {0, 0, -acrossZ}, {0, 0, acrossZ}))
{
    type = VisualType::Gui;
    LineVisual::update();
}

PreviewFrameVisual::PreviewFrameVisual(Visual* parent)
    : LineVisual(parent), lineX(makeSegment(*this, material, {}, {axisLength, 0, 0})),
      lineY(makeSegment(*this, material, {}, {0, axisLength, 0})),
      lineZ(makeSegment(*this, material, {}, {0, 0, axisLength}))
{
    type = VisualType::Gui;
    LineVisual::update();
}

FromToLineVisual::FromToLineVisual(Visual* parent, const std::string& material)
    : LineVisual(parent), line(makeSegment(*this, material, {}, {}))
{
    type = VisualType::Gui;
}

void FromToLineVisual::set(const rob::PosTemplate<float>& from, const rob::PosTemplate<float>& to)
{
    line->setPoint(0, rob::Vec3f(from));
    line->setPoint(1, rob::Vec3f(to));
    line->update();
}

} // namespace vrk::visual
