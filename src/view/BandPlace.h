#pragma once

#include <OgreFrustum.h>
#include <OgreGpuProgramParams.h>
#include <OgreRenderObjectListener.h>
#include <OgreSceneManager.h>

#include <set>

namespace Ogre {
class Camera;
class CompositorChain;
class Viewport;
} // namespace Ogre

namespace vrk::visual {

/// While it lives, a viewport that is higher than its target shows the target one band of the picture after the other. What
/// compositors measure on the whole picture they measure with the first one, and of the scene only what lies in the band is
/// drawn.
///
/// Owner: who draws the picture. Thread: render thread.
class BandPlace : public Ogre::SceneManager::Listener, public Ogre::RenderObjectListener {
public:
    BandPlace(Ogre::Camera& camera, Ogre::Viewport& viewport);
    ~BandPlace() override;
    BandPlace(const BandPlace&) = delete;
    BandPlace& operator=(const BandPlace&) = delete;

    /// @param firstRow  of the picture, which the target's uppermost row shows from now on.
    void moveTo(unsigned firstRow);

    void preFindVisibleObjects(Ogre::SceneManager* source, Ogre::SceneManager::IlluminationRenderStage stage,
                               Ogre::Viewport* drawn) override;
    void postFindVisibleObjects(Ogre::SceneManager* source, Ogre::SceneManager::IlluminationRenderStage stage,
                                Ogre::Viewport* drawn) override;
    void notifyRenderSingleObject(Ogre::Renderable* renderable, const Ogre::Pass* pass,
                                  const Ogre::AutoParamDataSource* source, const Ogre::LightList* lights,
                                  bool suppressed) override;

private:
    void placeViewport(float top);
    void cull(unsigned firstRow);
    void measureOnce(bool once);

    Ogre::Camera& camera;
    Ogre::Viewport& viewport;
    Ogre::CompositorChain* chain; // null where the viewport has none
    const int rowsOfPicture;
    float rowsAbove = 0;
    Ogre::Frustum seen;                                          // what of the scene lies in the band
    std::set<Ogre::GpuProgramParametersSharedPtr> toldRowsAbove; // which are to be told that there are none
};

} // namespace vrk::visual
