#pragma once

#include "platform/layout/Layout.h"
#include "platform/sdf/SdfManager.h"
#include "platform/task/DataItem.h"
#include "platform/task/Instruction.h"
#include "platform/task/Path.h"
#include "platform/task/Task.h"

#include <memory>
#include <string>

namespace vrk::test {

inline rob::Posed at(double x, double y, double z)
{
    return rob::Posed(rob::Posd(x, y, z));
}

/// A program in the station, which grows: what it is given stands in the object table at once. Its visuals are not touched.
class TestProgram {
public:
    using Item = std::shared_ptr<task::DataItem>;
    using WObj = std::shared_ptr<task::WObjDataItem>;

    /// A task with one path and one work object at the world's origin.
    TestProgram() : task(std::make_shared<task::Task>(newId(), "program")), path(addPath()), frame(addFrame({}))
    {
        layout::Layout::inst().addTask(task);
    }

    static unsigned newId() { return sdf::SdfManager::inst().generateId(); }

    std::shared_ptr<task::Path> addPath()
    {
        auto added = std::make_shared<task::Path>(newId(), "main");
        task->addPath(added);
        return entered(added);
    }
    WObj addFrame(const rob::Posed& pose, unsigned owner = 0)
    {
        auto added = std::make_shared<task::WObjDataItem>(newId(), "wobj");
        added->setPose(pose);
        added->setOwnerId(owner);
        task->addDataItem(added);
        entered(added->getObjectFrame());
        return entered(added);
    }
    Item addTarget(const rob::Posed& pose)
    {
        auto added = std::make_shared<task::RobTargetDataItem>(newId(), "p");
        added->setPose(pose);
        task->addDataItem(added);
        return entered(added);
    }
    Item addPosture(const rob::Posed& pose)
    {
        auto added = std::make_shared<task::JointTargetDataItem>(newId(), "home");
        added->setPose(pose);
        task->addDataItem(added);
        return entered(added);
    }

    // Moves at the end of the path, in the first work object
    task::MoveInst* linear(const rob::Posd& to) { return add(task::Motion::Linear, addTarget(rob::Posed(to))); }
    task::MoveInst* dashed(const rob::Posd& to)
    {
        return add(task::Motion::Joint, addTarget(rob::Posed(to)), task::MoveLine::Dashed);
    }
    task::MoveInst* circular(const rob::Posd& via, const rob::Posd& to)
    {
        const Item circle = addTarget(rob::Posed(via));
        task::MoveInst* move = add(task::Motion::Circular, addTarget(rob::Posed(to)));
        move->setCircleItem(circle);
        return move;
    }
    task::MoveInst* posture(const rob::Posd& place) { return add(task::Motion::Joint, addPosture(rob::Posed(place))); }
    task::MoveInst* linearIn(const WObj& wobj, const rob::Posd& to)
    {
        task::MoveInst* move = linear(to);
        move->setWObjItem(wobj);
        return move;
    }
    task::MoveInst* add(task::Motion motion, const Item& target, task::MoveLine line = task::MoveLine::Solid)
    {
        auto move = std::make_shared<task::MoveInst>(newId(), "move", motion, target, line);
        move->setWObjItem(frame);
        path->addInstruction(move);
        return entered(move).get();
    }
    task::Instruction* call()
    {
        auto step = std::make_shared<task::Instruction>(newId(), "call");
        path->addInstruction(step);
        return entered(step).get();
    }

    template <typename Object>
    static std::shared_ptr<Object> entered(std::shared_ptr<Object> object)
    {
        sdf::SdfManager::inst().add(object);
        return object;
    }

    std::shared_ptr<task::Task> task;
    std::shared_ptr<task::Path> path; ///< what moves are appended to
    WObj frame;                       ///< of the moves to come
};

inline task::DataItem& targetOf(const task::MoveInst* move)
{
    return *move->getTargetItem();
}

} // namespace vrk::test
