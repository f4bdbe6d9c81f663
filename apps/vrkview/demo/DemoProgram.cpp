#include "demo/DemoProgram.h"

#include "demo/DemoArm.h"
#include "demo/DemoParts.h"

#include "platform/layout/Mechanism.h"
#include "platform/station/ImportProgram.h"
#include "platform/task/Instruction.h"
#include "platform/task/Path.h"
#include "platform/task/Task.h"

#include <array>
#include <cmath>
#include <numbers>

namespace vrkview::demo {
namespace {

using namespace vrk::task;
using vrk::rob::Dird;
using vrk::rob::Posd;
using vrk::rob::Posed;
using vrk::rob::Rotationd;

// The corner of the plate that the fixture's work object lies at, seen from the workpiece.
constexpr double cornerX = -192.5, cornerY = -122.5;

// The seam, seen from the workpiece: along the foot, around its corner and back along the end.
constexpr double side = -90, end = 120, corner = 36, height = 3;

// Where the arm stands while nothing is welded, degrees.
constexpr std::array home = {-35.0, -5.0, 20.0, 0.0, 60.0, 0.0};

/// A place of the torch: its wire, the tool's z axis, points down and against the outside of the foot, its x axis along
/// the way.
/// @param outside  degrees from the workpiece's x axis.
Posed torchAt(const Posd& place, double outside, double tilt = 45)
{
    const double turn = radians(outside), down = radians(tilt);
    const Dird z(-std::cos(turn) * std::cos(down), -std::sin(turn) * std::cos(down), -std::sin(down));
    const Dird x(-std::sin(turn), std::cos(turn), 0);
    const Posd onCorner(place.x - cornerX, place.y - cornerY, place.z);
    return {onCorner, Rotationd::FromAxes(x, Dird(z.cross(x)), z)};
}

/// Writes the paths of the task.
class Writer {
public:
    explicit Writer(Task& task) : task(task)
    {
        for (const auto& item : task.getDataItems()) {
            if (!tool)
                tool = std::dynamic_pointer_cast<ToolDataItem>(item);
            if (!wobj)
                wobj = std::dynamic_pointer_cast<WObjDataItem>(item);
        }
    }

    void begin(const std::string& name) { path = std::make_shared<Path>(newId(), name); }
    void finish() { task.addPath(std::move(path)); }

    std::shared_ptr<DataItem> target(const std::string& name, const Posed& pose)
    {
        auto item = std::make_shared<RobTargetDataItem>(newId(), name);
        item->setOwnerId(wobj->getId());
        item->setPose(pose);
        task.addDataItem(item);
        return item;
    }

    void other(const std::string& text, const std::string& remark = {})
    {
        auto step = std::make_shared<Instruction>(newId(), text);
        step->remark = remark;
        path->addInstruction(std::move(step));
    }

    void move(Motion motion, const std::shared_ptr<DataItem>& to, const char* speed, const char* zone,
              const std::shared_ptr<DataItem>& via = nullptr)
    {
        const MoveLine line = motion == Motion::Joint ? MoveLine::Dashed : MoveLine::Solid;
        auto made = std::make_shared<MoveInst>(newId(), textOf(motion, *to, speed, zone, via.get()), motion, to, line);
        made->speed = speed;
        made->zone = zone;
        made->setToolItem(tool);
        if (made->isRobTargetInst())
            made->setWObjItem(wobj);
        if (via)
            made->setCircleItem(via);
        path->addInstruction(std::move(made));
    }

private:
    std::string textOf(Motion motion, const DataItem& to, const char* speed, const char* zone,
                       const DataItem* via) const
    {
        const bool isPosture = to.asType(sdf::ModelType::JointTargetData);
        std::string text = isPosture                    ? "MoveAbsJ "
                           : motion == Motion::Joint    ? "MoveJ "
                           : motion == Motion::Circular ? "MoveC "
                                                        : "MoveL ";
        if (via)
            text += via->getName() + ", ";
        text += to.getName() + ", " + speed + ", " + zone + ", " + tool->getName();
        return isPosture ? text : text + " \\WObj:=" + wobj->getName();
    }

    Task& task;
    std::shared_ptr<ToolDataItem> tool;
    std::shared_ptr<WObjDataItem> wobj;
    std::shared_ptr<Path> path;
};

void writeWelding(Writer& writer, const std::shared_ptr<DataItem>& ready)
{
    constexpr double along = -90, across = 0, middle = corner * (1 - std::numbers::sqrt2 / 2);
    const auto above = writer.target("above", torchAt({-210, -330, 430}, along, 60));
    const auto approach = writer.target("approach", torchAt({-150, -190, 140}, along));
    const auto start = writer.target("seam1", torchAt({-90, side, height}, along));
    const auto bend = writer.target("seam2", torchAt({end - corner, side, height}, along));
    const auto round = writer.target("seam3", torchAt({end - middle, side + middle, height}, (along + across) / 2));
    const auto back = writer.target("seam4", torchAt({end, side + corner, height}, across));
    const auto stop = writer.target("seam5", torchAt({end, 40, height}, across));
    const auto depart = writer.target("depart", torchAt({230, 30, 140}, across));
    const auto leave = writer.target("leave", torchAt({370, -60, 430}, across, 60));

    writer.begin("weldBracket");
    writer.move(Motion::Joint, ready, "v1000", "z50");
    writer.move(Motion::Joint, above, "v1000", "z50");
    writer.move(Motion::Joint, approach, "v500", "z10");
    writer.move(Motion::Linear, start, "v100", "fine");
    writer.other("SetDO doArc, 1");
    writer.move(Motion::Linear, bend, "v10", "z1");
    writer.move(Motion::Circular, back, "v10", "z1", round);
    writer.move(Motion::Linear, stop, "v10", "fine");
    writer.other("SetDO doArc, 0");
    writer.move(Motion::Linear, depart, "v200", "z10");
    writer.move(Motion::Joint, leave, "v1000", "z50");
    writer.move(Motion::Joint, ready, "v1000", "fine");
    writer.other("cleanTorch");
    writer.finish();
}

/// Where the wire ends is known only when the robot has felt it.
void writeCleaning(Writer& writer)
{
    writer.begin("cleanTorch");
    writer.other("SetDO doCutter, 1");
    writer.other("MoveL Offs(cutter, 0, 0, wireLength), v200, fine, torch", "not known before it runs");
    writer.other("WaitTime 0.5");
    writer.other("SetDO doCutter, 0");
    writer.finish();
}

} // namespace

std::shared_ptr<Task> makeTask(const vrk::layout::Manipulator& arm, unsigned torch, unsigned fixture)
{
    auto task = std::make_shared<Task>(newId(), "Welding");
    task->setOwnerId(arm.getId());
    task->setManipulatorId(arm.getId());
    auto tip = std::make_shared<ToolDataItem>(newId(), "torch");
    tip->setOwnerId(torch);
    tip->setPose(torchTip());
    task->addDataItem(tip);
    auto plate = std::make_shared<WObjDataItem>(newId(), "fixture");
    plate->setOwnerId(fixture);
    plate->setPose(at(cornerX, cornerY, 0));
    task->addDataItem(plate);
    auto ready = std::make_shared<JointTargetDataItem>(newId(), "ready");
    for (const double value : home)
        ready->jointValues.push_back(radians(value));
    ready->setOwnerId(arm.getId());
    ready->setPose(vrk::station::WristPoseAt(arm, ready->jointValues));
    task->addDataItem(ready);
    return task;
}

void addProgram(Task& task)
{
    Writer writer(task);
    const std::shared_ptr<DataItem> ready = task.getDataItems().back(); // the list grows
    writeWelding(writer, ready);
    writeCleaning(writer);
}

} // namespace vrkview::demo
