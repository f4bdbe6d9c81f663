#pragma once

#include "task/PathParts.h"
#include "task/PathSegments.h"

#include <cstdint>
#include <vector>

namespace vrk::task {
class MoveInst;
}

/// What the visuals of paths and of moves share. Thread: render thread.
namespace vrk::visual {

class Visual;

/// The visual of a move's work object; the world where it has none.
/// @throws std::out_of_range "invalid unordered_map<K, T> key" for a work object without visual.
Visual* workObjectVisualOf(const task::MoveInst& move);
/// Whether the way between two moves is drawn: both go to robot targets of one work object.
bool isDrawnBetween(const task::MoveInst& previous, const task::MoveInst& move);
/// The way between two moves, in the frame of their work object.
PathSegment segmentBetween(const task::MoveInst& previous, const task::MoveInst& move);
/// A hash of all that is drawn between these moves, by which a change is known.
std::uint64_t hashOfWays(const std::vector<task::MoveInst*>& moves);
/// Gives a part that was just made the look of the whole.
void showLook(Visual& part, PartLook look);

} // namespace vrk::visual
