#include "platform/station/file/TaskReader.h"

#include "platform/layout/Body.h"
#include "platform/task/EdgeMfgShape.h"
#include "platform/task/Instruction.h"
#include "platform/task/Path.h"
#include "platform/task/Task.h"

#include <TopExp.hxx>
#include <TopTools_IndexedMapOfShape.hxx>
#include <TopoDS.hxx>

#include <fmt/format.h>

#include <cmath>

namespace vrk::station {
namespace {

task::Motion motionAt(const JsonPlace& place)
{
    const std::string motion = place.asText();
    if (motion == "linear")
        return task::Motion::Linear;
    if (motion == "circular")
        return task::Motion::Circular;
    if (motion == "joint")
        return task::Motion::Joint;
    place.fail("\"linear\", \"circular\" or \"joint\"");
}

/// The item of a task that a move names.
template <typename Item, typename Items>
std::shared_ptr<Item> itemAt(const JsonPlace& place, const Items& items, const char* what)
{
    const unsigned id = place.asId();
    const auto found = items.find(id);
    std::shared_ptr<Item> item = found == items.end() ? nullptr : std::dynamic_pointer_cast<Item>(found->second);
    if (!item)
        place.fail(fmt::format("the id of a {} of the task, not {}", what, id));
    return item;
}

/// A place on the edges of a run.
task::EdgeMfgShape::PathPoint pathPointAt(const JsonPlace& place, std::size_t edges)
{
    const std::vector<double> numbers = place.asNumbers(2);
    if (numbers[0] != std::floor(numbers[0]) || numbers[0] < 0 || numbers[0] >= static_cast<double>(edges))
        place.fail("the index of an edge of the run, from 0, and a parameter");
    return {static_cast<int>(numbers[0]), numbers[1]};
}

} // namespace

std::shared_ptr<task::Task> TaskReader::readTask(const JsonPlace& at)
{
    if (withPrograms)
        at.expectObject({"id", "name", "owner", "manipulator", "data", "paths", "mfg_shapes"});
    else
        at.expectObject({"id", "name", "owner", "manipulator", "data"});
    auto task = std::make_shared<task::Task>(ids.read(at, sdf::ModelType::Task, false), nameAt(at));
    task->setOwnerId(ids.readOwner(at, "owner", task->getId()));
    if (at.has("manipulator")) {
        const JsonPlace place = at.at("manipulator");
        const unsigned id = place.asId();
        const StationIds::Known* const robot = ids.find(id);
        if (!robot || robot->type != sdf::ModelType::Manipulator)
            place.fail(fmt::format("the id of a manipulator, not {}", id));
        task->setManipulatorId(id);
    }
    Items items;
    at.forEach("data", [&](const JsonPlace& place) {
        std::shared_ptr<task::DataItem> item = readDataItem(place);
        items.emplace(item->getId(), item);
        task->addDataItem(std::move(item));
    });
    at.forEach("paths", [&](const JsonPlace& place) { task->addPath(readPath(place, task->getId(), items)); });
    at.forEach("mfg_shapes", [&](const JsonPlace& place) { task->addMfgShape(readMfgShape(place, task->getId())); });
    return task;
}

std::shared_ptr<task::DataItem> TaskReader::readDataItem(const JsonPlace& at)
{
    if (!at.get().is_object())
        at.fail("an object");
    const std::string type = at.at("type").asText();
    std::shared_ptr<task::DataItem> item;
    if (type == "tool") {
        at.expectObject({"type", "id", "name", "owner", "pose"});
        item = std::make_shared<task::ToolDataItem>(ids.read(at, sdf::ModelType::ToolData, true), nameAt(at));
        // The view has no place for one in the world.
        if (ids.readSeenOwner(at, "owner", item->getId()) == 0 || at.at("owner").get().is_string())
            at.fail("an owner that is seen");
    } else if (type == "work_object") {
        item = readWObj(at);
    } else if (type == "joint_target") {
        at.expectObject({"type", "id", "name", "owner", "pose", "values"});
        auto target = std::make_shared<task::JointTargetDataItem>(ids.read(at, sdf::ModelType::JointTargetData, false),
                                                                  nameAt(at));
        target->jointValues = at.at("values").asNumbers();
        item = std::move(target);
    } else if (type == "robot_target" && withPrograms) {
        item = readRobTarget(at);
    } else {
        at.at("type").fail(withPrograms ? "\"tool\", \"work_object\", \"joint_target\" or \"robot_target\""
                                        : "\"tool\", \"work_object\" or \"joint_target\"");
    }
    item->setOwnerId(ids.readOwner(at, "owner", item->getId()));
    item->setPose(at.at("pose").asPose());
    return item;
}

std::shared_ptr<task::DataItem> TaskReader::readWObj(const JsonPlace& at)
{
    at.expectObject({"type", "id", "name", "owner", "pose", "fixed", "object_frame"});
    const JsonPlace frame = at.at("object_frame");
    frame.expectObject({"id", "name", "pose"});
    const unsigned id = ids.read(at, sdf::ModelType::WObjData, true);
    auto wobj =
        std::make_shared<task::WObjDataItem>(id, nameAt(at), ids.read(frame, sdf::ModelType::ObjectFrame, true, id));
    wobj->setFixedUFrame(at.at("fixed").asBool());
    wobj->getObjectFrame()->setName(nameAt(frame));
    wobj->getObjectFrame()->setPose(frame.at("pose").asPose());
    return wobj;
}

std::shared_ptr<task::DataItem> TaskReader::readRobTarget(const JsonPlace& at)
{
    at.expectObject({"type", "id", "name", "owner", "pose"});
    auto target =
        std::make_shared<task::RobTargetDataItem>(ids.read(at, sdf::ModelType::RobTargetData, true), nameAt(at));
    if (at.has("owner") && !at.at("owner").get().is_string()) {
        const unsigned owner = at.at("owner").asId();
        const StationIds::Known* const known = ids.find(owner);
        if (!known || known->type != sdf::ModelType::WObjData)
            at.at("owner").fail(fmt::format("the id of a work object that stands before, not {}", owner));
    }
    return target;
}

std::shared_ptr<task::Path> TaskReader::readPath(const JsonPlace& at, unsigned task, const Items& items)
{
    at.expectObject({"id", "name", "instructions"});
    auto path = std::make_shared<task::Path>(ids.read(at, sdf::ModelType::Path, true, task), nameAt(at));
    at.forEach("instructions",
               [&](const JsonPlace& place) { path->addInstruction(readInstruction(place, path->getId(), items)); });
    return path;
}

std::shared_ptr<task::Instruction> TaskReader::readInstruction(const JsonPlace& at, unsigned path, const Items& items)
{
    if (!at.get().is_object())
        at.fail("an object");
    std::shared_ptr<task::Instruction> instruction;
    if (at.has("motion")) {
        instruction = readMove(at, path, items);
    } else {
        at.expectObject({"id", "name", "remark", "line"});
        instruction =
            std::make_shared<task::Instruction>(ids.read(at, sdf::ModelType::PlainInst, false, path), nameAt(at));
        if (at.has("remark"))
            instruction->remark = at.at("remark").asText();
    }
    if (at.has("line"))
        instruction->line = at.at("line").asCount(1);
    return instruction;
}

std::shared_ptr<task::Instruction> TaskReader::readMove(const JsonPlace& at, unsigned path, const Items& items)
{
    at.expectObject(
        {"id", "name", "motion", "dashed", "target", "via", "work_object", "tool", "speed", "zone", "line"});
    const task::Motion motion = motionAt(at.at("motion"));
    const bool isDashed = at.has("dashed") && at.at("dashed").asBool();
    if (isDashed && motion == task::Motion::Circular)
        at.at("dashed").fail("a circular move to be solid");
    auto target = itemAt<task::DataItem>(at.at("target"), items, "target");
    const bool isRobTarget = target->asType(sdf::ModelType::RobTargetData);
    if (!isRobTarget && !target->asType(sdf::ModelType::JointTargetData))
        at.at("target").fail(fmt::format("the id of a target of the task, not {}", target->getId()));
    auto move =
        std::make_shared<task::MoveInst>(ids.read(at, sdf::ModelType::MoveInst, true, path), nameAt(at), motion,
                                         std::move(target), isDashed ? task::MoveLine::Dashed : task::MoveLine::Solid);
    if (at.has("via")) {
        if (motion != task::Motion::Circular)
            at.at("via").fail("no via point of a move that is not circular");
        move->setCircleItem(itemAt<task::RobTargetDataItem>(at.at("via"), items, "robot target"));
    }
    if (at.has("work_object"))
        move->setWObjItem(itemAt<task::WObjDataItem>(at.at("work_object"), items, "work object"));
    else if (isRobTarget) // the view hangs it on the work object's visual
        at.fail("the key 'work_object'");
    if (at.has("tool"))
        move->setToolItem(itemAt<task::ToolDataItem>(at.at("tool"), items, "tool"));
    if (at.has("speed"))
        move->speed = at.at("speed").asText();
    if (at.has("zone"))
        move->zone = at.at("zone").asText();
    return move;
}

std::shared_ptr<task::EdgeMfgShape> TaskReader::readMfgShape(const JsonPlace& at, unsigned task)
{
    at.expectObject({"id", "name", "closed", "chord", "edges", "start", "end"});
    auto shape = std::make_shared<task::EdgeMfgShape>(ids.read(at, sdf::ModelType::MfgShape, true, task), nameAt(at));
    shape->closed = at.has("closed") && at.at("closed").asBool();
    if (at.has("chord")) {
        shape->chordTolerance = at.at("chord").asNumber();
        if (shape->chordTolerance <= 0)
            at.at("chord").fail("a length above 0");
    }
    at.forEach("edges", [&](const JsonPlace& place) {
        geometry::MfgVectors vectors = readMfgVectors(place);
        if (parts.hasShapes())
            shape->addEdge(std::move(vectors));
    });
    const std::size_t edges = at.has("edges") ? at.at("edges").get().size() : 0;
    if (edges == 0)
        at.fail("edges");
    const task::EdgeMfgShape::PathPoint start = pathPointAt(at.at("start"), edges);
    const task::EdgeMfgShape::PathPoint end = pathPointAt(at.at("end"), edges);
    if (parts.hasShapes()) {
        shape->setStart(start);
        shape->setEnd(end);
    }
    return shape;
}

geometry::MfgVectors TaskReader::readMfgVectors(const JsonPlace& at) const
{
    at.expectObject({"body", "edge", "reversed", "vectors"});
    geometry::MfgVectors vectors;
    vectors.body = at.at("body").asId();
    vectors.edgeNumber = at.at("edge").asCount(1);
    const bool isReversed = at.has("reversed") && at.at("reversed").asBool();
    at.forEach("vectors", [&](const JsonPlace& place) {
        const std::vector<double> n = place.asNumbers(4);
        vectors.vectors.push_back({n[0], rob::Dird(n[1], n[2], n[3])});
        if (!(rob::Dird(n[1], n[2], n[3]).length() > rob::zeroLength))
            place.fail("a parameter and a direction");
    });
    if (vectors.vectors.empty())
        at.fail("vectors");
    const layout::Body* const body = parts.findBody(vectors.body);
    if (!body)
        at.at("body").fail(fmt::format("the id of a body, not {}", vectors.body));
    if (parts.hasShapes()) {
        TopTools_IndexedMapOfShape known;
        TopExp::MapShapes(body->getShape(), TopAbs_EDGE, known);
        if (vectors.edgeNumber > static_cast<unsigned>(known.Extent()))
            at.at("edge").fail(fmt::format("the number of an edge of the body, up to {}", known.Extent()));
        vectors.edge = TopoDS::Edge(known(static_cast<int>(vectors.edgeNumber)));
        vectors.edge.Orientation(isReversed ? TopAbs_REVERSED : TopAbs_FORWARD);
    }
    return vectors;
}

} // namespace vrk::station
