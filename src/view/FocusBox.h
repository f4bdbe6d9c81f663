#pragma once

#include "scene/math/Vec.h"
#include "selection/geometry/Box.h"

#include <optional>

namespace vrk::visual {

class Visual;

/// Where in the world a move of a program goes to; empty for a visual of another class. The floor of the views does not
/// know moves: one source above it does. Thread: render thread.
std::optional<rob::PosTemplate<float>> targetOfMove(const Visual& visual);
/// The box around what is shown, moves among it, so that it stands above likewise.
Box BoxOfShown();

} // namespace vrk::visual
