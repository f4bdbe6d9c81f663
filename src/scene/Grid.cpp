#include "scene/Grid.h"

#include "scene/core/OgreCompat.h"
#include "scene/core/SceneCore.h"
#include "scene/core/UpAxis.h"
#include "visual/Visual.h"

#include <Ogre.h>

namespace vrk::visual {
namespace {

const Ogre::ColourValue lineColour(0.16f, 0.16f, 0.16f, 1.0f);

} // namespace

Grid::Grid(SceneCore& core, unsigned cellCount, unsigned cellLength)
    : core(core), cellCount(cellCount), cellLength(cellLength)
{
    lines = core.sceneManager->createManualObject(
        freeObjectName(*core.sceneManager, name, Ogre::ManualObjectFactory::FACTORY_TYPE_NAME));
    visual = std::make_unique<Visual>(name, core.worldVisual);
    visual->attachObject(lines);
    draw();
    orient(core.settings.gridNormalDir);
}

Grid::~Grid()
{
    visual->detachObject(lines);
    core.sceneManager->destroyManualObject(lines);
}

void Grid::draw()
{
    lines->clear();
    lines->estimateVertexCount((cellCount + 1) * (cellCount + 1));
    lines->begin("VertexColor", Ogre::RenderOperation::OT_LINE_LIST);
    const float half = static_cast<float>(cellCount) * static_cast<float>(cellLength) / 2;
    const auto addEnd = [this](float x, float y) {
        lines->position(x, y, height);
        lines->colour(lineColour);
    };
    for (unsigned i = 0; i <= cellCount; ++i) {
        const float p = half - static_cast<float>(i) * static_cast<float>(cellLength);
        addEnd(p, -half);
        addEnd(p, half);
        addEnd(-half, p);
        addEnd(half, p);
    }
    lines->end();
}

void Grid::orient(int normalDir)
{
    if (normalDir >= 0 && normalDir <= 2)
        visual->setRotation(upAxisTurn(normalDir));
}

} // namespace vrk::visual
