#pragma once

#include "platform/task/Instruction.h"
#include "platform/task/Path.h"
#include "platform/task/Task.h"

#include <memory>
#include <string>

namespace vrkview::test {

/// An id of the model's.
unsigned newId();
/// A linear move to a target of that name in the task, with speed "v100" and zone "z10".
std::shared_ptr<vrk::task::MoveInst> moveTo(vrk::task::Task& task, const std::string& target);
/// A step that draws nothing.
std::shared_ptr<vrk::task::Instruction> step(const std::string& text, const std::string& remark = {});
/// A path with moves to the targets "p1", "p2", ...
std::shared_ptr<vrk::task::Path> pathOf(vrk::task::Task& task, const std::string& name, int moves);

} // namespace vrkview::test
