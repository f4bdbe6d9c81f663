#include "view/OrbitPivotVisual.h"

#include "view/Camera.h"

#include <OgreCamera.h>

#include <algorithm>

namespace vrk::visual {
namespace {

constexpr float axisLength = 1.0f; // the scale makes it visible
constexpr float minScale = 1.0f;

} // namespace

const float OrbitPivotVisual::ScreenRatio = 0.06f;

class OrbitPivotVisual::CameraListener : public Ogre::Camera::Listener {
public:
    CameraListener(OrbitPivotVisual& visual, Ogre::Camera* camera) : visual(visual), camera(camera)
    {
        if (camera)
            camera->addListener(this);
    }
    ~CameraListener() override
    {
        if (camera)
            camera->removeListener(this);
    }
    void cameraPreRenderScene(Ogre::Camera*) override { visual.updateScale(); }
    void cameraDestroyed(Ogre::Camera*) override { camera = nullptr; }

private:
    OrbitPivotVisual& visual;
    Ogre::Camera* camera; // which it listens to; another one may be the main camera by its end
};

OrbitPivotVisual::OrbitPivotVisual(Visual* parent)
    : FrameVisual(parent, axisLength),
      listener(std::make_unique<CameraListener>(*this, Camera::Get() ? Camera::Get()->ogreCamera() : nullptr))
{
}

OrbitPivotVisual::~OrbitPivotVisual() = default;

void OrbitPivotVisual::updateScale()
{
    const Camera* camera = Camera::Get();
    if (!sceneNode || !visible || !camera)
        return;
    const float distance = (camera->getWorldPosition() - getWorldPosition()).length();
    const float scale = std::max(minScale, distance * ScreenRatio);
    setScale(scale, scale, scale);
}

} // namespace vrk::visual
