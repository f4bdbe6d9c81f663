#include "platform/layout/Frame.h"
#include "platform/layout/Layout.h"
#include "platform/layout/Mechanism.h"
#include "platform/sdf/SdfManager.h"
#include "platform/station/ImportProgram.h"
#include "platform/task/Path.h"
#include "platform/task/Task.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <shared_mutex>
#include <unordered_map>
#include <unordered_set>

namespace vrk::station {
namespace {

using program::none;
using program::Placing;
using program::Program;
using program::Step;

constexpr double sameDirection = 1e-4; // squared sine; what the view draws straight

unsigned newId()
{
    return sdf::SdfManager::inst().generateId();
}

/// The pose of an object in the world, by its parents and by what carries it. Takes the lock, shared.
rob::Posed worldPose(const sdf::SdfObject& object)
{
    sdf::SdfManager& model = sdf::SdfManager::inst();
    const std::shared_lock lock(model.mutex());
    const auto& attachments = layout::Layout::inst().attachments;
    rob::Posed pose;
    const sdf::SdfObject* at = &object;
    for (std::size_t steps = 0; at && steps <= model.size(); ++steps) {
        const auto carried = std::ranges::find(attachments, at->getId(), &layout::Attachment::child);
        const bool isCarried = carried != attachments.end();
        pose = (isCarried ? carried->pose : at->getPose()) * pose;
        at = model.find(isCarried ? carried->parent : at->getParentId());
    }
    return pose;
}

/// Whether three points lie on a line, as the view sees it: then a circular move is drawn straight.
bool areOnALine(const rob::Posd& a, const rob::Posd& b, const rob::Posd& c)
{
    const rob::Vec3d u = b - a, v = c - a, w = c - b;
    const auto isZero = [](const rob::Vec3d& d) { return d.length() <= rob::zeroLength; };
    if (isZero(u) || isZero(v) || isZero(w))
        return true;
    const auto sine = [](const rob::Vec3d& p, const rob::Vec3d& q) {
        return rob::normalized(p).cross(rob::normalized(q)).squaredLength();
    };
    return sine(u, v) < sameDirection || sine(u, w) < sameDirection;
}

/// Makes one task of one program.
class TaskMaker {
public:
    TaskMaker(const Program& program, const layout::Manipulator* robot, ProgramSummary& summary)
        : program(program), robot(robot), summary(summary),
          task(std::make_shared<task::Task>(newId(), program.name.empty() ? "program" : program.name))
    {
        if (robot)
            ownFrame = worldPose(*robot).inverse() * robot->getControllerTaskFrame()->getPose();
    }

    std::shared_ptr<task::Task> make()
    {
        summary = {};
        summary.notes = program.notes;
        summary.targets = program.targets.size();
        summary.targetsWithout = program.declaredWithoutPlace;
        if (robot) {
            task->setOwnerId(robot->getId());
            task->setManipulatorId(robot->getId());
        }
        // What the program tells is in the model, whether a move uses it or not; the robot's own frame where one does.
        for (std::size_t i = 1; i < program.workObjects.size(); ++i)
            workObject(static_cast<int>(i));
        for (std::size_t i = 1; i < program.tools.size(); ++i)
            tool(static_cast<int>(i));
        for (const program::Routine& routine : program.routines)
            addPath(routine);
        for (std::size_t i = 0; i < program.targets.size(); ++i)
            addUnused(static_cast<int>(i));
        std::ranges::stable_sort(summary.notes, {}, &program::Note::line);
        return task;
    }

private:
    template <typename Item>
    std::shared_ptr<Item> added(std::shared_ptr<Item> item)
    {
        task->addDataItem(item);
        return item;
    }

    const std::shared_ptr<task::WObjDataItem>& workObject(int index)
    {
        std::shared_ptr<task::WObjDataItem>& item = workObjects[index];
        if (item)
            return item;
        const program::WorkObject& from = program.workObjects[static_cast<std::size_t>(index)];
        item = std::make_shared<task::WObjDataItem>(newId(), from.name);
        const bool isOnWrist = from.isHeld && robot;
        if (robot)
            item->setOwnerId(isOnWrist ? wristId() : robot->getId());
        item->setPose(isOnWrist ? from.user : ownFrame * from.user);
        item->getObjectFrame()->setPose(from.object);
        return added(item), item;
    }

    unsigned wristId() const { return robot->getWrist()->getId(); }

    /// Null where the tool has no place.
    std::shared_ptr<task::ToolDataItem> tool(int index)
    {
        if (index == none || !robot)
            return nullptr;
        const program::Tool& from = program.tools[static_cast<std::size_t>(index)];
        if (!from.isTold)
            return nullptr;
        std::shared_ptr<task::ToolDataItem>& item = tools[index];
        if (!item) {
            item = std::make_shared<task::ToolDataItem>(newId(), from.name);
            item->setOwnerId(from.isStill ? robot->getId() : wristId());
            item->setPose(from.isStill ? ownFrame * from.pose : from.pose);
            added(item);
        }
        return item;
    }

    /// A target in a work object; null for a posture that no robot takes.
    std::shared_ptr<task::DataItem> target(int index, int frame)
    {
        const program::Target& from = program.targets[static_cast<std::size_t>(index)];
        const bool isPosture = !from.joints.empty();
        std::shared_ptr<task::DataItem>& item = targets[{index, isPosture ? none : frame}];
        if (item)
            return item;
        if (isPosture) {
            if (!robot || robot->jointValueCount() != from.joints.size())
                return nullptr;
            auto posture = std::make_shared<task::JointTargetDataItem>(newId(), from.name);
            posture->jointValues = from.joints;
            posture->setOwnerId(robot->getId());
            posture->setPose(WristPoseAt(*robot, from.joints));
            item = posture;
        } else {
            item = std::make_shared<task::RobTargetDataItem>(newId(), from.name);
            item->setOwnerId(workObject(frame)->getId());
            const rob::Posed pose = workObject(frame)->getObjectFrame()->getPose() * from.pose;
            item->setPose({pose.position, pose.rotation().normalized()});
        }
        isUsed.insert(index);
        return added(item);
    }

    void addUnused(int index)
    {
        if (!isUsed.contains(index))
            target(index, 0);
    }

    void addPath(const program::Routine& routine)
    {
        auto path = std::make_shared<task::Path>(newId(), routine.name);
        ++summary.routines;
        for (const Step& step : routine.steps) {
            ++summary.instructions;
            std::shared_ptr<task::Instruction> instruction = step.isMove ? move(step, *path) : nullptr;
            if (!instruction)
                instruction = std::make_shared<task::Instruction>(newId(), step.text);
            if (step.isMove && !instruction->isMoveInst())
                instruction->remark = program::textOf(placingOf(step));
            instruction->line = step.line;
            path->addInstruction(std::move(instruction));
        }
        task->addPath(std::move(path));
    }

    Placing placingOf(const Step& step) const
    {
        return step.placing == Placing::Placed ? Placing::NoRobot : step.placing;
    }

    void count(Placing placing)
    {
        switch (placing) {
        case Placing::Placed:
            ++summary.placed;
            break;
        case Placing::RunTime:
            ++summary.runTime;
            break;
        case Placing::Missing:
            ++summary.missing;
            break;
        case Placing::Faulty:
            ++summary.faulty;
            break;
        case Placing::NoRobot:
            ++summary.noRobot;
            break;
        }
    }

    /// Null where the move has no place.
    std::shared_ptr<task::Instruction> move(const Step& step, const task::Path& path)
    {
        ++summary.moves;
        const std::shared_ptr<task::DataItem> to =
            step.placing == Placing::Placed ? target(step.target, step.workObject) : nullptr;
        count(to ? Placing::Placed : placingOf(step));
        if (!to)
            return nullptr;
        auto made = std::make_shared<task::MoveInst>(newId(), step.text, step.motion, to, step.drawn);
        made->speed = step.speed;
        made->zone = step.zone;
        made->setToolItem(tool(step.tool));
        if (made->isRobTargetInst())
            made->setWObjItem(workObject(step.workObject));
        if (step.motion == task::Motion::Circular) {
            const std::shared_ptr<task::DataItem> via = target(step.via, step.workObject);
            if (via && via->asType(sdf::ModelType::RobTargetData))
                made->setCircleItem(via);
            if (made->getCircleItem() && made->isRobTargetInst())
                checkCircle(*made, path, step.line);
        }
        return made;
    }

    void checkCircle(const task::MoveInst& move, const task::Path& path, unsigned line)
    {
        const auto& before = path.getMoveInstructions();
        if (before.empty() || !before.back()->isRobTargetInst() || before.back()->getWObjItem() != move.getWObjItem())
            return;
        if (areOnALine(before.back()->getTargetItem()->getPose().position, move.getCircleItem()->getPose().position,
                       move.getTargetItem()->getPose().position))
            summary.notes.push_back({line, "a circular move whose points lie on a line; it is drawn straight"});
    }

    const Program& program;
    const layout::Manipulator* robot;
    ProgramSummary& summary;
    std::shared_ptr<task::Task> task;
    rob::Posed ownFrame; // of the robot's controller, in the robot's coordinates
    std::unordered_map<int, std::shared_ptr<task::WObjDataItem>> workObjects;
    std::unordered_map<int, std::shared_ptr<task::ToolDataItem>> tools;
    std::map<std::pair<int, int>, std::shared_ptr<task::DataItem>> targets; // by index and work object
    std::unordered_set<int> isUsed;
};

} // namespace

rob::Posed WristPoseAt(const layout::Manipulator& robot, const std::vector<double>& values)
{
    std::unordered_map<unsigned, std::pair<unsigned, rob::Posed>> onParent; // of each link on a joint
    const std::vector<double> all = robot.valuesOfAllJoints(values);
    std::size_t next = 0;
    for (const layout::Joint& joint : robot.getJoints()) {
        const double value = all[next++];
        rob::Posed motion;
        if (joint.isMoving()) {
            motion = joint.type == layout::JointType::Prismatic
                         ? rob::Posed(rob::Posd(joint.axis.x * value, joint.axis.y * value, joint.axis.z * value))
                         : rob::Posed(rob::Posd(), rob::Rotationd(value, joint.axis));
        }
        onParent[joint.childLink] = {joint.parentLink, joint.origin * motion};
    }
    const layout::Wrist& wrist = *robot.getWrist();
    rob::Posed pose = wrist.getPose();
    unsigned link = wrist.getParentId();
    for (auto found = onParent.find(link); found != onParent.end(); found = onParent.find(link)) {
        pose = found->second.second * pose;
        link = found->second.first;
    }
    for (const auto& root : robot.getLinks())
        if (root->getId() == link)
            pose = root->getPose() * pose;
    return pose;
}

std::shared_ptr<task::Task> MakeTask(const Program& program, const layout::Manipulator* robot, ProgramSummary& summary)
{
    return TaskMaker(program, robot, summary).make();
}

} // namespace vrk::station
