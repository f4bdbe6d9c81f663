#pragma once

#include "scene/math/Vec.h"
#include "selection/geometry/Box.h"

#include <optional>

namespace Ogre {
class AxisAlignedBox;
class SceneNode;
} // namespace Ogre

namespace vrk::visual {

class Visual;

/// Where in the world a move of a program goes to; empty for a visual of another class. The floor of the views does not
/// know moves: one source above it does. Thread: render thread.
std::optional<rob::PosTemplate<float>> targetOfMove(const Visual& visual);
/// The box around what is shown, moves among it, so that it stands above likewise.
Box BoxOfShown();
/// The boxes of nodes are those of the last frame; this makes them those of now.
void updateBoxes();
/// The box of a node and all that hangs below, without what OGRE is told to draw always: its box has no end.
Ogre::AxisAlignedBox finiteBoxOf(const Ogre::SceneNode& node);

} // namespace vrk::visual
