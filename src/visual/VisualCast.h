#pragma once

#include "visual/Visual.h"

namespace vrk::visual {

/// The visual as the class that stands for that kind; null for null, for another kind, and for one that only says that it
/// is of that kind: anyone may set the type of any visual.
template <typename Kind>
Kind* visualCast(Visual* visual, VisualType type)
{
    return visual != nullptr && visual->getType() == type ? dynamic_cast<Kind*>(visual) : nullptr;
}

} // namespace vrk::visual
