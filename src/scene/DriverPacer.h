#pragma once

#include <OgreRenderObjectListener.h>

#include <array>
#include <cstddef>

namespace Ogre {
class HardwareOcclusionQuery;
class SceneManager;
} // namespace Ogre

namespace vrk::visual {

class SceneCore;

/// Keeps a driver that draws on the processor from putting aside more work than it gets done. Such a one sorts triangles into
/// parts of the picture at once and fills them in later, on other threads, and keeps some 100 bytes for each triangle until
/// then: a picture of ten millions took a gigabyte. So what is drawn is counted, and now and then one waits until what was
/// drawn a while ago is done. A graphics card is left alone.
///
/// Owner: the scene. Thread: render thread.
class DriverPacer : public Ogre::RenderObjectListener {
public:
    explicit DriverPacer(SceneCore& core);
    ~DriverPacer() override;
    DriverPacer(const DriverPacer&) = delete;
    DriverPacer& operator=(const DriverPacer&) = delete;

    void notifyRenderSingleObject(Ogre::Renderable* renderable, const Ogre::Pass* pass,
                                  const Ogre::AutoParamDataSource* source, const Ogre::LightList* lights,
                                  bool suppressRenderStateChanges) override;

private:
    void waitForTheOneBefore();

    Ogre::SceneManager& manager;
    std::array<Ogre::HardwareOcclusionQuery*, 2> marks{}; // take turns; what is drawn up to one is done when it answers
    std::array<bool, 2> isSet{};
    std::size_t next = 0;
    std::size_t drawn = 0; // vertices since the last mark
};

} // namespace vrk::visual
