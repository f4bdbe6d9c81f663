#pragma once

#include "scene/Init.h"
#include "scene/Scene.h"
#include "scene/core/SceneSettings.h"
#include "selection/VisualSelection.h"

namespace vrk::bench {

/// Starts the library under a small window, the first time that it is called. Needs a display.
inline visual::Scene& startedScene()
{
    if (!visual::Scene::Get()) {
        visual::SceneSettings settings{};
        settings.worldFrameSize = 100;
        settings.cameraPosition = {2000, -3000, 1500};
        settings.nearClip = 1;
        settings.farClip = 100000;
        settings.zoomStepLimit = 1000;
        settings.zoomMinDistance = 10;
        settings.gridNormalDir = 2;
        settings.handleScale = 1;
        selection::Init();
        visual::Init(64, 64, settings);
    }
    return *visual::Scene::Get();
}

} // namespace vrk::bench
