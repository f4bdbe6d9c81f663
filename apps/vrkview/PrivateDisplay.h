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

    /// Returns when the display answers.
    /// @throws std::runtime_error if Xvfb does not start.
    PrivateDisplay();
    ~PrivateDisplay();
    PrivateDisplay(const PrivateDisplay&) = delete;
    PrivateDisplay& operator=(const PrivateDisplay&) = delete;

private:
    pid_t server = -1;
};

} // namespace vrkview
