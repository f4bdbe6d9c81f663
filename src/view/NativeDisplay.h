#pragma once

#include <cstdint>

struct xcb_connection_t;

namespace vrk::visual {

/// What the windows of the display need beside OGRE, on a connection of its own. X11.
///
/// Thread: one at a time.
class NativeDisplay {
public:
    /// @throws std::runtime_error "No X11 display answers."
    NativeDisplay();
    ~NativeDisplay();
    NativeDisplay(const NativeDisplay&) = delete;
    NativeDisplay& operator=(const NativeDisplay&) = delete;

    /// Whether there is such a window, and one that may be drawn to.
    bool hasWindow(std::uintptr_t handle) const;
    /// Pixels. The display has done so when this returns, whoever asks it; nothing happens to a window that is gone.
    void resizeWindow(std::uintptr_t handle, unsigned width, unsigned height);
    void destroyWindow(std::uintptr_t handle);

private:
    xcb_connection_t* connection;
};

} // namespace vrk::visual
