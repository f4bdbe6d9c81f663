#include "preview/marks/PickedMarks.h"

#include "scene/core/OgreCompat.h"
#include "visual/DynamicLines.h"

#include <Ogre.h>

namespace vrk::visual {
namespace {

constexpr const char* white = "WhiteFrameLine";
const rob::Vec3f halfCross(15, 15, 25);
const rob::Vec3f axisLengths(30, 30, 30);

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

WhiteAxesVisual::WhiteAxesVisual(Visual* parent, const rob::Vec3Template<float>& backwards,
                                 const rob::Vec3Template<float>& forwards)
    : LineVisual(parent), lineX(makeSegment(*this, white, {-backwards.x, 0, 0}, {forwards.x, 0, 0})),
      lineY(makeSegment(*this, white, {0, -backwards.y, 0}, {0, forwards.y, 0})),
      lineZ(makeSegment(*this, white, {0, 0, -backwards.z}, {0, 0, forwards.z}))
{
    type = VisualType::Gui;
    LineVisual::update();
}

SelectPointVisual::SelectPointVisual(Visual* parent) : WhiteAxesVisual(parent, halfCross, halfCross) {}

PreviewFrameVisual::PreviewFrameVisual(Visual* parent) : WhiteAxesVisual(parent, {}, axisLengths) {}

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
