#include "canvas/FrameShade.h"

#include "scene/ViewLook.h"

#include <algorithm>

namespace vrkview {
namespace {

using namespace std::chrono_literals;

constexpr auto cheapFrame = 20ms;
constexpr auto stillAfter = 200ms; // without a move of the camera
constexpr auto burst = 400ms;      // three frames within this show something that moves
constexpr auto restAfter = 250ms;

bool wanted = true; // of the one scene

} // namespace

bool isDepthShaded()
{
    return wanted;
}

void setDepthShaded(bool shaded)
{
    wanted = shaded;
}

FrameShade::FrameShade(QObject* parent) : QObject(parent)
{
    rest.setSingleShot(true);
    rest.setInterval(restAfter);
    connect(&rest, &QTimer::timeout, this, &FrameShade::frameWanted);
}

bool FrameShade::isMoving(Clock::time_point now) const
{
    return now - moved < stillAfter || now - begun.back() < burst;
}

void FrameShade::begin()
{
    const Clock::time_point now = Clock::now();
    const bool isTooDear = shadedFrame > cheapFrame && isMoving(now);
    std::ranges::rotate(begun, begun.end() - 1);
    begun.front() = now;
    isShading = wanted && !isTooDear;
    vrk::visual::SetDepthShade(isShading);
    if (wanted && !isShading)
        rest.start();
    else
        rest.stop();
}

void FrameShade::end()
{
    if (isShading)
        shadedFrame = Clock::now() - begun.front();
}

void FrameShade::noteMove()
{
    moved = Clock::now();
}

} // namespace vrkview
