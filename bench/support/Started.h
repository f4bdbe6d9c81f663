#pragma once

#include "scene/Init.h"
#include "scene/Scene.h"
#include "scene/StartUp.h"
#include "selection/VisualSelection.h"

namespace vrk::bench {

/// Starts the library under a small window, the first time that it is called. Needs a display.
inline visual::Scene& startedScene()
{
    if (!visual::Scene::Get()) {
        selection::Init();
        visual::Init(64, 64, visual::DefaultSettings());
    }
    return *visual::Scene::Get();
}

} // namespace vrk::bench
