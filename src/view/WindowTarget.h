#pragma once

#include "platform/common/Export.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <vector>

namespace Ogre {
class RenderTarget;
class RenderWindow;
} // namespace Ogre

namespace vrk::visual {

class NativeDisplay;

/// What a camera draws to a window of the application: a window of OGRE's that fills it.
///
/// Hand `renderTarget` to `Camera::setRenderTarget`; `renderFrame` then draws it along with all others, `draw` by itself.
/// There may be any number of them, each with a camera of its own. Pictures appear at once: none waits for the screen.
///
/// Owner: whoever makes it. The window of the application stays its own and must outlive this; how large it is now only the
/// application knows, so it calls `resize`. The inner one covers it: the mouse and the keys go through to the application's,
/// but what has to be drawn again is told to the inner one alone, see `nativeHandle`. A camera that draws here when this
/// dies has no target from then on.
///
/// The inner window is never black ahead of a picture: until the first one, and where it grows, the display fills it with the
/// plain grey of cameras, and leaves what it showed, as well as what other windows uncover, until the next picture.
///
/// Thread: render thread, on which the library was started. Units: device pixels.
class VRK_EXPORT WindowTarget {
public:
    /// @param parent  the application's window: its X11 id on the display that the library was started on.
    /// @param width, height  1 to 16384.
    /// @param samples  for each pixel, 0 for none; the driver may give fewer.
    /// @throws std::logic_error "The library has not been started."
    /// @throws std::runtime_error that names the handle if it is of no window, or the size, or tells what failed in OGRE.
    WindowTarget(std::uintptr_t parent, unsigned width, unsigned height, unsigned samples);
    ~WindowTarget();
    WindowTarget(const WindowTarget&) = delete;
    WindowTarget& operator=(const WindowTarget&) = delete;

    unsigned getWidth() const;
    unsigned getHeight() const;
    /// The size of the inner window from now on; the cameras that draw here fit their angles to it. Draw next: what
    /// it shows until then is of the old size. The size that it has already costs nothing.
    /// @throws std::runtime_error that names the size if it is not as the constructor takes it; the window stays as it is.
    void resize(unsigned width, unsigned height);
    /// Device pixels for one that the user thinks in, 1 at first. It is kept for whoever asks, as picking and texts do, and
    /// changes no size.
    double getDevicePixelRatio() const { return devicePixelRatio; }
    /// @throws std::invalid_argument "The pixel ratio of a window must be above 0 and finite"
    void setDevicePixelRatio(double ratio);

    Ogre::RenderTarget* renderTarget() const;
    /// The inner window, as the display knows it. An application that selects the events of exposure there knows when to
    /// draw again.
    std::uintptr_t nativeHandle() const { return handle; }

    /// Draws this window now and shows it, and no other target. What was posted is not run, and `frameTicked` not raised.
    void draw();
    /// What the window shows: red, green, blue for each pixel, rows from the top, nothing between them. It is drawn anew for
    /// that, behind what is shown, as a display keeps nothing of what other windows cover.
    /// @throws std::logic_error "No camera draws into the window."
    std::vector<std::uint8_t> read();
    /// Writes the same as a PNG, whole or not at all.
    /// @throws std::logic_error as above.
    /// @throws std::runtime_error naming the file that cannot be written.
    void savePng(const std::filesystem::path& file);

private:
    class FirstPicture;

    void fit(unsigned width, unsigned height);

    std::unique_ptr<NativeDisplay> display;
    Ogre::RenderWindow* window = nullptr; // OGRE's, which this ends
    std::uintptr_t handle = 0;
    double devicePixelRatio = 1;
    // Last: programs know the place of the handle, and those that were built before go on.
    std::unique_ptr<FirstPicture> firstPicture;
};

} // namespace vrk::visual
