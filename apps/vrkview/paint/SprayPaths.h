#pragma once

#include "platform/process/SprayGun.h"

#include <vector>

namespace vrkview {

/// Ways of a gun one after the other, with nothing sprayed between them. In the world.
using SprayWays = std::vector<std::vector<vrk::process::SprayPlace>>;

// Each takes the model's lock shared.

/// Whether a gun can be led along it: a path of a program, or a band.
bool isSprayPath(unsigned id);
/// The body that a band lies on; 0 for anything else.
unsigned bodyOfSprayPath(unsigned id);
/// Along a path the gun sprays on linear and circular moves, along the z axis of their targets; from one of these to the next
/// its axis turns evenly. A joint move, a posture and a target that is not known end a way. Along a band it sprays from its
/// start to its end against its vectors.
/// @param distance  of the nozzle from the way, back along the axis; model units.
SprayWays sprayWaysOf(unsigned id, double distance);

} // namespace vrkview
