#include "scene/ShadedPart.h"

#include "scene/SchemeTechnique.h"

#include <Ogre.h>

#include <algorithm>
#include <typeinfo>

namespace vrk::visual {
namespace {

constexpr float pixelsAround = 4; // the shade is measured on half of the pixels, and read between them
const Ogre::Vector4 wholePicture(0, 0, 1, 1);
const Ogre::Vector4 nothing(0, 0, 0, 0);

} // namespace

void ShadedPart::use(const Ogre::Viewport& viewport)
{
    const Ogre::Camera& camera = *viewport.getCamera();
    box.setNull();
    toPicture = camera.getProjectionMatrix() * camera.getViewMatrix();
    margin = Ogre::Vector2(pixelsAround / static_cast<float>(viewport.getActualWidth()),
                           pixelsAround / static_cast<float>(viewport.getActualHeight()));
    ofNothing = techniqueOf("DepthShade/Nothing");
}

void ShadedPart::add(const Ogre::Renderable& renderable, const Ogre::Technique& technique)
{
    if (&technique == ofNothing || box.isInfinite())
        return;
    // Asked for each of all that is drawn: a cast would take ten times as long.
    if (typeid(renderable) == typeid(Ogre::SubEntity))
        box.merge(static_cast<const Ogre::SubEntity&>(renderable).getParent()->getWorldBoundingBox());
    else
        box.setInfinite(); // a cloud
}

Ogre::Vector4 ShadedPart::rectangle() const
{
    if (box.isNull())
        return nothing;
    if (box.isInfinite())
        return wholePicture;
    Ogre::Vector2 low(1, 1);
    Ogre::Vector2 high(0, 0);
    for (const Ogre::Vector3& corner : box.getAllCorners()) {
        const Ogre::Vector4 at = toPicture * Ogre::Vector4(corner);
        if (at.w <= 0 || at.z < -at.w) // it would lie anywhere
            return wholePicture;
        const Ogre::Vector2 place((1 + at.x / at.w) / 2, (1 - at.y / at.w) / 2);
        low.makeFloor(place);
        high.makeCeil(place);
    }
    low = low - margin;
    high = high + margin;
    low.makeCeil(Ogre::Vector2::ZERO);
    high.makeFloor(Ogre::Vector2::UNIT_SCALE);
    return low.x < high.x && low.y < high.y ? Ogre::Vector4(low.x, low.y, high.x, high.y) : nothing;
}

} // namespace vrk::visual
