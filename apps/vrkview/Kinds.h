#pragma once

#include "visual/VisualType.h"

namespace vrkview {

/// What a thing of the station is called by its kind, in small letters. Null for what is no thing of the station but
/// belongs to one, such as the edges of a body, or to the scene.
const char* kindName(vrk::VisualType type);

} // namespace vrkview
