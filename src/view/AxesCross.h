#pragma once

#include "platform/common/Export.h"

#include <array>
#include <cstdint>
#include <memory>
#include <string>

namespace Ogre {
class SceneManager;
class SceneNode;
} // namespace Ogre

namespace vrk::visual {

class Camera;

/// The cross of three lettered axes in the lower left corner of a camera's view: it shows how the world is turned.
///
/// It hangs in the scene like anything else, but the programs of its material put it into the corner, at a size in
/// pixels that is the same in any window. Only its own camera sees it.
///
/// Owner: the camera. Thread: render thread.
class VRK_EXPORT AxesCross {
public:
    explicit AxesCross(Camera& camera);
    ~AxesCross();
    AxesCross(const AxesCross&) = delete;
    AxesCross& operator=(const AxesCross&) = delete;

    /// Makes the cross larger than it was by this factor. The nodes take the factor itself, so call it once.
    void setScale(float factor);
    /// The same, at any time and any number of times: also the nodes are as large as all factors together say.
    void enlarge(float factor);
    float getScale() const { return scale; }
    /// The distance of its middle from the left and the lower edge, in pixels.
    std::int16_t getWidth() const { return width; }
    std::int16_t getHeight() const { return height; }
    void setShown(bool show) { shown = show; }
    bool isShown() const { return shown; }

private:
    class FrameListener;

    void createAxis(std::size_t index);
    void follow();
    void hide();
    void sendParameters();

    Ogre::SceneNode* root = nullptr;
    std::array<Ogre::SceneNode*, 3> axes{};
    std::array<Ogre::SceneNode*, 3> letters{};
    Camera& camera;
    std::unique_ptr<FrameListener> frameListener;
    std::int16_t width = 50;
    std::int16_t height = 50;
    float scale = 1;
    bool shown = true;
    std::string nameEnd; // of the nodes; empty for the first cross
};

} // namespace vrk::visual
