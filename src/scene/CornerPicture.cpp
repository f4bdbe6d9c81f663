#include "scene/CornerPicture.h"

#include "platform/broker/SignalBroker.h"

#include <Ogre.h>
#include <OgreRectangle2D.h>

#include <stdexcept>

namespace vrk::visual {
namespace {

constexpr const char* textureName = "CornerPicture/Picture";
constexpr Ogre::uint8 overAllElse = Ogre::RENDER_QUEUE_OVERLAY - 1;
constexpr std::size_t bytesOfAPixel = 4;

} // namespace

CornerPicture::CornerPicture(SceneCore& core) : ViewportRectangle(core, "CornerPicture", overAllElse) {}

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
    fillWith(texture);
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
    rectangle()->setCorners(across(margin + texture->getWidth()), down(margin + texture->getHeight()), across(margin),
                            down(margin), false);
}

bool CornerPicture::isFor(const Ogre::Viewport& viewport) const
{
    return dynamic_cast<const Ogre::RenderWindow*>(viewport.getTarget()) != nullptr;
}

bool CornerPicture::prepare()
{
    if (!shown)
        return false;
    place(static_cast<unsigned>(viewport()->getActualWidth()), static_cast<unsigned>(viewport()->getActualHeight()));
    return true;
}

} // namespace vrk::visual
