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
/// Of what it hangs on.
vrk::rob::Posed worldPoseOfBase(unsigned id);
/// What carries it by an attachment.
std::optional<unsigned> carrierOf(unsigned id);
/// Whether one hangs on the other or belongs to it, over any number of steps; a thing is below itself.
bool isBelow(unsigned id, unsigned top);
/// Whether things can hang on it: it is one that is seen, or a piece of one.
bool canCarry(unsigned id);
/// Those of them, each once, that neither hang on another of them nor belong to one.
std::vector<unsigned> topmostOf(const std::vector<unsigned>& ids);
/// Whether it stands by itself and has a place, so that it can be moved, attached and removed.
bool isThingOfItsOwn(unsigned id);
/// Whether it has a place that can be changed, and can be removed: a thing of its own, and what is in an assembly that is one.
bool isPlaced(unsigned id);
/// What is put elsewhere where this one is moved: what is placed and a work object themselves, of a move the target. 0
/// for what stays where it is, such as a posture, and a work object that its owner alone moves.
unsigned movedFor(unsigned id);
/// The bodies in these things, however deep: ascending, each once.
std::vector<unsigned> bodyIdsIn(const std::vector<unsigned>& things);
/// Whether it is a place that a robot's tool moves to.
bool isTarget(unsigned id);

} // namespace vrkview
