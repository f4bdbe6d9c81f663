#pragma once

#include "platform/program/Program.h"

#include <optional>

/// What the readers make of the numbers and words of a program: rotations, places, targets and steps. Not installed.
namespace vrk::program {

// Rotations of the languages. Angles are degrees.

/// About z, then the new y, then the new x: Rz(a) * Ry(b) * Rx(c).
rob::Rotationd fromZyx(double aboutZ, double aboutY, double aboutX);
/// About x, then the new y, then the new z: Rx(a) * Ry(b) * Rz(c).
rob::Rotationd fromXyz(double aboutX, double aboutY, double aboutZ);
double toRadians(double degrees);

/// Whether the numbers are a place that the model takes: finite, not too far out, a rotation that has a length. The
/// rotation is given the length 1.
bool makePlace(rob::Posed& pose);

/// What a name or an argument of a move leads to: a target of the program, or why there is none.
struct Place {
    Placing placing = Placing::RunTime;
    int target = none; ///< an index into the program's targets; `none` unless placed
};

/// Adds a target to the program. @return where it stands.
Place enterTarget(Program& program, Target target);
/// Notes that the numbers of a target are no place. @return that place.
Place enterFault(Program& program, const std::string& name, unsigned line);
/// Whether a target of the program is told by the angles of the joints.
bool isPosture(const Program& program, int target);

/// Adds a step to the routine that was begun last. @return it; good until the next one is added.
Step& addStep(Program& program, std::string_view text, unsigned line);
/// Where a move goes, by way of `via` where it is circular. It is placed if both are.
void setPlace(Step& step, const Place& target, const std::optional<Place>& via);

} // namespace vrk::program
