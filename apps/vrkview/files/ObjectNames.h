#pragma once

#include "visual/VisualType.h"

#include <string>

namespace vrk::visual {
class Visual;
}

namespace vrkview {

/// A word for the kind. Null for what is no thing of the station but belongs to one, such as the edges of a body, or to the
/// scene.
const char* typeName(vrk::VisualType type);
/// The same of a visual, with "band" for a manufacturing shape, which has no type of its own.
const char* kindOf(const vrk::visual::Visual& visual);
/// The model's name of a thing that it knows, the visual's otherwise. Takes no lock.
std::string nameOf(const vrk::visual::Visual& visual);

} // namespace vrkview
