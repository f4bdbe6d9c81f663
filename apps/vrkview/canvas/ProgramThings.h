#pragma once

#include "selection/geometry/Box.h"

#include <vector>

namespace vrkview {

// What is selected of programs: tasks, paths and instructions, which are no things of the station's tree. Each takes the
// model's lock shared. Render thread.

/// Whether it is a program, a path or an instruction of the model.
bool isOfProgram(unsigned id);
/// The visuals that look selected for these ids, in their order: those of a program are its paths. What draws nothing, as a
/// condition, has none.
std::vector<unsigned> visualsOf(const std::vector<unsigned>& ids);

/// The box in the world around the targets of a program, a path or a move; not valid where it has none.
vrk::visual::Box boxOfTargets(unsigned id);

} // namespace vrkview
