#include "station/TcpTraceVisual.h"

#include "scene/core/OgreCompat.h"
#include "visual/ManualDrawing.h"
#include "visual/RenderGroups.h"

#include <Ogre.h>

namespace vrk::visual {
namespace {

constexpr std::size_t expectedPoints = 10800; // three minutes at sixty points a second

} // namespace

TcpTraceVisual::TcpTraceVisual(Visual* parent)
    : Visual(parent), trace(std::make_unique<ManualDrawing>(*this, "TcpTraceVisual"))
{
    Ogre::ManualObject& strip = **trace;
    strip.estimateVertexCount(expectedPoints);
    strip.begin("VertexColor", Ogre::RenderOperation::OT_LINE_STRIP,
                Ogre::ResourceGroupManager::DEFAULT_RESOURCE_GROUP_NAME);
    strip.end();
    strip.setRenderQueueGroup(renderGroup::trace);
}

TcpTraceVisual::~TcpTraceVisual() = default;

void TcpTraceVisual::addColorPoint(const rob::PosTemplate<double>& position, const rob::ColorTemplate<float>& color)
{
    points.push_back({position, color});
    update();
}

void TcpTraceVisual::clear()
{
    (*trace)->clear();
    points.clear();
}

void TcpTraceVisual::update()
{
    Ogre::ManualObject& strip = **trace;
    if (points.size() < 2 || strip.getSections().empty())
        strip.begin("TcpTrace", Ogre::RenderOperation::OT_LINE_STRIP,
                    Ogre::ResourceGroupManager::DEFAULT_RESOURCE_GROUP_NAME);
    else
        strip.beginUpdate(0);
    for (const Point& point : points) {
        const rob::PosTemplate<float> position(point.position);
        if (!fitsBox(position))
            continue;
        strip.position(toOgre(position));
        strip.colour(point.color.r, point.color.g, point.color.b, 1.0f);
    }
    strip.end();
}

} // namespace vrk::visual
