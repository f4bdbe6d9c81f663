#include "scene/StartUp.h"

#include "mesh/ConesAhead.h"
#include "scene/InitSteps.h"
#include "scene/Scene.h"
#include "scene/core/ResourceCheck.h"
#include "selection/VisualSelection.h"

#include <fmt/format.h>

#include <Ogre.h>

#include <algorithm>
#include <cmath>
#include <optional>
#include <stdexcept>

namespace vrk::visual {
namespace {

constexpr int largestWindow = 16384; // pixels

std::string brokenStart; // of a start that failed when it could not be taken back any more

std::string oneLine(std::string text)
{
    std::ranges::replace(text, '\n', ' ');
    const std::size_t end = text.find_last_not_of(' ');
    text.resize(end == std::string::npos ? 0 : end + 1);
    return text;
}

void check(int width, int height, const SceneSettings& settings)
{
    if (!brokenStart.empty())
        throw std::runtime_error("an earlier start failed half-way: " + brokenStart);
    if (Scene::Get())
        throw std::runtime_error("the view was started before");
    if (std::min(width, height) < 1 || std::max(width, height) > largestWindow)
        throw std::runtime_error(
            fmt::format("a window of {} x {} pixels; each must be from 1 to {}", width, height, largestWindow));
    if (!(settings.nearClip > 0) || !(settings.farClip > settings.nearClip) || !std::isfinite(settings.farClip))
        throw std::runtime_error(
            fmt::format("clip distances of {} and {}; the near one must be above 0 and the far one beyond it",
                        settings.nearClip, settings.farClip));
    if (!settings.cameraPosition.isFinite() || !settings.cameraTarget.isFinite())
        throw std::runtime_error("a camera at a place that is not finite");
    if (!(settings.handleScale > 0) || !std::isfinite(settings.handleScale))
        throw std::runtime_error("handles need a scale above 0");
}

/// @throws std::exception, when there is no OGRE any more.
void startOgreOrNothing(int width, int height)
{
    try {
        startOgre(width, height);
        checkMaterials();
    } catch (const Ogre::Exception& failure) {
        const std::string cause = oneLine(failure.getDescription());
        abandonOgre();
        throw std::runtime_error("the graphics cannot start, for which an X display with OpenGL 3.3 is needed: " +
                                 cause);
    } catch (...) {
        abandonOgre();
        throw;
    }
}

} // namespace

SceneSettings DefaultSettings()
{
    SceneSettings settings;
    settings.worldFrameSize = 100;
    settings.wobjFrameSize = 80;
    settings.targetFrameSize = 50;
    settings.jointTargetFrameSize = 50;
    settings.tcpFrameSize = 60;
    settings.arrowSizeLevel = 1;
    settings.cameraTarget = {0, 0, 0};
    settings.cameraPosition = {2000, -3000, 1500};
    settings.nearClip = 1;
    settings.farClip = 100000;
    settings.zoomStepLimit = 1000;
    settings.zoomMinDistance = 10;
    settings.orbitReserved = 0;
    settings.drawSegVisual = true;
    settings.drawPathArrow = true;
    settings.drawTargetZAxisOnly = false;
    settings.drawTargetVisual = true;
    settings.gridNormalDir = 2;
    settings.handleScale = 1;
    return settings;
}

void CheckResources()
{
    checkResources();
}

bool TryInit(int width, int height, const SceneSettings& settings, std::string& why)
{
    std::optional<ConesAhead> cones; // for the scene, made while OGRE starts
    try {
        check(width, height, settings);
        cones.emplace();
        checkResources();
        startOgreOrNothing(width, height);
    } catch (const std::exception& failure) {
        why = oneLine(failure.what());
        return false;
    }
    try {
        if (!selection::VisualSelection::Get())
            selection::Init();
        buildScene(settings);
        hideStartWindow();
    } catch (const std::exception& failure) {
        why = brokenStart = oneLine(failure.what());
        return false;
    }
    return true;
}

} // namespace vrk::visual
