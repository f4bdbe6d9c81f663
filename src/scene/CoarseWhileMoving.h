#pragma once

#include "platform/common/Export.h"

#include <chrono>
#include <optional>

namespace vrk::visual {

/// What a window's picture is drawn without for a moment. Each goes without what those ahead of it go without, too.
enum class Coarseness {
    Whole,
    NoEdges,      ///< no edges of bodies whose faces are seen
    FewerSamples, ///< one sample for each pixel
    FewerBodies,  ///< of the bodies of a few pixels one in four
};

/// Chooses how coarse the frames of a camera that moves are drawn, so that the view keeps up with the hand: one step coarser
/// after each frame of a movement that took over 100 ms, no finer until the camera rests, and whole then. A movement begins as
/// coarse as the one before had to be, where whole frames still take that long.
///
/// It draws nothing: what `begin` answers is for `SetCoarseness`. Times are the caller's, each no earlier than the one before.
/// Owner: whoever draws the frames. Thread: one at a time.
class VRK_EXPORT CoarseWhileMoving {
public:
    using Clock = std::chrono::steady_clock;

    void noteMove(Clock::time_point now);

    // Around each frame, whatever asked for it.
    Coarseness begin(Clock::time_point now);
    void end(Clock::time_point now);

    /// When a whole frame is due if the camera does not move any more: 150 ms after its last move, or as soon as what came in
    /// during a longer frame had its turn. None where the last frame was whole. Draw one then, even if nothing has changed.
    std::optional<Clock::time_point> getWholeDue() const;

private:
    bool isMoving(Clock::time_point now) const;
    Clock::time_point restsAt() const;

    std::optional<Clock::time_point> moved; // last
    bool inMovement = false;                // the last frame
    Coarseness level = Coarseness::Whole;   // likewise
    Coarseness first = Coarseness::Whole;   // of the next movement
    Clock::time_point begun;                // the last frame
    Clock::time_point ended;
    Clock::duration lastFrame{};
    Clock::duration lastAtRest{};
};

} // namespace vrk::visual
