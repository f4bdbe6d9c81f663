#pragma once

#include "docks/Properties.h"

namespace vrkview {

/// What is told of a program, a path or an instruction. Of a move: how it goes, and where its target and its via point are
/// in the work object, which is the object frame, and in the world; of a posture the joints. Empty for another id.
/// Application thread; takes the model's lock shared.
Properties propertiesOfProgram(unsigned id);

} // namespace vrkview
