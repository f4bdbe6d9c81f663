#include "scene/core/PublishedCamera.h"

#include <utility>

namespace vrk::visual {

void PublishedCamera::publish(const CameraSnapshot& snapshot)
{
    exchange(std::make_shared<const CameraSnapshot>(snapshot));
}

void PublishedCamera::withdraw()
{
    exchange(nullptr);
}

void PublishedCamera::exchange(std::shared_ptr<const CameraSnapshot> next)
{
    const std::lock_guard lock(mutex);
    current.swap(next); // the old one is freed after the lock
}

std::shared_ptr<const CameraSnapshot> PublishedCamera::latest() const
{
    const std::lock_guard lock(mutex);
    return current;
}

} // namespace vrk::visual
