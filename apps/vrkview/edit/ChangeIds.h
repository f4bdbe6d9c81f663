#pragma once

namespace vrkview {

/// The kinds of changes that merge with one before them, as `QUndoCommand::id` tells them apart.
enum class MergingChange { MoveThings = 1, MoveJoints = 2, SprayStroke = 3 };

} // namespace vrkview
