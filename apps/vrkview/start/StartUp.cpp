#include "start/StartUp.h"

#include "canvas/ProgramParts.h"

#include "scene/Scene.h"
#include "scene/ShownCorners.h"
#include "scene/StartUp.h"
#include "view/Camera.h"

#include <X11/Xlib.h> // behind our headers: it makes macros of words that they use

#include <algorithm>
#include <stdexcept>
#include <string>

namespace vrkview {
namespace {

using vrk::visual::Camera;
using vrk::visual::Scene;

constexpr int startWindowSide = 16;     // pixels; the window is never seen
constexpr float lens = 0.47f;           // radians across: 27 degrees, so that what is parallel looks nearly so
constexpr float smallestRadius = 1e-3f; // model units

// As multiples of the scene's radius: from close by to where the whole scene is a dot.
constexpr float nearestLook = 0.01f;
constexpr float farthestLook = 100.0f;

/// The camera is moved to what was loaded before anything is drawn.
vrk::visual::SceneSettings settings()
{
    vrk::visual::SceneSettings settings = vrk::visual::DefaultSettings();
    settings.cameraPosition = {1500, -1500, 1500};
    settings.drawSegVisual = isDrawn(ProgramPart::Lines);
    settings.drawPathArrow = isDrawn(ProgramPart::Arrows);
    settings.drawTargetZAxisOnly = isDrawn(ProgramPart::ZAxesOnly);
    settings.drawTargetVisual = isDrawn(ProgramPart::Targets);
    return settings;
}

} // namespace

bool displayAnswers()
{
    Display* display = XOpenDisplay(nullptr);
    if (!display)
        return false;
    XCloseDisplay(display);
    return true;
}

void startLibrary()
{
    std::string why;
    if (!vrk::visual::TryInit(startWindowSide, startWindowSide, settings(), why))
        throw std::runtime_error(why);
}

void suitCameraToScene()
{
    const vrk::visual::Box box = vrk::visual::BoxOfShown();
    const float radius = box.isValid() ? std::max(smallestRadius, (box.max - box.min).length() / 2) : smallestRadius;
    Camera::Get()->setHFOV(lens);
    Camera::Get()->setClipDist(radius * nearestLook, radius * farthestLook);
}

} // namespace vrkview
