#pragma once

#include "platform/common/Export.h"

#include <functional>
#include <memory>

namespace vrk::visual {

class Visual;

/// Lets a visual keep its size on the screen: ahead of each picture of the main camera the visual is given its distance
/// from it, to scale itself by.
///
/// One that is made before there is a main camera is never called by itself.
///
/// Owner: the visual, whose member it is. Thread: render thread.
class VRK_EXPORT ScreenScale {
public:
    /// @param fit  takes the distance from the main camera to the visual's origin, in model units, and sets the scale. The
    ///             visual's parents scale it besides.
    ScreenScale(const Visual& visual, std::function<void(float distance)> fit);
    ~ScreenScale();

    /// Calls `fit` at once. Without a main camera, or a node of the visual, it does nothing.
    void update() const;

private:
    class CameraListener;

    const Visual& visual;
    std::function<void(float)> fit;
    std::unique_ptr<CameraListener> listener;
};

} // namespace vrk::visual
