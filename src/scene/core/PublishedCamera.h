#pragma once

#include "scene/core/CameraSnapshot.h"

#include <memory>
#include <mutex>

namespace vrk::visual {

/// The main camera as it was after its last change. Any thread: who asks holds one state of it for as long as needed.
class VRK_EXPORT PublishedCamera {
public:
    void publish(const CameraSnapshot& snapshot);
    /// There is no camera any more.
    void withdraw();
    /// Null while there is no camera.
    std::shared_ptr<const CameraSnapshot> latest() const;

private:
    void exchange(std::shared_ptr<const CameraSnapshot> next);

    mutable std::mutex mutex; // held for the exchange of a pointer
    std::shared_ptr<const CameraSnapshot> current;
};

} // namespace vrk::visual
