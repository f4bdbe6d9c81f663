#include "scene/ViewportRectangle.h"

#include "scene/PictureRectangle.h"
#include "scene/core/SceneCore.h"

#include <Ogre.h>

namespace vrk::visual {

ViewportRectangle::ViewportRectangle(SceneCore& core, const char* material, Ogre::uint8 group)
    : core(core), material(material), group(group)
{
}

ViewportRectangle::~ViewportRectangle()
{
    if (served)
        served->getTarget()->removeListener(this);
}

void ViewportRectangle::serve(Ogre::Viewport& viewport, bool isMain)
{
    if (!isMain || !isFor(viewport))
        return;
    served = &viewport;
    viewport.getTarget()->addListener(this);
}

void ViewportRectangle::forget(Ogre::Viewport& viewport)
{
    if (served != &viewport)
        return;
    viewport.getTarget()->removeListener(this);
    served = nullptr;
    viewportLost();
}

void ViewportRectangle::fillWith(const Ogre::TexturePtr& texture)
{
    const Ogre::MaterialPtr filled = Ogre::MaterialManager::getSingleton().getByName(material);
    filled->load();
    filled->getTechnique(0)->getPass(0)->getTextureUnitState(0)->setTexture(texture);
    if (drawn)
        return;
    drawn = makePictureRectangle(material, group);
    drawn->setVisible(false);
    core.sceneManager->getRootSceneNode()->attachObject(drawn.get());
}

void ViewportRectangle::preRenderTargetUpdate(const Ogre::RenderTargetEvent&)
{
    if (prepare())
        drawn->setVisible(true);
}

void ViewportRectangle::postRenderTargetUpdate(const Ogre::RenderTargetEvent&)
{
    if (drawn)
        drawn->setVisible(false);
}

} // namespace vrk::visual
