#include "platform/station/file/TaskWriter.h"

#include "platform/station/file/ObjectJson.h"
#include "platform/task/DataItem.h"
#include "platform/task/Task.h"

namespace vrk::station {
namespace {

Json itemJson(const task::DataItem& item)
{
    Json json{{"type", "tool"}};
    json.update(idAndName(item));
    addOwner(json, "owner", item);
    json["pose"] = jsonOf(item.getPose());
    if (const auto* wobj = dynamic_cast<const task::WObjDataItem*>(&item)) {
        json["type"] = "work_object";
        json["fixed"] = wobj->hasFixedUFrame();
        json["object_frame"] = bare(*wobj->getObjectFrame());
    } else if (const auto* target = dynamic_cast<const task::JointTargetDataItem*>(&item)) {
        json["type"] = "joint_target";
        json["values"] = target->jointValues;
    }
    return json;
}

} // namespace

Json taskJson(const task::Task& task)
{
    Json json = idAndName(task);
    addOwner(json, "owner", task);
    if (task.getManipulatorId() != 0)
        json["manipulator"] = task.getManipulatorId();
    for (const auto& item : task.getDataItems())
        json["data"].push_back(itemJson(*item));
    return json;
}

} // namespace vrk::station
