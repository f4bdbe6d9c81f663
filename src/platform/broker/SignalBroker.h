#pragma once

#include "platform/common/Export.h"

#include <boost/signals2/connection.hpp>

#include <functional>

namespace vrk::broker {

/// The signals that the view raises to the application.
///
/// Thread: any thread may raise a signal and connect to it; receivers run on the thread that raises.
/// A receiver of `updateScene` must not post to the scene from inside the signal: the queue's lock is held.
class VRK_EXPORT SignalBroker {
public:
    static void updateScene();
    static void cameraMoved();
    static void snapResultInvalidated();
    /// @param milliseconds  the duration of the frame that just ended.
    static void frameTicked(double milliseconds);

    static boost::signals2::connection onUpdateScene(std::function<void()> receiver);
    static boost::signals2::connection onCameraMoved(std::function<void()> receiver);
    static boost::signals2::connection onSnapResultInvalidated(std::function<void()> receiver);
    static boost::signals2::connection onFrameTicked(std::function<void(double)> receiver);
};

} // namespace vrk::broker
