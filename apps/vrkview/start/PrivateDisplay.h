#pragma once

#include <functional>

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
    /// @param meanwhile  done while Xvfb starts, for which there is a core mostly; it must start no thread. What it throws comes
    ///                   first.
    /// @throws std::runtime_error if Xvfb does not start.
    explicit PrivateDisplay(int width = 1280, int height = 1024, const std::function<void()>& meanwhile = {});
    ~PrivateDisplay();
    PrivateDisplay(const PrivateDisplay&) = delete;
    PrivateDisplay& operator=(const PrivateDisplay&) = delete;

private:
    /// The child process.
    struct Server {
        ~Server();

        pid_t process = -1;
    };
    Server server;
};

/// Has the program load what draws on such a display, which takes a while, ahead of its need: Mesa's driver for displays
/// without a graphics card. Where that lies elsewhere it does nothing.
void loadSoftwareDriver();

} // namespace vrkview
