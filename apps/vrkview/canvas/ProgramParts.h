#pragma once

#include <span>

namespace vrkview {

/// What is drawn of robot programs, each by a switch of its own.
enum class ProgramPart { Targets, Arrows, Lines, ZAxesOnly };

struct ProgramPartName {
    ProgramPart part;
    const char* name; // in settings and recordings
};
std::span<const ProgramPartName> allProgramParts();

/// Targets, arrows and lines are drawn unless told otherwise, and the targets with all axes.
bool isDrawn(ProgramPart part);
/// Switches a part on or off; the scene is told of a real change only, since what is switched on twice is there twice.
/// Before the library has started it holds from the start. Render thread.
void draw(ProgramPart part, bool drawn);

} // namespace vrkview
