#include "scene/Background.h"

#include "scene/PictureRectangle.h"
#include "scene/core/SceneCore.h"

#include <Ogre.h>

namespace vrk::visual {
namespace {

// Where the shader reads the colours.
constexpr std::size_t topParameter = 0;
constexpr std::size_t bottomParameter = 1;

Ogre::Vector4 toVector(const rob::ColorTemplate<float>& color)
{
    return {color.r, color.g, color.b, 1.0f};
}

} // namespace

Background::Background(SceneCore& core) : core(core) {}

Background::~Background()
{
    hide();
}

void Background::show(const rob::ColorTemplate<float>& top, const rob::ColorTemplate<float>& bottom)
{
    if (!rectangle)
        rectangle = makePictureRectangle("Background", Ogre::RENDER_QUEUE_BACKGROUND);
    rectangle->setCustomParameter(topParameter, toVector(top));
    rectangle->setCustomParameter(bottomParameter, toVector(bottom));
    if (!rectangle->isAttached())
        core.sceneManager->getRootSceneNode()->attachObject(rectangle.get());
}

void Background::hide()
{
    if (rectangle && rectangle->isAttached())
        rectangle->detachFromParent();
}

} // namespace vrk::visual
