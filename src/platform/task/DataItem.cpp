#include "platform/task/DataItem.h"

#include "platform/sdf/SdfManager.h"

namespace vrk::task {

DataItem::DataItem(sdf::ModelType type, unsigned id, std::string name) : SdfNode(type, id, std::move(name))
{
    setPose({});
}

DataItem::~DataItem() = default;

ToolDataItem::ToolDataItem(unsigned id, std::string name) : DataItem(sdf::ModelType::ToolData, id, std::move(name)) {}

ToolDataItem::~ToolDataItem() = default;

WObjDataItem::WObjDataItem(unsigned id, std::string name, unsigned objectFrameId)
    : DataItem(sdf::ModelType::WObjData, id, std::move(name)),
      objectFrame(std::make_shared<sdf::SdfNode>(sdf::ModelType::ObjectFrame, objectFrameId, "object frame"))
{
    objectFrame->setParentId(getId());
    objectFrame->setPose({});
}

WObjDataItem::WObjDataItem(unsigned id, std::string name)
    : WObjDataItem(id, std::move(name), sdf::SdfManager::inst().generateId())
{
}

WObjDataItem::~WObjDataItem() = default;

std::vector<std::shared_ptr<sdf::SdfObject>> WObjDataItem::getPieces() const
{
    return {objectFrame};
}

JointTargetDataItem::JointTargetDataItem(unsigned id, std::string name)
    : DataItem(sdf::ModelType::JointTargetData, id, std::move(name))
{
}

JointTargetDataItem::~JointTargetDataItem() = default;

RobTargetDataItem::RobTargetDataItem(unsigned id, std::string name)
    : DataItem(sdf::ModelType::RobTargetData, id, std::move(name))
{
}

RobTargetDataItem::~RobTargetDataItem() = default;

} // namespace vrk::task
