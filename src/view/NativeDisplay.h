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
    /// What the display fills a new or uncovered part of the window with, until it is drawn to: red, green and blue from the
    /// highest byte that counts to the lowest. What a window showed stays in its upper left corner when its size changes.
    void fillWindow(std::uintptr_t handle, std::uint32_t color);
    /// Fills all of it so.
    void clearWindow(std::uintptr_t handle);
    /// From now on the display leaves such a part as the screen has it.
    void leaveWindow(std::uintptr_t handle);
    /// Keeps what the window shows on the screen, whatever is drawn to it, until it is uncovered.
    void coverWindow(std::uintptr_t handle, unsigned width, unsigned height);
    void uncoverWindow();
    /// Pixels. The display has done so when this returns, whoever asks it; nothing happens to a window that is gone.
    void resizeWindow(std::uintptr_t handle, unsigned width, unsigned height);
    void destroyWindow(std::uintptr_t handle);

private:
    xcb_connection_t* connection;
    std::uint32_t cover = 0; // 0 while there is none
};

} // namespace vrk::visual
