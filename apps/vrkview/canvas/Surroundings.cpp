#include "canvas/Surroundings.h"

#include "canvas/Visibility.h"

#include "scene/Scene.h"
#include "scene/ShownCorners.h"
#include "view/AxesCross.h"
#include "view/Camera.h"

#include <algorithm>
#include <cmath>

namespace vrkview {
namespace {

using vrk::VisualType;
using vrk::visual::Scene;

constexpr float framePart = 0.08f; // of the station's radius
constexpr float targetPart = 0.05f;
constexpr float longestTarget = 30; // model units: in a large station they are smaller than its parts
constexpr double frameStep = 1.25;
constexpr double longestFrame = 100000; // model units

int gridNormal = 2;     // z, as at start-up
unsigned frameSize = 1; // model units

void setFrameSize(double size)
{
    frameSize = static_cast<unsigned>(std::clamp(std::round(size), 1.0, longestFrame));
    Scene::Get()->setFrameSize(frameSize, VisualType::Frame);
}

} // namespace

void suitSurroundings()
{
    const vrk::visual::Box box = vrk::visual::BoxOfShown();
    if (!box.isValid())
        return;
    const vrk::rob::Vec3Template<float> sides = box.max - box.min;
    showGrid(std::max({sides.x, sides.y, sides.z}) >= static_cast<float>(Scene::GetGridCellLength()));
    const float wanted = framePart * sides.length() / 2;
    setFrameSize(wanted);
    showFrames(wanted >= 0.5f); // they come in whole units, at least one
    Scene::Get()->setTargetSize(
        static_cast<unsigned>(std::clamp(targetPart * sides.length() / 2, 1.0f, longestTarget)));
}

bool isGridShown()
{
    return Scene::Get()->isGridVisible();
}

void showGrid(bool shown)
{
    Scene::Get()->setGridVisible(shown);
}

void turnGrid()
{
    gridNormal = (gridNormal + 1) % 3;
    Scene::Get()->setGridNormalDir(gridNormal);
    showGrid(true);
}

void enlargeCross(float factor)
{
    vrk::visual::Camera::Get()->axesCross().enlarge(factor);
}

void changeFrameSize(int steps)
{
    const double wanted = frameSize * std::pow(frameStep, steps);
    setFrameSize(steps > 0 ? std::max(wanted, frameSize + 1.0) : std::min(wanted, frameSize - 1.0));
    showFrames(true);
}

} // namespace vrkview
