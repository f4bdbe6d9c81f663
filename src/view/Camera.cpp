#include "view/Camera.h"

#include "platform/broker/SignalBroker.h"
#include "scene/core/OgreCompat.h"
#include "scene/core/SceneCore.h"
#include "scene/core/ViewportUsers.h"
#include "selection/geometry/Plane.h"
#include "view/AxesCross.h"
#include "view/OrbitViewController.h"

#include <Ogre.h>

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <vector>

namespace vrk::visual {
namespace {

constexpr float minFOV = 0.001f;
constexpr float maxFOV = 3.138451f; // just below half a turn
constexpr float axesCrossScale = 1.5f;
constexpr unsigned allBuffers = Ogre::FBT_COLOUR | Ogre::FBT_DEPTH;
const Ogre::ColourValue background(0.45f, 0.45f, 0.45f, 1.0f);

Camera* main = nullptr;
std::vector<Camera*> living; // in the order of their making

/// OGRE keeps them for the address of a viewport, beyond its death, and the next viewport may well get that address.
void dropCompositors(const Ogre::Viewport& viewport)
{
    Ogre::CompositorManager& compositors = Ogre::CompositorManager::getSingleton();
    if (compositors.hasCompositorChain(&viewport))
        compositors.removeCompositorChain(&viewport);
}

CameraSnapshot::Matrix toArray(const Ogre::Matrix4& matrix)
{
    CameraSnapshot::Matrix all;
    std::copy_n(matrix[0], all.size(), all.begin());
    return all;
}

struct Start {
    Ogre::Vector3 up;
    Ogre::Vector3 position;
};

/// Settings are told for a scene with z up; the other axes turn the starting place with them, and what is no axis counts
/// as z.
Start startFor(int gridNormalDir, const rob::PosTemplate<float>& from)
{
    switch (gridNormalDir) {
    case 0:
        return {Ogre::Vector3::UNIT_X, {from.x, -from.y, -from.z}};
    case 1:
        return {Ogre::Vector3::UNIT_Y, {-from.x, -from.y, from.z}};
    default:
        return {Ogre::Vector3::UNIT_Z, {from.x, from.y, from.z}};
    }
}

} // namespace

/// Tells the camera of changes that nobody asked it for: a window has another size or is gone, a node was moved by hand.
class Camera::Watcher : public Ogre::Viewport::Listener, public Ogre::Camera::Listener {
public:
    explicit Watcher(Camera& camera) : camera(camera) {}
    void viewportDimensionsChanged(Ogre::Viewport*) override { camera.publish(); }
    void viewportDestroyed(Ogre::Viewport*) override { camera.loseRenderTarget(); }
    void cameraPreRenderScene(Ogre::Camera*) override { camera.publish(); }

private:
    Camera& camera;
};

Camera::Camera(const std::string& givenName, Scene* scene) : scene(scene), watcher(std::make_unique<Watcher>(*this))
{
    const SceneCore& core = *SceneCore::Get();
    name = core.name + "::" + givenName;
    sceneNode = core.sceneManager->getRootSceneNode()->createChildSceneNode(name, Ogre::Vector3::ZERO,
                                                                            Ogre::Quaternion::IDENTITY);
    camera = core.sceneManager->createCamera(name);
    sceneNode->attachObject(camera);
    targetPos = core.settings.cameraTarget;
    fromPos = core.settings.cameraPosition;

    const Start start = startFor(core.settings.gridNormalDir, fromPos);
    sceneNode->setFixedYawAxis(true, start.up);
    sceneNode->setPosition(start.position);
    sceneNode->lookAt(toOgre(targetPos), Ogre::Node::TS_WORLD, Ogre::Vector3::NEGATIVE_UNIT_Z);
    sceneNode->setInheritScale(false);
    camera->setAutoAspectRatio(false);
    setClipDist(core.settings.nearClip, core.settings.farClip);
    viewController = std::make_shared<OrbitViewController>(this, "OrbitViewController");
    cross = std::make_unique<AxesCross>(*this);
    cross->setScale(axesCrossScale);
    camera->addListener(watcher.get());
    living.push_back(this);
    if (!main)
        main = this;
    publish();
}

Camera::~Camera()
{
    removeViewport();
    std::erase(living, this);
    if (main == this) {
        main = nullptr;
        SceneCore::Get()->mainCamera.withdraw();
    }
    camera->removeListener(watcher.get());
    cross.reset();
    Ogre::SceneManager& manager = *sceneNode->getCreator();
    manager.destroyCamera(camera);
    manager.destroySceneNode(sceneNode);
}

Camera* Camera::Get()
{
    return main;
}

std::shared_ptr<const CameraSnapshot> Camera::Published()
{
    const SceneCore* core = SceneCore::Get();
    return core ? core->mainCamera.latest() : nullptr;
}

CameraSnapshot Camera::getSnapshot() const
{
    CameraSnapshot snapshot;
    snapshot.pose = getWorldPose();
    const Ogre::Matrix4 view(camera->getViewMatrix(true)); // its own, as its rays are
    const Ogre::Matrix4& projection = camera->getProjectionMatrix();
    snapshot.view = toArray(view);
    snapshot.projection = toArray(projection);
    snapshot.cubeToWorld = toArray((projection * view).inverse());
    snapshot.vfov = getVFOV();
    snapshot.nearClip = camera->getNearClipDistance();
    snapshot.farClip = camera->getFarClipDistance();
    snapshot.width = viewportWidth();
    snapshot.height = viewportHeight();
    return snapshot;
}

void Camera::publish() const
{
    if (main == this)
        SceneCore::Get()->mainCamera.publish(getSnapshot());
}

void Camera::setHFOV(float angle)
{
    hfov = angle;
    updateFOV();
}

float Camera::getVFOV() const
{
    return camera->getFOVy().valueRadians();
}

float Camera::getAspectRatio() const
{
    return camera->getAspectRatio();
}

float Camera::LimitFOV(float angle)
{
    return std::min(std::max(angle, minFOV), maxFOV);
}

void Camera::updateFOV()
{
    if (!viewport)
        return;
    viewport->setDimensions(0, 0, 1, viewportPart);
    const float aspect =
        static_cast<float>(viewport->getActualWidth()) / static_cast<float>(viewport->getActualHeight());
    const double vfov = 2.0 * std::atan(std::tan(hfov * 0.5) / aspect);
    camera->setAspectRatio(aspect);
    camera->setFOVy(Ogre::Radian(LimitFOV(static_cast<float>(vfov))));
    publish();
}

void Camera::FitThoseOf(const Ogre::RenderTarget& target)
{
    for (Camera* camera : living)
        if (camera->renderTarget == &target)
            camera->updateFOV();
}

void Camera::setClipDist(float near, float far)
{
    camera->setNearClipDistance(near);
    camera->setFarClipDistance(far);
    camera->setRenderingDistance(far);
    publish();
}

void Camera::setCameraProjection(const std::string& projection)
{
    if (projection == "perspective")
        camera->setProjectionType(Ogre::PT_PERSPECTIVE);
    publish();
}

void Camera::setVerticleDir(int axis)
{
    static const Ogre::Vector3 axes[] = {Ogre::Vector3::UNIT_X, Ogre::Vector3::UNIT_Y, Ogre::Vector3::UNIT_Z};
    if (axis >= 0 && axis < 3)
        sceneNode->setFixedYawAxis(true, axes[axis]);
}

void Camera::removeViewport()
{
    if (!viewport)
        return;
    Ogre::Viewport& removed = *viewport;
    dropCompositors(removed);
    removed.removeListener(watcher.get());
    forgetViewport();
    removed.getTarget()->removeViewport(removed.getZOrder());
}

void Camera::forgetViewport()
{
    // OGRE's camera keeps the one that it drew into last.
    if (camera->getViewport() == viewport)
        camera->_notifyViewport(nullptr);
    SceneCore::Get()->record<ViewportUsers>().forget(*viewport);
    viewport = nullptr;
    renderTarget = nullptr;
}

void Camera::loseRenderTarget()
{
    forgetViewport();
    publish();
}

void Camera::setRenderTarget(Ogre::RenderTarget* target)
{
    if (!target) {
        removeViewport();
        publish();
        return;
    }
    drawInto(*target, target->getHeight());
}

void Camera::drawInto(Ogre::RenderTarget& target, unsigned height)
{
    // Rounded down by OGRE, to whole rows.
    const float part =
        height == target.getHeight() ? 1 : (static_cast<float>(height) + 0.5f) / static_cast<float>(target.getHeight());
    // The new one first, so that a target that is taken leaves the camera as it is. One target has room for one of them.
    Ogre::Viewport* next = &target == renderTarget ? nullptr : target.addViewport(camera, 0, 0, 0, 1, part);
    removeViewport();
    viewport = next ? next : target.addViewport(camera, 0, 0, 0, 1, part);
    viewportPart = part;
    renderTarget = &target;
    dropCompositors(*viewport);
    viewport->addListener(watcher.get());
    viewport->setClearEveryFrame(true, allBuffers);
    viewport->setOverlaysEnabled(true);
    viewport->setShadowsEnabled(true);
    viewport->setBackgroundColour(background);
    SceneCore::Get()->record<ViewportUsers>().serve(*viewport, main == this);
    updateFOV();
}

unsigned Camera::viewportWidth() const
{
    return renderTarget ? static_cast<unsigned>(renderTarget->getViewport(0)->getActualWidth()) : 0;
}

unsigned Camera::viewportHeight() const
{
    return renderTarget ? static_cast<unsigned>(renderTarget->getViewport(0)->getActualHeight()) : 0;
}

void Camera::cameraToViewportRay(float x, float y, rob::PosTemplate<float>& pos, rob::Vec3Template<float>& dir) const
{
    if (!renderTarget)
        throw std::logic_error("The camera has no render target.");
    const float nx = x / static_cast<float>(viewportWidth());
    const float ny = y / static_cast<float>(viewportHeight());
    const Ogre::Ray ray = camera->getCameraToViewportRay(nx, ny);
    pos = toPos(ray.getOrigin());
    dir = rob::Vec3Template<float>(toDir(ray.getDirection()));
}

Ray Camera::getViewportRay(float x, float y) const
{
    Ray ray;
    rob::Vec3Template<float> direction;
    cameraToViewportRay(x, y, ray.origin, direction);
    ray.direction = rob::normalized(direction);
    return ray;
}

bool Camera::getWorldPointOnPlane(float x, float y, const Plane& plane, rob::PosTemplate<float>& pos) const
{
    const Ray ray = getViewportRay(x, y);
    const float t = plane.distanceAlong(ray.origin, ray.direction);
    pos = ray.origin + ray.direction * t;
    return t > 0;
}

rob::PoseTemplate<float> Camera::getWorldPose() const
{
    return {getWorldPosition(), getWorldRotation()};
}

rob::PosTemplate<float> Camera::getWorldPosition() const
{
    return toPos(sceneNode->_getDerivedPosition());
}

rob::RotationTemplate<float> Camera::getWorldRotation() const
{
    return toRotation(sceneNode->_getDerivedOrientation());
}

void Camera::setWorldPose(const rob::PoseTemplate<float>& pose)
{
    setWorldPosition(pose.position);
    setWorldRotation(pose.rotation());
}

void Camera::setWorldPosition(const rob::PosTemplate<float>& position)
{
    sceneNode->_setDerivedPosition(toOgre(position));
    sceneNode->needUpdate();
    publish();
    broker::SignalBroker::cameraMoved();
}

void Camera::setWorldRotation(const rob::RotationTemplate<float>& rotation)
{
    sceneNode->_setDerivedOrientation(toOgre(rotation));
    sceneNode->needUpdate();
    publish();
    broker::SignalBroker::cameraMoved();
}

void Camera::navigate(std::function<void(OrbitViewController&)> gesture)
{
    std::weak_ptr<OrbitViewController> navigated = viewController;
    SceneCore::Get()->queue.post(
        [navigated = std::move(navigated), gesture = std::move(gesture)] {
            if (const auto controller = navigated.lock()) // its camera may have died since the post
                gesture(*controller);
        },
        0);
}

void Camera::rotateScene(float dx, float dy)
{
    navigate([=](OrbitViewController& controller) { controller.rotateScene(dx, dy); });
}

void Camera::startRotating(float x, float y)
{
    navigate([=](OrbitViewController& controller) { controller.startRotating(x, y); });
}

void Camera::translateScene(float x, float y, float dx, float dy)
{
    navigate([=](OrbitViewController& controller) { controller.translateScene(x, y, dx, dy); });
}

void Camera::zoom(float x, float y, float ignored, float delta)
{
    navigate([=](OrbitViewController& controller) { controller.zoom(x, y, ignored, delta); });
}

void Camera::setOrbitPivot(const rob::PoseTemplate<float>& pose)
{
    navigate([pose](OrbitViewController& controller) { controller.setOrbitPivot(pose); });
}

void Camera::clearOrbitPivot()
{
    navigate([](OrbitViewController& controller) { controller.clearOrbitPivot(); });
}

} // namespace vrk::visual
