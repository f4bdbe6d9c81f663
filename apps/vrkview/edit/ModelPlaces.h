#pragma once

#include "scene/math/Pose.h"

#include <QString>

#include <optional>
#include <vector>

namespace vrkview {

// What the changes ask the model. Each takes its lock shared; an unknown id has the identity pose and no name.

QString nameOfThing(unsigned id);
/// "Bracket" for one, "3 things" for several.
QString nameOfThings(const std::vector<unsigned>& ids);
/// Of the attachment that carries it or, without one, of its own: relative to what it hangs on.
vrk::rob::Posed poseOfThing(unsigned id);
vrk::rob::Posed worldPoseOfThing(unsigned id);
/// What carries it by an attachment.
std::optional<unsigned> carrierOf(unsigned id);
/// Whether one hangs on the other or belongs to it, over any number of steps; a thing is below itself.
bool isBelow(unsigned id, unsigned top);
/// Whether things can hang on it: it is one that is seen, or a piece of one.
bool canCarry(unsigned id);
/// Whether it stands by itself and has a place, so that it can be moved, attached and removed.
bool isThingOfItsOwn(unsigned id);

} // namespace vrkview
