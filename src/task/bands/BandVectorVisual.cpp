#include "task/bands/BandVectorVisual.h"

#include "task/bands/Ribbon.h"
#include "task/bands/VectorBandVisual.h"
#include "visual/DynamicLines.h"
#include "visual/Picking.h"

#include <Ogre.h>

namespace vrk::visual {
namespace {

constexpr std::size_t colorParameter = 0;

const rob::ColorTemplate<float> normalColor{1, 1, 1};
const rob::ColorTemplate<float> highlightedColor{0, 0, 1};
const rob::ColorTemplate<float> selectedColor{227 / 255.0f, 144 / 255.0f, 206 / 255.0f};

} // namespace

BandVectorVisual::BandVectorVisual(Visual* parent, const TopoDS_Edge& edge, const geometry::MfgVector& vector)
    : LineVisual(parent), edge(edge), parameter(vector.parameter)
{
    type = VisualType::Curve;
    const rob::Posd point = geometry::GetPointAtParameter(edge, parameter);
    addLine(point, point + vector.getDir(edge) * bandWidth);
    setMaterial("BandVector", "BandVectorSelect", "BandVectorHighlight");
}

BandVectorVisual::BandVectorVisual(Visual* parent, const TopoDS_Edge& edge, const geometry::MfgVector& vector,
                                   PathPoint point)
    : BandVectorVisual(parent, edge, vector)
{
    pathPoint = point;
    picking::addLineVisual(this);
}

BandVectorVisual::~BandVectorVisual()
{
    if (auto* band = dynamic_cast<VectorBandVisual*>(getParent()))
        band->forgetVector(this);
    picking::removeObject(this);
}

void BandVectorVisual::addLine(const rob::PosTemplate<double>& a, const rob::PosTemplate<double>& b)
{
    DynamicLines* line = createDynamicLine(RenderOpType::Lines);
    for (const rob::PosTemplate<double>& end : {a, b})
        line->addPoint(static_cast<float>(end.x), static_cast<float>(end.y), static_cast<float>(end.z));
    update();
}

void BandVectorVisual::setColor(const rob::ColorTemplate<float>& color)
{
    for (const auto& line : getLines())
        line->setCustomParameter(colorParameter, Ogre::Vector4(color.r, color.g, color.b, 1));
}

void BandVectorVisual::resetAppearance()
{
    LineVisual::resetAppearance();
    setColor(normalColor);
}

void BandVectorVisual::setSelected()
{
    LineVisual::setSelected();
    setColor(selectedColor);
}

void BandVectorVisual::setHighlighted()
{
    LineVisual::setHighlighted();
    setColor(highlightedColor);
}

} // namespace vrk::visual
