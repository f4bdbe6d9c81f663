#pragma once

#include "scene/math/Color.h"

#include <optional>
#include <string_view>

namespace vrkview {

/// What lies behind the scene: one colour at the upper edge of the picture and one at the lower edge.
struct Backdrop {
    vrk::rob::Colorf top;
    vrk::rob::Colorf bottom;
};

/// A quiet one, of a hue that few bodies have, on which bright and dark bodies stand out.
Backdrop usualBackdrop();
/// A colour, "#RRGGBB", or two joined by a comma, the upper one first. Nothing for any other text.
std::optional<Backdrop> readBackdrop(std::string_view text);
/// With the next frame. Without one it is the plain grey of the library.
void showBackdrop(const std::optional<Backdrop>& backdrop);

} // namespace vrkview
