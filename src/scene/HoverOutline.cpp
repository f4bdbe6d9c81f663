#include "scene/HoverOutline.h"

#include "platform/broker/SignalBroker.h"
#include "scene/Scene.h"
#include "scene/core/SceneCore.h"
#include "visual/FacetVisual.h"
#include "visual/Visual.h"

#include <Ogre.h>

namespace vrk::visual {
namespace {

constexpr const char* textureName = "HoverOutline/Mask";
constexpr Ogre::uint8 lastBeforeHandles = 79;

bool isBody(const Visual& visual)
{
    return dynamic_cast<const FacetVisual*>(&visual) != nullptr;
}

void collect(const Visual& visual, std::vector<Ogre::MovableObject*>& objects)
{
    if (isBody(visual))
        for (Ogre::MovableObject* object : visual.getSceneNode()->getAttachedObjects())
            objects.push_back(object);
    for (const Visual* child : visual.getChildren())
        collect(*child, objects);
}

} // namespace

/// A texture of the size of the picture, into which the camera draws as well.
struct HoverOutline::Mask {
    explicit Mask(Ogre::Camera& camera, unsigned width, unsigned height)
    {
        Ogre::Viewport* before = camera.getViewport();
        texture = Ogre::TextureManager::getSingleton().createManual(
            textureName, Ogre::ResourceGroupManager::INTERNAL_RESOURCE_GROUP_NAME, Ogre::TEX_TYPE_2D, width, height, 0,
            Ogre::PF_BYTE_RGBA, Ogre::TU_RENDERTARGET);
        target = texture->getBuffer()->getRenderTarget();
        target->setAutoUpdated(false);
        Ogre::Viewport* viewport = target->addViewport(&camera);
        viewport->setClearEveryFrame(true, Ogre::FBT_COLOUR | Ogre::FBT_DEPTH);
        viewport->setBackgroundColour(Ogre::ColourValue(0, 0, 0, 0));
        viewport->setVisibilityMask(maskFlag);
        viewport->setMaterialScheme("BorderMask");
        viewport->setOverlaysEnabled(false);
        viewport->setShadowsEnabled(false);
        camera._notifyViewport(before);
    }
    ~Mask()
    {
        target->removeAllViewports();
        Ogre::TextureManager::getSingleton().remove(texture);
    }

    Ogre::TexturePtr texture;
    Ogre::RenderTarget* target;
};

HoverOutline::HoverOutline(SceneCore& core) : ViewportRectangle(core, "HoverOutline", lastBeforeHandles) {}

HoverOutline::~HoverOutline() = default;

void HoverOutline::setAround(const std::vector<unsigned>& wanted)
{
    if (wanted == ids)
        return;
    ids = wanted;
    broker::SignalBroker::updateScene();
}

void HoverOutline::viewportLost()
{
    mask = nullptr;
}

void HoverOutline::fitMask(const Ogre::Viewport& viewport)
{
    const auto width = static_cast<unsigned>(viewport.getActualWidth());
    const auto height = static_cast<unsigned>(viewport.getActualHeight());
    if (mask && mask->target->getWidth() == width && mask->target->getHeight() == height)
        return;
    mask = nullptr; // first: the next one has its name
    mask = std::make_unique<Mask>(*viewport.getCamera(), width, height);
    fillWith(mask->texture);
}

/// @return false where there is nothing in it.
bool HoverOutline::drawMask()
{
    std::vector<Ogre::MovableObject*> objects;
    for (const unsigned id : ids)
        if (Scene::HasVisual(id))
            collect(*Scene::GetVisual(id), objects);
    if (objects.empty())
        return false;
    fitMask(*viewport());
    for (Ogre::MovableObject* object : objects)
        object->addVisibilityFlags(maskFlag);
    mask->target->update();
    for (Ogre::MovableObject* object : objects)
        object->removeVisibilityFlags(maskFlag);
    viewport()->getCamera()->_notifyViewport(viewport());
    return true;
}

bool HoverOutline::prepare()
{
    return !ids.empty() && drawMask();
}

} // namespace vrk::visual
