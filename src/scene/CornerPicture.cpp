#include "scene/CornerPicture.h"

#include "platform/broker/SignalBroker.h"
#include "scene/PictureRectangle.h"
#include "scene/core/SceneCore.h"

#include <Ogre.h>

#include <stdexcept>

namespace vrk::visual {
namespace {

constexpr const char* textureName = "CornerPicture/Picture";
constexpr const char* material = "CornerPicture";
constexpr Ogre::uint8 overAllElse = Ogre::RENDER_QUEUE_OVERLAY - 1;
constexpr std::size_t bytesOfAPixel = 4;

} // namespace

CornerPicture::CornerPicture(SceneCore& core) : core(core) {}

CornerPicture::~CornerPicture()
{
    if (served)
        forget(*served);
}

void CornerPicture::show(std::span<const std::uint8_t> rgba, unsigned width, unsigned height, unsigned newMargin)
{
    if (width == 0 || height == 0 || rgba.size() != bytesOfAPixel * width * height)
        throw std::invalid_argument("The picture of a corner has four bytes for each of its pixels");
    fitTexture(width, height);
    auto* bytes = const_cast<std::uint8_t*>(rgba.data()); // OGRE reads them only
    texture->getBuffer()->blitFromMemory(Ogre::PixelBox(width, height, 1, Ogre::PF_BYTE_RGBA, bytes));
    margin = newMargin;
    shown = true;
    broker::SignalBroker::updateScene();
}

void CornerPicture::hide()
{
    if (!shown)
        return;
    shown = false;
    broker::SignalBroker::updateScene();
}

void CornerPicture::fitTexture(unsigned width, unsigned height)
{
    auto& textures = Ogre::TextureManager::getSingleton();
    if (texture && texture->getWidth() == width && texture->getHeight() == height)
        return;
    if (texture)
        textures.remove(texture);
    texture =
        textures.createManual(textureName, Ogre::ResourceGroupManager::INTERNAL_RESOURCE_GROUP_NAME, Ogre::TEX_TYPE_2D,
                              width, height, 0, Ogre::PF_BYTE_RGBA, Ogre::TU_DYNAMIC_WRITE_ONLY);
    const Ogre::MaterialPtr drawn = Ogre::MaterialManager::getSingleton().getByName(material);
    drawn->load();
    drawn->getTechnique(0)->getPass(0)->getTextureUnitState(0)->setTexture(texture);
    if (rectangle)
        return;
    rectangle = makePictureRectangle(material, overAllElse);
    rectangle->setVisible(false);
    core.sceneManager->getRootSceneNode()->attachObject(rectangle.get());
}

/// In the square from -1 to 1 that the target is.
void CornerPicture::place(unsigned targetWidth, unsigned targetHeight)
{
    const auto across = [&](unsigned pixels) {
        return 1 - 2 * static_cast<float>(pixels) / static_cast<float>(targetWidth);
    };
    const auto down = [&](unsigned pixels) {
        return 2 * static_cast<float>(pixels) / static_cast<float>(targetHeight) - 1;
    };
    rectangle->setCorners(across(margin + texture->getWidth()), down(margin + texture->getHeight()), across(margin),
                          down(margin), false);
}

void CornerPicture::serve(Ogre::Viewport& viewport, bool isMain)
{
    if (!isMain || !dynamic_cast<Ogre::RenderWindow*>(viewport.getTarget()))
        return;
    served = &viewport;
    viewport.getTarget()->addListener(this);
}

void CornerPicture::forget(Ogre::Viewport& viewport)
{
    if (served != &viewport)
        return;
    viewport.getTarget()->removeListener(this);
    served = nullptr;
}

void CornerPicture::preRenderTargetUpdate(const Ogre::RenderTargetEvent&)
{
    if (!shown)
        return;
    place(static_cast<unsigned>(served->getActualWidth()), static_cast<unsigned>(served->getActualHeight()));
    rectangle->setVisible(true);
}

void CornerPicture::postRenderTargetUpdate(const Ogre::RenderTargetEvent&)
{
    if (rectangle)
        rectangle->setVisible(false);
}

} // namespace vrk::visual
