#include "scene/FrameTimer.h"

#include "platform/broker/SignalBroker.h"

#include <chrono>

namespace vrk::visual {
namespace {

std::int64_t steadyNanoseconds()
{
    return std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

} // namespace

bool FrameTimer::frameStarted(const Ogre::FrameEvent&)
{
    frameStart = steadyNanoseconds();
    return true;
}

bool FrameTimer::frameEnded(const Ogre::FrameEvent&)
{
    lastFrameMs = static_cast<double>(steadyNanoseconds() - frameStart) / 1e6;
    broker::SignalBroker::frameTicked(lastFrameMs);
    return true;
}

} // namespace vrk::visual
