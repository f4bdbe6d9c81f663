#include "Programs.h"

#include "platform/sdf/SdfManager.h"

namespace vrkview::test {

using namespace vrk::task;

unsigned newId()
{
    return sdf::SdfManager::inst().generateId();
}

std::shared_ptr<MoveInst> moveTo(Task& task, const std::string& target)
{
    const auto item = std::make_shared<RobTargetDataItem>(newId(), target);
    task.addDataItem(item);
    auto move = std::make_shared<MoveInst>(newId(), "MoveL " + target, Motion::Linear, item);
    move->speed = "v100";
    move->zone = "z10";
    return move;
}

std::shared_ptr<Instruction> step(const std::string& text, const std::string& remark)
{
    auto made = std::make_shared<Instruction>(newId(), text);
    made->remark = remark;
    return made;
}

std::shared_ptr<Path> pathOf(Task& task, const std::string& name, int moves)
{
    auto path = std::make_shared<Path>(newId(), name);
    for (int i = 1; i <= moves; ++i)
        path->addInstruction(moveTo(task, "p" + std::to_string(i)));
    task.addPath(path);
    return path;
}

} // namespace vrkview::test
