#include "view/OrbitViewController.h"

#include "platform/broker/SignalBroker.h"
#include "scene/core/SceneCore.h"
#include "selection/VisualSelection.h"
#include "view/Camera.h"
#include "view/SurfaceFrame.h"

#include <algorithm>
#include <cmath>

namespace vrk::visual {
namespace {

constexpr float radiansPerPixel = 0.004f;
// A ray whose part along the up axis is smaller than this meets the ground too far away, if at all.
constexpr double levelView = 0.1;
// With nothing under the mouse and no ground: an orbit is about a place close by, which stays in the picture; a zoom is to
// get on, and its steps go with the range. A pan has neither, and takes the origin for a measure.
constexpr float orbitRangeAhead = 100.0f;
constexpr float zoomRangeAhead = 5000.0f;
constexpr float minPanDistance = 10.0f;
constexpr float notch = 80 * 0.01f / 5.0f; // of the distance

/// The ray of a pixel, and how it lies to the ground.
struct PixelRay {
    rob::Posf origin;
    rob::Vec3f direction;
    unsigned up;

    PixelRay(const Camera& camera, float x, float y)
        : up(static_cast<unsigned>(SceneCore::Get()->settings.gridNormalDir))
    {
        camera.cameraToViewportRay(x, y, origin, direction);
    }
    double rise() const { return direction[up]; }
    float distanceToGround() const { return -origin[up] / direction[up]; }
    rob::Posf at(float t) const { return origin + direction * t; }
};

} // namespace

OrbitViewController::OrbitViewController(Camera* camera, const std::string&) : camera(camera)
{
    const SceneSettings& settings = SceneCore::Get()->settings;
    zoomStepLimit = settings.zoomStepLimit;
    zoomMinDistance = settings.zoomMinDistance;
    orbitReserved = settings.orbitReserved;
}

bool OrbitViewController::hasRays() const
{
    return camera->isRenderTargetValid() && camera->viewportWidth() > 0 && camera->viewportHeight() > 0;
}

bool OrbitViewController::pickFocalPoint(float x, float y, rob::Posf& out, bool* onSurface) const
{
    const selection::VisualSelection* service = selection::VisualSelection::Get();
    if (!service)
        return false;
    if (const selection::Result body = service->select(x, y); body.hit) {
        out = body.position;
        if (onSurface)
            *onSurface = true;
        return true;
    }
    const selection::Result point = service->selectPointInCloud(x, y);
    if (point.hit)
        out = point.position;
    return point.hit;
}

void OrbitViewController::startRotating(float x, float y)
{
    if (hasPivot || !hasRays() || pickFocalPoint(x, y, focalPoint, nullptr))
        return;
    const PixelRay ray(*camera, x, y);
    focalPoint = ray.at(ray.rise() < -levelView ? ray.distanceToGround() : orbitRangeAhead);
    holdFocalPoint();
}

void OrbitViewController::holdFocalPoint()
{
    if (bounds)
        focalPoint = rob::Posf(bounds->within(rob::Posd(focalPoint)));
}

rob::Posef OrbitViewController::held(const rob::Posef& wanted) const
{
    return bounds ? bounds->held(camera->getSnapshot(), wanted) : wanted;
}

void OrbitViewController::rotateScene(float dx, float dy)
{
    orbit(-dx * radiansPerPixel, -dy * radiansPerPixel);
}

void OrbitViewController::orbit(float horizontal, float vertical)
{
    // In double precision, as a long drag would else carry the camera away from the focal point.
    const rob::Posed view(camera->getWorldPose());
    const rob::Rotationd rotation = view.rotation().normalized();
    const rob::Posd centre(focalPoint);
    const rob::Posed focus(centre, rotation);
    const rob::Posed turned(centre, rotation * rob::Rotationd(vertical, horizontal, 0));
    const rob::Posef next = held(rob::Posef(turned * (focus.inverse() * view)));
    camera->setWorldPosition(next.position);
    camera->setWorldRotation(next.rotation());
    broker::SignalBroker::updateScene();
}

void OrbitViewController::translateScene(float x, float y, float dx, float dy)
{
    if (!hasRays())
        return;
    if (!hasPivot && !pickFocalPoint(x, y, focalPoint, nullptr)) {
        const PixelRay ray(*camera, x, y);
        const bool level = ray.rise() >= -levelView && ray.rise() < levelView;
        // A ray that looks up takes the ground behind the camera: only its distance counts here.
        focalPoint = level ? rob::Posf() : ray.at(ray.distanceToGround());
        holdFocalPoint();
    }
    const rob::Posf position = camera->getWorldPosition();
    const double distance = std::max(minPanDistance, (focalPoint - position).length());
    const double tanV = std::tan(camera->getVFOV() * 0.5);
    const double tanH = std::tan(std::atan(camera->getAspectRatio() * tanV));
    const rob::Vec3f move(static_cast<float>(2 * tanH * (-dx / camera->viewportWidth()) * distance),
                          static_cast<float>(2 * tanV * (dy / camera->viewportHeight()) * distance), 0);
    const rob::Rotationf rotation = camera->getWorldRotation();
    camera->setWorldPosition(held({position + rotation * move, rotation}).position);
}

void OrbitViewController::zoom(float x, float y, float, float delta)
{
    bool onSurface = false;
    if (!hasPivot) {
        if (!hasRays())
            return;
        if (!pickFocalPoint(x, y, focalPoint, &onSurface)) {
            const PixelRay ray(*camera, x, y);
            const float toGround = std::abs(ray.rise()) > levelView ? ray.distanceToGround() : 0;
            focalPoint = ray.at(toGround > 0 ? toGround : zoomRangeAhead);
            holdFocalPoint();
        }
    }
    const rob::Vec3f toFocus = focalPoint - camera->getWorldPosition();
    const float distance = toFocus.length();
    if (bounds && distance == 0)
        return;
    const float wanted = (delta > 0 ? notch : -notch) * distance;
    const float step = std::max(-zoomStepLimit, std::min(wanted, zoomStepLimit));
    float newDistance = distance - step;
    if (zoomMinDistance > newDistance && step > 0) {
        if (onSurface) // never through the surface under the mouse
            return;
        newDistance = zoomMinDistance;
    }
    const rob::Posf position = focalPoint - rob::Vec3f(rob::normalized(toFocus)) * newDistance;
    camera->setWorldPosition(held({position, camera->getWorldRotation()}).position);
}

void OrbitViewController::setOrbitPivot(const rob::Posef& pose)
{
    orbitPivotFrame = pose;
    focalPoint = pose.position;
    hasPivot = true;
}

bool OrbitViewController::PickSurfaceFrame(float x, float y, rob::Posef& out)
{
    const selection::VisualSelection* service = selection::VisualSelection::Get();
    return service && surfaceFrame(service->select(x, y), out);
}

} // namespace vrk::visual
