#include "platform/task/Task.h"

#include "platform/sdf/SdfManager.h"
#include "platform/task/DataItem.h"

namespace vrk::task {

Task::Task(unsigned id, std::string name) : SdfContainer(sdf::ModelType::Task, id, std::move(name)) {}

Task::~Task() = default;

void Task::addDataItem(std::shared_ptr<DataItem> item)
{
    addForeignChild(*item);
    items.push_back(std::move(item));
}

void Task::removeDataItem(unsigned id)
{
    removeChild(id);
    std::erase_if(items, [id](const std::shared_ptr<DataItem>& item) { return item->getId() == id; });
}

std::vector<std::shared_ptr<sdf::SdfObject>> Task::getPieces() const
{
    return {items.begin(), items.end()};
}

Operation::Operation(unsigned id, std::string name) : SdfObject(sdf::ModelType::Operation, id, std::move(name)) {}

Operation::~Operation() = default;

void Operation::getMembers(std::vector<sdf::SdfObject*>& members) const
{
    sdf::SdfManager::inst().appendKnown(memberIds, members);
}

} // namespace vrk::task
