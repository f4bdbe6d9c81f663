#include "view/ScreenScale.h"

#include "view/Camera.h"
#include "visual/Visual.h"

#include <OgreCamera.h>

#include <utility>

namespace vrk::visual {

class ScreenScale::CameraListener : public Ogre::Camera::Listener {
public:
    CameraListener(const ScreenScale& scale, Ogre::Camera* camera) : scale(scale), camera(camera)
    {
        if (camera)
            camera->addListener(this);
    }
    ~CameraListener() override
    {
        if (camera)
            camera->removeListener(this);
    }
    void cameraPreRenderScene(Ogre::Camera*) override { scale.update(); }
    void cameraDestroyed(Ogre::Camera*) override { camera = nullptr; }

private:
    const ScreenScale& scale;
    Ogre::Camera* camera; // which it listens to; another one may be the main camera by its end
};

ScreenScale::ScreenScale(const Visual& visual, std::function<void(float distance)> fit)
    : visual(visual), fit(std::move(fit)),
      listener(std::make_unique<CameraListener>(*this, Camera::Get() ? Camera::Get()->ogreCamera() : nullptr))
{
}

ScreenScale::~ScreenScale() = default;

void ScreenScale::update() const
{
    const Camera* camera = Camera::Get();
    if (camera && visual.getSceneNode())
        fit((camera->getWorldPosition() - visual.getWorldPosition()).length());
}

} // namespace vrk::visual
