#pragma once

#include "scene/math/Color.h"

#include <memory>

namespace Ogre {
class Rectangle2D;
} // namespace Ogre

namespace vrk::visual {

class SceneCore;

/// A rectangle behind all else, over the whole picture, from one colour at its upper edge to another at its lower one.
///
/// Owner: the scene's records. Thread: render thread.
class Background {
public:
    explicit Background(SceneCore& core);
    ~Background();
    Background(const Background&) = delete;
    Background& operator=(const Background&) = delete;

    void show(const rob::ColorTemplate<float>& top, const rob::ColorTemplate<float>& bottom);
    void hide();

private:
    SceneCore& core;
    std::unique_ptr<Ogre::Rectangle2D> rectangle; // null while it was never shown
};

} // namespace vrk::visual
