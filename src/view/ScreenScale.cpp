#include "view/ScreenScale.h"

#include "view/Camera.h"
#include "visual/Visual.h"

#include <OgreCamera.h>

#include <utility>

namespace vrk::visual {

class ScreenScale::CameraListener : public Ogre::Camera::Listener {
public:
    explicit CameraListener(const ScreenScale& scale) : scale(scale) {}
    void cameraPreRenderScene(Ogre::Camera*) override { scale.update(); }

private:
    const ScreenScale& scale;
};

ScreenScale::ScreenScale(const Visual& visual, std::function<void(float distance)> fit)
    : visual(visual), fit(std::move(fit)), listener(std::make_unique<CameraListener>(*this))
{
    if (const Camera* camera = Camera::Get())
        camera->ogreCamera()->addListener(listener.get());
}

ScreenScale::~ScreenScale()
{
    if (const Camera* camera = Camera::Get())
        camera->ogreCamera()->removeListener(listener.get());
}

void ScreenScale::update() const
{
    const Camera* camera = Camera::Get();
    if (camera && visual.getSceneNode())
        fit((camera->getWorldPosition() - visual.getWorldPosition()).length());
}

} // namespace vrk::visual
