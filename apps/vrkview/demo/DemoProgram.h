#pragma once

#include <memory>

namespace vrk::layout {
class Manipulator;
}
namespace vrk::task {
class Task;
}

namespace vrkview::demo {

/// What the arm's program is written in: the torch's tip, the fixture, and where the arm stands ready.
std::shared_ptr<vrk::task::Task> makeTask(const vrk::layout::Manipulator& arm, unsigned torch, unsigned fixture);
/// The program itself, as paths of that task: the torch goes along the seam of the workpiece, which lies in the fixture's
/// middle, and is cleaned.
void addProgram(vrk::task::Task& task);

} // namespace vrkview::demo
