#include "start/StartUp.h"

#include "canvas/BodyBoxes.h"
#include "canvas/ProgramParts.h"
#include "start/Resources.h"

#include "scene/Init.h"
#include "scene/Scene.h"
#include "scene/core/SceneSettings.h"
#include "selection/VisualSelection.h"
#include "view/Camera.h"

#include <Ogre.h>

#include <X11/Xlib.h> // behind our headers: it makes macros of words that they use

#include <algorithm>

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

/// A cell of a few metres, in millimetres, z up. The camera is moved to what was loaded before anything is drawn.
vrk::visual::SceneSettings settings()
{
    vrk::visual::SceneSettings settings;
    settings.worldFrameSize = 100;
    settings.wobjFrameSize = 80;
    settings.targetFrameSize = 50;
    settings.jointTargetFrameSize = 50;
    settings.tcpFrameSize = 60;
    settings.arrowSizeLevel = 1;
    settings.cameraTarget = {0, 0, 0};
    settings.cameraPosition = {1500, -1500, 1500};
    settings.nearClip = 1;
    settings.farClip = 100000;
    settings.zoomStepLimit = 1000;
    settings.zoomMinDistance = 10;
    settings.orbitReserved = 0;
    settings.drawSegVisual = isDrawn(ProgramPart::Lines);
    settings.drawPathArrow = isDrawn(ProgramPart::Arrows);
    settings.drawTargetZAxisOnly = isDrawn(ProgramPart::ZAxesOnly);
    settings.drawTargetVisual = isDrawn(ProgramPart::Targets);
    settings.gridNormalDir = 2;
    settings.handleScale = 1;
    return settings;
}

void hideStartWindow()
{
    Ogre::RenderTarget* target = Ogre::Root::getSingleton().getRenderTarget("ogrewindow");
    static_cast<Ogre::RenderWindow*>(target)->setHidden(true);
    target->setAutoUpdated(false);
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
    vrk::selection::Init();
    vrk::visual::Init(startWindowSide, startWindowSide, settings());
    hideStartWindow();
    checkMaterials();
}

void suitCameraToScene()
{
    const vrk::visual::Box box = bodyBox();
    const float radius = box.isValid() ? std::max(smallestRadius, (box.max - box.min).length() / 2) : smallestRadius;
    Camera::Get()->setHFOV(lens);
    Camera::Get()->setClipDist(radius * nearestLook, radius * farthestLook);
}

} // namespace vrkview
