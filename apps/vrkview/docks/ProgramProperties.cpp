#include "docks/ProgramProperties.h"

#include "docks/ProgramText.h"
#include "edit/ModelPlaces.h"

#include "platform/layout/Mechanism.h"
#include "platform/sdf/SdfManager.h"
#include "platform/task/Instruction.h"
#include "platform/task/Path.h"
#include "platform/task/Task.h"

#include <QObject>

#include <algorithm>
#include <numbers>
#include <shared_mutex>

namespace vrkview {
namespace {

using namespace vrk::task;
using vrk::VisualType;
using vrk::layout::Joint;
using vrk::layout::JointType;

constexpr double degrees = 180 / std::numbers::pi;

QString text(const std::string& words)
{
    return QString::fromStdString(words);
}

std::shared_ptr<sdf::SdfObject> share(unsigned id)
{
    const std::shared_lock lock(sdf::SdfManager::inst().mutex());
    return sdf::SdfManager::inst().share(id);
}

QString subtitle(const QString& kind, unsigned id)
{
    return QString("%1 · id %2").arg(kind).arg(id);
}

/// How many of what the paths hold.
void addContents(Properties& properties, std::span<const Path* const> paths)
{
    std::size_t instructions = 0, moves = 0, notPlaced = 0;
    for (const Path* path : paths) {
        instructions += path->getInstructions().size();
        moves += path->moveInstructionCount();
        notPlaced += static_cast<std::size_t>(
            std::ranges::count_if(path->getInstructions(), [](const auto& step) { return !step->remark.empty(); }));
    }
    properties.addCount(QObject::tr("Instructions"), instructions);
    properties.addCount(QObject::tr("Moves"), moves);
    properties.addCount(QObject::tr("Moves that are not drawn"), notPlaced);
}

void describeTask(Properties& properties, const Task& task)
{
    properties.kind = VisualType::Path;
    properties.subtitle = subtitle(QObject::tr("Program"), task.getId());
    properties.addHeading(QObject::tr("Contents"));
    properties.addCount(QObject::tr("Paths"), task.getOwnPaths().size());
    std::vector<const Path*> paths;
    for (const auto& path : task.getOwnPaths())
        paths.push_back(path.get());
    addContents(properties, paths);
    if (task.getManipulatorId() == 0)
        return;
    properties.addHeading(QObject::tr("Runs on"));
    properties.addValue(QObject::tr("Robot"), nameOfThing(task.getManipulatorId()));
}

void describePath(Properties& properties, const Path& path)
{
    properties.kind = VisualType::Path;
    properties.subtitle = subtitle(QObject::tr("Path"), path.getId());
    properties.addHeading(QObject::tr("Contents"));
    const std::array one = {&path};
    addContents(properties, one);
}

/// Where the step stands in the program.
void addPlaceInProgram(Properties& properties, const Instruction& step)
{
    properties.addHeading(QObject::tr("Program"));
    if (const Task* task = step.getTask())
        properties.addValue(QObject::tr("Program"), text(task->getName()));
    if (step.getPath())
        properties.addValue(QObject::tr("Path"), text(step.getPath()->getName()));
    if (step.line > 0)
        properties.addValue(QObject::tr("Line"), QString::number(step.line));
    properties.addValue(QObject::tr("Not drawn"), text(step.remark));
}

void addJoints(Properties& properties, const JointTargetDataItem& posture, const Task* task)
{
    const auto robot = std::dynamic_pointer_cast<vrk::layout::Mechanism>(share(task ? task->getManipulatorId() : 0));
    std::vector<Joint> moving;
    if (robot)
        std::ranges::copy_if(robot->getJoints(), std::back_inserter(moving), &Joint::isDriven);
    properties.addHeading(QObject::tr("Joints (mm, °)"));
    for (std::size_t i = 0; i < posture.jointValues.size(); ++i) {
        const bool isKnown = i < moving.size();
        const bool slides = isKnown && moving[i].type == JointType::Prismatic;
        properties.addValue(isKnown ? text(moving[i].name) : QString::number(i + 1),
                            fixedNumber(posture.jointValues[i] * (slides ? 1 : degrees), 3));
    }
}

/// In the work object that the program tells it in, and in the world.
void addPlaces(Properties& properties, const DataItem& item, const MoveInst& move, const QString& over)
{
    const vrk::rob::Posed inWorld = worldPoseOfThing(item.getOwnerId()) * item.getPose();
    properties.addPose(over + QObject::tr("In the world"), inWorld);
    if (const auto& wobj = move.getWObjItem())
        properties.addPose(over + QObject::tr("In %1").arg(text(wobj->getName())),
                           wobj->getObjectFrame()->getPose().inverse() * item.getPose());
}

void describeMove(Properties& properties, const MoveInst& move)
{
    properties.kind = VisualType::MoveInstruction;
    properties.title = text(move.getTargetItem()->getName());
    properties.subtitle = subtitle(QObject::tr("%1 move").arg(programStep(move)), move.getId());
    properties.addHeading(QObject::tr("Move"));
    properties.addValue(QObject::tr("Speed"), text(move.speed));
    properties.addValue(QObject::tr("Zone"), text(move.zone));
    if (move.getToolItem())
        properties.addValue(QObject::tr("Tool"), text(move.getToolItem()->getName()));
    if (move.getWObjItem())
        properties.addValue(QObject::tr("Work object"), text(move.getWObjItem()->getName()));
    addPlaces(properties, *move.getTargetItem(), move, {});
    if (const auto* posture = dynamic_cast<const JointTargetDataItem*>(move.getTargetItem().get()))
        addJoints(properties, *posture, move.getTask());
    if (const auto& via = move.getCircleItem())
        addPlaces(properties, *via, move, text(via->getName()) + QStringLiteral(": "));
}

} // namespace

Properties propertiesOfProgram(unsigned id)
{
    // Programs change on this thread alone: what is shared stays as it is without the lock.
    const std::shared_ptr<sdf::SdfObject> object = share(id);
    Properties properties;
    if (!object)
        return properties;
    properties.title = text(object->getName());
    if (const auto* task = dynamic_cast<const Task*>(object.get())) {
        describeTask(properties, *task);
    } else if (const auto* path = dynamic_cast<const Path*>(object.get())) {
        describePath(properties, *path);
    } else if (const auto* step = dynamic_cast<const Instruction*>(object.get())) {
        properties.subtitle = subtitle(QObject::tr("Instruction"), id);
        if (const auto* move = dynamic_cast<const MoveInst*>(step))
            describeMove(properties, *move);
        addPlaceInProgram(properties, *step);
    }
    return properties;
}

} // namespace vrkview
