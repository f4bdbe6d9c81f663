#include "canvas/Navigation.h"

#include "canvas/ViewWidget.h"

#include "scene/Scene.h"
#include "selection/VisualSelection.h"
#include "view/Camera.h"
#include "view/OrbitViewController.h"

#include <QPointF>

#include <algorithm>
#include <cstdlib>

namespace vrkview {
namespace {

using vrk::visual::Camera;
using vrk::visual::Scene;

constexpr int mostNotches = 20; // at once: beyond that the bounds are reached

float x(const QPointF& place)
{
    return static_cast<float>(place.x());
}

float y(const QPointF& place)
{
    return static_cast<float>(place.y());
}

/// Posts the mark of what the camera turns about, or its end.
void showPivot(bool shown)
{
    Scene::Get()->addRenderTask(
        [shown] {
            const vrk::rob::Posf& focus = Camera::Get()->getViewController()->getFocalPoint();
            Scene::Get()->setOrbitPivotVisible(shown, vrk::rob::Posef(focus, vrk::rob::Rotationf()));
        },
        0);
}

} // namespace

void Navigation::beginOrbit(const QPointF& place)
{
    bind();
    bringUpToDate();
    Camera::Get()->startRotating(x(place), y(place));
    showPivot(true);
}

void Navigation::orbit(const QPointF& way)
{
    Camera::Get()->rotateScene(x(way), y(way));
}

void Navigation::endOrbit()
{
    showPivot(false);
}

void Navigation::beginPan()
{
    bind();
}

void Navigation::pan(const QPointF& from, const QPointF& way)
{
    bringUpToDate();
    Camera::Get()->translateScene(x(from), y(from), x(way), y(way));
}

void Navigation::zoom(const QPointF& place, int notches)
{
    if (notches != 0)
        bind();
    for (int i = 0; i < std::min(std::abs(notches), mostNotches); ++i) {
        bringUpToDate();
        Camera::Get()->zoom(x(place), y(place), 0, notches > 0 ? 1.0f : -1.0f);
    }
}

/// The gestures themselves know no bounds.
void Navigation::bind()
{
    view.drain();
    Camera::Get()->getViewController()->setBounds(vrk::visual::ViewBounds::OfScene());
}

void Navigation::bringUpToDate()
{
    // The camera asks picking for what lies under the mouse, and a service that is out of date answers nothing.
    view.drain();
    vrk::selection::VisualSelection::Get()->update();
}

} // namespace vrkview
