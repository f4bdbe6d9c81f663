#pragma once

#include "handles/GuiVisual.h"

#include <functional>
#include <memory>

namespace vrk::visual {

class ScreenScale;
class TasksOfOwner;

/// A handle that keeps its size in the picture of the main camera, at whatever distance it stands. What it hangs on scales it
/// besides.
///
/// One that is made before there is a main camera is never scaled by itself. Of one that is registered for picking every
/// picture makes the picking service dirty.
///
/// Owner: who made it. Thread: render thread, but where said otherwise.
class VRK_EXPORT FixedSizeHandle : public GuiVisual {
public:
    /// @param parent  may be null.
    FixedSizeHandle(const std::string& name, Visual* parent);
    ~FixedSizeHandle() override;
    FixedSizeHandle(const FixedSizeHandle&) = delete;
    FixedSizeHandle& operator=(const FixedSizeHandle&) = delete;

    /// Fits the scale to the distance of the camera. Done ahead of each picture; nothing without a camera.
    void updateScale();

    // Picking. The flag changes at once, on the caller's thread: it says what was asked for. The rest is posted.

    /// @param priority  it wins against all that lies in front of it.
    void registerToSelection(bool priority);
    void unregisterFromSelection();
    bool isRegisteredInSelection() const { return registeredInSelection; }

protected:
    /// Posts work of this handle; it is passed over where the handle has died meanwhile. Any thread, while it lives.
    void postOwn(std::function<void()> task) const;

private:
    void fitTo(float distance);

    std::unique_ptr<TasksOfOwner> posts;
    std::unique_ptr<ScreenScale> cameraListener;
    bool registeredInSelection = false;
};

} // namespace vrk::visual
