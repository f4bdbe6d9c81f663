#pragma once

#include "edit/Change.h"

#include "scene/math/Pose.h"

#include <memory>
#include <optional>

namespace vrkview {

/// What a frame that was defined by picks becomes.
enum class FrameUse {
    Frame,      ///< of the station
    UserFrame,  ///< of the work object that is selected
    WorkObject, ///< a new one of the first program
};

/// A step that makes such a frame.
struct DefinedFrame {
    std::unique_ptr<Change> change;
    unsigned thing = 0; ///< that has the frame, once the change is made
};

/// What moves a body, and so is what a frame on it hangs on: the link of a mechanism, or the thing that it belongs to. 0 for
/// what belongs to nothing. Takes the model's lock shared.
unsigned frameCarrierOf(unsigned body);

/// Whether a frame can become this, as far as the station is concerned. Takes the model's lock shared.
/// @param selected  the work object whose user frame it is to be; 0 for none.
/// @throws std::invalid_argument "select one work object that has a user frame of its own",
///         "the station has no program that could have a work object".
void checkFrameUse(FrameUse use, unsigned selected);

/// @param world    of the frame.
/// @param carrier  that a frame or a work object hangs on; 0 for the world.
/// @throws as `checkFrameUse`
DefinedFrame defineFrame(FrameUse use, const vrk::rob::Posed& world, unsigned carrier, unsigned selected);

} // namespace vrkview
