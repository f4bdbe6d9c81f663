#include "platform/station/file/TaskReader.h"

#include "platform/task/DataItem.h"
#include "platform/task/Task.h"

#include <fmt/format.h>

namespace vrk::station {

std::shared_ptr<task::Task> TaskReader::readTask(const JsonPlace& at)
{
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
    at.forEach("data", [&](const JsonPlace& place) { task->addDataItem(readDataItem(place)); });
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
    } else {
        at.at("type").fail("\"tool\", \"work_object\" or \"joint_target\"");
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

} // namespace vrk::station
