#include "scene/CoarseWhileMoving.h"

#include <algorithm>

namespace vrk::visual {
namespace {

using namespace std::chrono_literals;

constexpr auto slowFrame = 100ms;
constexpr auto cheapFrame = 25ms; // next time one step less may do
constexpr auto restAfter = 150ms; // longer than a hand stops between two strokes
constexpr auto catchUp = 40ms;    // in which the moves that came during a frame are heard of

Coarseness coarser(Coarseness level)
{
    return std::min(Coarseness::FewerBodies, static_cast<Coarseness>(static_cast<int>(level) + 1));
}

Coarseness finer(Coarseness level)
{
    return std::max(Coarseness::Whole, static_cast<Coarseness>(static_cast<int>(level) - 1));
}

} // namespace

void CoarseWhileMoving::noteMove(Clock::time_point now)
{
    moved = now;
}

CoarseWhileMoving::Clock::time_point CoarseWhileMoving::restsAt() const
{
    const Clock::time_point afterMove = *moved + restAfter;
    return inMovement ? std::max(afterMove, ended + catchUp) : afterMove;
}

bool CoarseWhileMoving::isMoving(Clock::time_point now) const
{
    return moved && now < restsAt();
}

Coarseness CoarseWhileMoving::begin(Clock::time_point now)
{
    begun = now;
    const bool wasMoving = inMovement;
    inMovement = isMoving(now);
    if (!inMovement)
        level = Coarseness::Whole;
    else if (!wasMoving)
        level = lastAtRest > slowFrame ? first : Coarseness::Whole;
    else if (lastFrame > slowFrame)
        level = coarser(level);
    return level;
}

void CoarseWhileMoving::end(Clock::time_point now)
{
    ended = now;
    lastFrame = now - begun;
    if (inMovement)
        first = lastFrame < cheapFrame ? finer(level) : level;
    else
        lastAtRest = lastFrame;
}

std::optional<CoarseWhileMoving::Clock::time_point> CoarseWhileMoving::getWholeDue() const
{
    return level == Coarseness::Whole ? std::nullopt : std::optional(restsAt());
}

} // namespace vrk::visual
