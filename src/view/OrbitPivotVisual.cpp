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
    explicit CameraListener(OrbitPivotVisual& visual) : visual(visual) {}
    void cameraPreRenderScene(Ogre::Camera*) override { visual.updateScale(); }

private:
    OrbitPivotVisual& visual;
};

OrbitPivotVisual::OrbitPivotVisual(Visual* parent)
    : FrameVisual(parent, axisLength), listener(std::make_unique<CameraListener>(*this))
{
    if (const Camera* camera = Camera::Get())
        camera->ogreCamera()->addListener(listener.get());
}

OrbitPivotVisual::~OrbitPivotVisual()
{
    if (const Camera* camera = Camera::Get())
        camera->ogreCamera()->removeListener(listener.get());
}

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
