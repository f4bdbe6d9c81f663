#pragma once

#include "platform/common/Export.h"
#include "scene/core/CameraSnapshot.h"

#include <functional>
#include <memory>
#include <string>

namespace Ogre {
class Camera;
class RenderTarget;
class SceneNode;
class Viewport;
} // namespace Ogre

namespace vrk::visual {

struct Plane;
class AxesCross;
class OrbitViewController;
class Scene;

/// A camera on a node of its own, and the one source for the question of what lies under a pixel: all rays and all sizes
/// in pixels that picking uses come from here.
///
/// It looks along the negative z axis of its node. The horizontal field of view is what stays when a window is resized.
/// A camera stands without a render target until `setRenderTarget`, and again once that target is gone; meanwhile it has no
/// size in pixels and no rays, navigation that needs a ray does nothing, and nothing lies under any pixel.
///
/// Owner: the scene that made it. Thread: render thread.
class VRK_EXPORT Camera {
public:
    /// @param name  the camera's name is the scene's name, "::" and this.
    Camera(const std::string& name, Scene* scene);
    ~Camera();
    Camera(const Camera&) = delete;
    Camera& operator=(const Camera&) = delete;

    /// The camera that the scene made at start-up; null before that.
    static Camera* Get();
    /// That camera as it was after its last change, for any thread; null before start-up. What is changed past the camera,
    /// on its OGRE objects, shows with the next frame.
    static std::shared_ptr<const CameraSnapshot> Published();
    /// What the camera answers now, as a value.
    CameraSnapshot getSnapshot() const;

    const std::string& getName() const { return name; }
    Scene* getScene() const { return scene; }
    Ogre::SceneNode* getSceneNode() const { return sceneNode; }
    Ogre::Camera* ogreCamera() const { return camera; }
    /// The cross in the corner of this camera's view.
    AxesCross& axesCross() const { return *cross; }
    /// What the navigation below moves the camera with.
    OrbitViewController* getViewController() const { return viewController.get(); }
    unsigned getRenderRate() const { return renderRate; }

    // Kept for the application; they do not move the camera
    const rob::PosTemplate<float>& getFromPos() const { return fromPos; }
    void setFromPos(const rob::PosTemplate<float>& pos) { fromPos = pos; }
    const rob::PosTemplate<float>& getTargetPos() const { return targetPos; }
    void setTargetPos(const rob::PosTemplate<float>& pos) { targetPos = pos; }

    // Lens; angles in radians
    float getHFOV() const { return hfov; }
    void setHFOV(float angle);
    float getVFOV() const;
    float getAspectRatio() const;
    /// Fits the vertical angle to the window, held to 0.001 to 3.138451. Without a render target nothing happens.
    void updateFOV();
    /// Model units. Nothing farther than `far` is drawn.
    void setClipDist(float near, float far);
    /// "perspective"; any other text is ignored.
    void setCameraProjection(const std::string& projection);
    /// The axis that stays upright while the camera turns: 0 for x, 1 for y, 2 for z.
    /// The spelling is part of the interface and stays.
    void setVerticleDir(int axis);

    // Render target
    /// Draws into this target from now on, over its whole area, instead of the one before; null takes the camera off the
    /// one that it has. The target stays its owner's, and may die ahead of the camera, which then has none.
    /// @throws Ogre::Exception where another view lies in the target already, at z order 0. The camera stays as it is.
    void setRenderTarget(Ogre::RenderTarget* target);
    bool isRenderTargetValid() const { return renderTarget != nullptr; }
    /// Pixels; 0 without a render target.
    unsigned viewportWidth() const;
    unsigned viewportHeight() const;

    // What lies under a pixel, counted from the top left corner. All of them
    // @throws std::logic_error "The camera has no render target."
    void cameraToViewportRay(float x, float y, rob::PosTemplate<float>& pos, rob::Vec3Template<float>& dir) const;
    /// @throws std::overflow_error "0-length vector cannot be normalized."
    Ray getViewportRay(float x, float y) const;
    /// Where the pixel's ray meets the plane. False if that is behind the camera, or if they are parallel: `pos` is then
    /// where the ray starts.
    bool getWorldPointOnPlane(float x, float y, const Plane& plane, rob::PosTemplate<float>& pos) const;

    // Pose; each setter raises `cameraMoved`, so a whole pose raises it twice
    rob::PoseTemplate<float> getWorldPose() const;
    rob::PosTemplate<float> getWorldPosition() const;
    rob::RotationTemplate<float> getWorldRotation() const;
    void setWorldPose(const rob::PoseTemplate<float>& pose);
    void setWorldPosition(const rob::PosTemplate<float>& position);
    void setWorldRotation(const rob::RotationTemplate<float>& rotation);

    // Navigation. Any thread: each posts the operation of the same name of the view controller. Where that fails,
    // `processMsgs` throws the exception. What waits when the camera dies is not done.
    void rotateScene(float dx, float dy);
    void startRotating(float x, float y);
    void translateScene(float x, float y, float dx, float dy);
    void zoom(float x, float y, float ignored, float delta);
    void setOrbitPivot(const rob::PoseTemplate<float>& pose);
    void clearOrbitPivot();

private:
    class Watcher;
    friend class BandedPicture;
    friend class WindowTarget;

    /// Fits the angles of the cameras that draw into this target, whose size has changed.
    static void FitThoseOf(const Ogre::RenderTarget& target);
    static float LimitFOV(float angle);
    void publish() const;
    /// As `setRenderTarget`, where the target has the uppermost rows of a picture of that height.
    void drawInto(Ogre::RenderTarget& target, unsigned height);
    void removeViewport();
    void forgetViewport();
    void loseRenderTarget();
    void navigate(std::function<void(OrbitViewController&)> gesture);

    std::string name;
    Ogre::SceneNode* sceneNode = nullptr;
    Ogre::Camera* camera = nullptr;
    Ogre::Viewport* viewport = nullptr;
    Scene* scene;
    Ogre::RenderTarget* renderTarget = nullptr;
    float viewportPart = 1; // its height as a part of the target's
    unsigned renderRate = 60;
    float hfov = 1.0471976f;
    rob::PosTemplate<float> targetPos;
    rob::PosTemplate<float> fromPos;
    std::shared_ptr<OrbitViewController> viewController; // posted gestures look whether it is still there
    std::unique_ptr<AxesCross> cross;
    std::unique_ptr<Watcher> watcher;
};

} // namespace vrk::visual
