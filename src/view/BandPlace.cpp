#include "view/BandPlace.h"

#include <Ogre.h>

#include <algorithm>

namespace vrk::visual {
namespace {

constexpr float culledBeyond = 0.03f;          // of the picture's height: lines reach beyond their places
constexpr const char* parameter = "rowsAbove"; // of programs that count the picture's rows

Ogre::CompositorChain* chainOf(const Ogre::Viewport& viewport)
{
    Ogre::CompositorManager& compositors = Ogre::CompositorManager::getSingleton();
    return compositors.hasCompositorChain(&viewport)
               ? compositors.getCompositorChain(const_cast<Ogre::Viewport*>(&viewport))
               : nullptr;
}

} // namespace

BandPlace::BandPlace(Ogre::Camera& camera, Ogre::Viewport& viewport)
    : camera(camera), viewport(viewport), chain(chainOf(viewport)), rowsOfPicture(viewport.getActualHeight())
{
    camera.getSceneManager()->addListener(this);
    camera.getSceneManager()->addRenderObjectListener(this);
    measureOnce(true);
}

BandPlace::~BandPlace()
{
    measureOnce(false);
    if (chain)
        chain->_markDirty(); // for the next picture all is measured anew
    placeViewport(0);
    for (const Ogre::GpuProgramParametersSharedPtr& each : toldRowsAbove)
        each->setNamedConstant(parameter, 0.0f);
    camera.getSceneManager()->removeRenderObjectListener(this);
    camera.getSceneManager()->removeListener(this);
}

/// Targets that compositors draw ahead of the picture are then drawn once after each change of the chain. The flags belong to
/// the compositors, which other viewports have as well; the chain keeps what they were when it was drawn first.
void BandPlace::measureOnce(bool once)
{
    if (!chain)
        return;
    for (Ogre::CompositorInstance* instance : chain->getCompositorInstances())
        for (Ogre::CompositionTargetPass* pass : instance->getTechnique()->getTargetPasses())
            pass->setOnlyInitial(once);
    if (once)
        chain->_markDirty();
}

void BandPlace::moveTo(unsigned firstRow)
{
    if (firstRow > 0)
        measureOnce(false);
    rowsAbove = static_cast<float>(firstRow);
    placeViewport(-rowsAbove / static_cast<float>(viewport.getTarget()->getHeight()));
    cull(firstRow);
}

/// Past the compositors, which would make their textures anew: the picture's size stays.
void BandPlace::placeViewport(float top)
{
    if (chain)
        viewport.removeListener(chain);
    viewport.setDimensions(0, top, 1, viewport.getHeight());
    if (chain)
        viewport.addListener(chain);
}

void BandPlace::cull(unsigned firstRow)
{
    const Ogre::RealRect whole = camera.getFrustumExtents();
    const auto at = [&](float row) {
        return whole.top + (whole.bottom - whole.top) * row / static_cast<float>(rowsOfPicture);
    };
    const float margin = culledBeyond * static_cast<float>(rowsOfPicture);
    const auto first = static_cast<float>(firstRow);
    const auto rows = static_cast<float>(viewport.getTarget()->getHeight());
    seen.setProjectionType(camera.getProjectionType());
    seen.setNearClipDistance(camera.getNearClipDistance());
    seen.setFarClipDistance(camera.getFarClipDistance());
    seen.setFrustumExtents(whole.left, whole.right, at(first - margin), at(first + rows + margin));
    seen.setCustomViewMatrix(true, camera.getViewMatrix());
}

void BandPlace::preFindVisibleObjects(Ogre::SceneManager*, Ogre::SceneManager::IlluminationRenderStage,
                                      Ogre::Viewport* drawn)
{
    if (drawn->getTarget() == viewport.getTarget())
        camera.setCullingFrustum(&seen);
}

void BandPlace::postFindVisibleObjects(Ogre::SceneManager*, Ogre::SceneManager::IlluminationRenderStage,
                                       Ogre::Viewport*)
{
    camera.setCullingFrustum(nullptr);
}

void BandPlace::notifyRenderSingleObject(Ogre::Renderable*, const Ogre::Pass* pass, const Ogre::AutoParamDataSource*,
                                         const Ogre::LightList*, bool)
{
    if (!pass->hasFragmentProgram())
        return;
    const Ogre::GpuProgramParametersSharedPtr& parameters = pass->getFragmentProgramParameters();
    if (!parameters->_findNamedConstantDefinition(parameter))
        return;
    parameters->setNamedConstant(parameter, rowsAbove);
    toldRowsAbove.insert(parameters);
}

} // namespace vrk::visual
