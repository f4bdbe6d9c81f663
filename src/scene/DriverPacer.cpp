#include "scene/DriverPacer.h"

#include "scene/core/SceneCore.h"

#include <Ogre.h>

#include <algorithm>
#include <string>

namespace vrk::visual {
namespace {

constexpr std::size_t verticesOfALot = 300'000; // the driver may have two lots waiting
constexpr std::size_t verticesOfALineEnd =
    6; // a line is drawn as triangles, which cover more of the picture than others
constexpr std::size_t verticesOfADraw = 600; // as much as the state of a draw takes, whatever is drawn

/// By the name that it gives its device.
bool drawsOnProcessor()
{
    const std::string& device = Ogre::Root::getSingleton().getRenderSystem()->getCapabilities()->getDeviceName();
    return std::ranges::any_of(std::array{"llvmpipe", "softpipe", "SWR"},
                               [&device](const char* name) { return device.find(name) != std::string::npos; });
}

} // namespace

DriverPacer::DriverPacer(SceneCore& core) : manager(*core.sceneManager)
{
    if (!drawsOnProcessor())
        return;
    for (Ogre::HardwareOcclusionQuery*& mark : marks)
        mark = Ogre::Root::getSingleton().getRenderSystem()->createHardwareOcclusionQuery();
    manager.addRenderObjectListener(this);
}

DriverPacer::~DriverPacer()
{
    manager.removeRenderObjectListener(this);
    for (Ogre::HardwareOcclusionQuery* mark : marks)
        if (mark)
            Ogre::Root::getSingleton().getRenderSystem()->destroyHardwareOcclusionQuery(mark);
}

void DriverPacer::notifyRenderSingleObject(Ogre::Renderable* renderable, const Ogre::Pass*,
                                           const Ogre::AutoParamDataSource*, const Ogre::LightList*, bool)
{
    if (drawn >= verticesOfALot) { // with those of the objects before this one, which is drawn next
        drawn = 0;
        waitForTheOneBefore();
    }
    Ogre::RenderOperation operation;
    renderable->getRenderOperation(operation);
    const std::size_t once = operation.useIndexes ? operation.indexData->indexCount : operation.vertexData->vertexCount;
    const std::size_t each = operation.operationType == Ogre::RenderOperation::OT_LINE_LIST ? verticesOfALineEnd : 1;
    drawn += verticesOfADraw + each * once * std::max<std::size_t>(operation.numberOfInstances, 1);
}

void DriverPacer::waitForTheOneBefore()
{
    marks[next]->beginOcclusionQuery();
    marks[next]->endOcclusionQuery();
    isSet[next] = true;
    next = 1 - next;
    unsigned unused = 0;
    if (isSet[next])
        marks[next]->pullOcclusionQuery(&unused);
}

} // namespace vrk::visual
