#pragma once

#include <sys/types.h>

namespace vrkview {

/// A display of our own that nobody sees: an Xvfb as a child process, and DISPLAY set to it. It ends with this object,
/// and with this process however that ends.
///
/// Make it before anything else opens a display or starts a thread.
class PrivateDisplay {
public:
    /// Whether Xvfb is on the PATH.
    static bool IsAvailable();

    /// Returns when the display answers. Width and height of its screen are in pixels.
    /// @throws std::runtime_error if Xvfb does not start.
    explicit PrivateDisplay(int width = 1280, int height = 1024);
    ~PrivateDisplay();
    PrivateDisplay(const PrivateDisplay&) = delete;
    PrivateDisplay& operator=(const PrivateDisplay&) = delete;

private:
    pid_t server = -1;
};

} // namespace vrkview
