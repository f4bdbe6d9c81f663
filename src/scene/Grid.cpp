#include "scene/Grid.h"

#include "scene/core/SceneCore.h"
#include "scene/core/UpAxis.h"
#include "visual/ManualDrawing.h"
#include "visual/Visual.h"

#include <Ogre.h>

namespace vrk::visual {
namespace {

const Ogre::ColourValue lineColour(0.16f, 0.16f, 0.16f, 1.0f);

} // namespace

Grid::Grid(const SceneCore& core, unsigned cellCount, unsigned cellLength)
    : cellCount(cellCount), cellLength(cellLength), visual(std::make_unique<Visual>(name, core.worldVisual)),
      lines(std::make_unique<ManualDrawing>(*visual, name))
{
    draw();
    orient(core.settings.gridNormalDir);
}

Grid::~Grid() = default;

void Grid::draw()
{
    Ogre::ManualObject& object = **lines;
    object.clear();
    object.estimateVertexCount((cellCount + 1) * (cellCount + 1));
    object.begin("VertexColor", Ogre::RenderOperation::OT_LINE_LIST);
    const float half = static_cast<float>(cellCount) * static_cast<float>(cellLength) / 2;
    const auto addEnd = [this, &object](float x, float y) {
        object.position(x, y, height);
        object.colour(lineColour);
    };
    for (unsigned i = 0; i <= cellCount; ++i) {
        const float p = half - static_cast<float>(i) * static_cast<float>(cellLength);
        addEnd(p, -half);
        addEnd(p, half);
        addEnd(-half, p);
        addEnd(half, p);
    }
    object.end();
}

void Grid::orient(int normalDir)
{
    if (normalDir >= 0 && normalDir <= 2)
        visual->setRotation(upAxisTurn(normalDir));
}

void Grid::setVisible(bool visible)
{
    visual->setVisible(visible, true);
}

bool Grid::isVisible() const
{
    return visual->isVisible();
}

} // namespace vrk::visual
