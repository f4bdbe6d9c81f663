#include "station/TcpTraceVisual.h"

#include "scene/core/OgreCompat.h"
#include "visual/RenderGroups.h"

#include <Ogre.h>

namespace vrk::visual {
namespace {

constexpr std::size_t expectedPoints = 10800; // three minutes at sixty points a second

} // namespace

TcpTraceVisual::TcpTraceVisual(Visual* parent) : Visual(parent)
{
    Ogre::SceneManager& manager = *sceneNode->getCreator();
    trace = manager.createManualObject(
        freeObjectName(manager, "TcpTraceVisual", Ogre::ManualObjectFactory::FACTORY_TYPE_NAME));
    trace->estimateVertexCount(expectedPoints);
    trace->begin("VertexColor", Ogre::RenderOperation::OT_LINE_STRIP,
                 Ogre::ResourceGroupManager::DEFAULT_RESOURCE_GROUP_NAME);
    trace->end();
    trace->setRenderQueueGroup(renderGroup::trace);
    attachObject(trace);
}

TcpTraceVisual::~TcpTraceVisual()
{
    detachObject(trace);
    sceneNode->getCreator()->destroyManualObject(trace);
}

void TcpTraceVisual::addColorPoint(const rob::PosTemplate<double>& position, const rob::ColorTemplate<float>& color)
{
    points.push_back({position, color});
    update();
}

void TcpTraceVisual::clear()
{
    trace->clear();
    points.clear();
}

void TcpTraceVisual::update()
{
    if (points.size() < 2 || trace->getSections().empty())
        trace->begin("TcpTrace", Ogre::RenderOperation::OT_LINE_STRIP,
                     Ogre::ResourceGroupManager::DEFAULT_RESOURCE_GROUP_NAME);
    else
        trace->beginUpdate(0);
    for (const Point& point : points) {
        const rob::PosTemplate<float> position(point.position);
        if (!fitsBox(position))
            continue;
        trace->position(toOgre(position));
        trace->colour(point.color.r, point.color.g, point.color.b, 1.0f);
    }
    trace->end();
}

} // namespace vrk::visual
