#include "preview/annotation/DimensionVisual.h"

#include "scene/core/OgreCompat.h"
#include "scene/math/Shapes.h"
#include "visual/DynamicLines.h"

#include <Ogre.h>

#include <cmath>

namespace vrk::visual {
namespace {

constexpr const char* name = "dimension";
constexpr int partsOfRing = 50;
constexpr int partsOfArc = 20;

} // namespace

DimensionVisual::DimensionVisual(Visual* parent, const rob::PosTemplate<float>& a, const rob::PosTemplate<float>& b)
    : LineVisual(name, parent)
{
    addLeg(a, b);
}

DimensionVisual::DimensionVisual(Visual* parent, const rob::PosTemplate<float>& apex, const rob::PosTemplate<float>& b,
                                 const rob::PosTemplate<float>& c, double angle)
    : LineVisual(name, parent)
{
    addLeg(apex, b);
    addLeg(apex, c);
    if (angle != 0.0)
        addArc(apex, b - apex, c - apex, angle);
}

DimensionVisual::DimensionVisual(Visual* parent, const rob::TPCircle& circle) : LineVisual(name, parent)
{
    addRing(circle);
    addLeg(rob::Posf(circle.getCenter()), rob::Posf(circle.getPoint(0.5)));
}

DynamicLines* DimensionVisual::addLine(RenderOpType op)
{
    DynamicLines* line = createDynamicLine(op);
    line->setMaterial(materialByName("FrameLine"));
    return line;
}

void DimensionVisual::addLeg(const rob::PosTemplate<float>& from, const rob::PosTemplate<float>& to)
{
    DynamicLines* line = addLine(RenderOpType::Lines);
    line->addPoint(from.x, from.y, from.z);
    line->addPoint(to.x, to.y, to.z);
    update();
}

void DimensionVisual::addRing(const rob::TPCircle& circle)
{
    DynamicLines* line = addLine(RenderOpType::LineStrip);
    for (int i = 0; i <= partsOfRing; ++i) {
        const rob::Posf point(circle.getPoint(i / static_cast<double>(partsOfRing)));
        line->addPoint(point.x, point.y, point.z);
    }
    update();
}

void DimensionVisual::addArc(const rob::PosTemplate<float>& apex, const rob::Vec3Template<float>& u,
                             const rob::Vec3Template<float>& v, double angle)
{
    DynamicLines* line = addLine(RenderOpType::LineStrip);
    const bool isUShorter = u.length() <= v.length();
    const rob::Vec3d shorter(isUShorter ? u : v);
    const rob::Vec3d longer(isUShorter ? v : u);
    const rob::Vec3d across = rob::normalized(shorter.cross(longer)).cross(shorter);
    for (int i = 0; i <= partsOfArc; ++i) {
        const double turn = i * angle / partsOfArc;
        const rob::Posf point(rob::Posd(apex) + shorter * std::cos(turn) + across * std::sin(turn));
        line->addPoint(point.x, point.y, point.z);
    }
    update();
}

} // namespace vrk::visual
