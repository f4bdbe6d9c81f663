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

// Of the one scene
bool shadeWanted = true;
bool shadowWanted = false; // the program that is started has it, unless told otherwise

} // namespace

bool isDepthShaded()
{
    return shadeWanted;
}

void setDepthShaded(bool shaded)
{
    shadeWanted = shaded;
}

bool isGroundShadowed()
{
    return shadowWanted;
}

void setGroundShadowed(bool shadowed)
{
    shadowWanted = shadowed;
    if (!shadowed)
        vrk::visual::RemoveGroundShadow();
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
    const bool isTooDear = wholeFrame > cheapFrame && isMoving(now);
    std::ranges::rotate(begun, begun.end() - 1);
    begun.front() = now;
    isWhole = !isTooDear;
    vrk::visual::SetDepthShade(shadeWanted && isWhole);
    if (shadowWanted && isWhole)
        vrk::visual::TakeGroundShadow();
    if ((shadeWanted || shadowWanted) && !isWhole)
        rest.start();
    else
        rest.stop();
}

void FrameShade::end()
{
    if (isWhole)
        wholeFrame = Clock::now() - begun.front();
}

void FrameShade::noteMove()
{
    moved = Clock::now();
}

void FrameShade::noteRest()
{
    moved = {};
    begun = {};
}

} // namespace vrkview
