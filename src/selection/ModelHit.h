#pragma once

#include "platform/common/Export.h"

#include <memory>

namespace sdf {
class SdfObject;
}
namespace vrk::layout {
class Body;
}

namespace vrk::selection {

struct Result;

/// What of the model a pick found. The objects live on while this does, also where they have left the station.
struct ModelHit {
    std::shared_ptr<sdf::SdfObject>
        object; ///< what was hit: a body, a cloud, a frame; null for what is not of the model
    std::shared_ptr<sdf::SdfObject>
        owner; ///< what that belongs to, as the part of a body; null where it stands by itself
    std::shared_ptr<const layout::Body> body; ///< the same as `object` where that is a body, else null
    unsigned face = 0;                        ///< of the body, from 1, as its face map counts them; 0 without one
};

/// Handles, previews and the like are nothing of the model; the paint and the edges of a body
/// stand for the body. Takes the model's lock shared for each look-up: call it without the lock. Render thread.
VRK_EXPORT ModelHit ModelOf(const Result& result);

} // namespace vrk::selection
