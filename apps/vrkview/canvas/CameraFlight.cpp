#include "canvas/CameraFlight.h"

#include "scene/ShownCorners.h"
#include "view/Camera.h"

#include <algorithm>

namespace vrkview {
namespace {

using vrk::rob::Posef;
using vrk::rob::Posf;
using vrk::visual::Camera;

constexpr int stepInterval = 8;        // milliseconds; a frame that takes longer leaves steps out
constexpr float leastDistance = 1e-3f; // model units

/// How far ahead of the camera the middle of what is shown lies.
float distanceTo(const Posf& middle, const Posef& camera)
{
    const Posf seen = camera.inverse() * middle;
    return std::max(leastDistance, -seen.z);
}

} // namespace

CameraFlight::CameraFlight(QObject* parent) : QObject(parent)
{
    timer.setTimerType(Qt::PreciseTimer);
    timer.setInterval(stepInterval);
    connect(&timer, &QTimer::timeout, this, &CameraFlight::step);
}

void CameraFlight::flyTo(const Posef& pose)
{
    stop();
    const vrk::visual::Box box = vrk::visual::BoxOfShown();
    const Posf middle = box.isValid() ? box.min + (box.max - box.min) / 2.0f : Posf(0, 0, 0);
    Camera& camera = *Camera::Get();
    lastPose = camera.getWorldPose();
    way.emplace(lastPose, distanceTo(middle, lastPose), pose, distanceTo(middle, pose));
    clock.start();
    timer.start();
}

void CameraFlight::stop()
{
    if (!isFlying())
        return;
    timer.stop();
    emit interrupted(Camera::Get()->getWorldPose());
}

void CameraFlight::finish()
{
    if (isFlying())
        moveTo(1);
}

void CameraFlight::step()
{
    if (Camera::Get()->getWorldPose() != lastPose) {
        timer.stop(); // somebody else has the camera now
        return;
    }
    moveTo(static_cast<float>(clock.elapsed()) / duration);
}

void CameraFlight::moveTo(float time)
{
    Camera& camera = *Camera::Get();
    camera.setWorldPose(way->at(time));
    lastPose = camera.getWorldPose();
    if (time >= 1)
        timer.stop();
}

} // namespace vrkview
