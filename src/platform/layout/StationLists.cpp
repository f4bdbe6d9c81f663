// The programs and the components of the station. What they are stands below the station, which lists them.

#include "platform/layout/Layout.h"
#include "platform/smart/SmartComponent.h"
#include "platform/task/Task.h"

namespace vrk {
namespace {

void appendWithPieces(smartcomp::SmartComponent* component, std::vector<smartcomp::SmartComponent*>& all)
{
    all.push_back(component);
    for (const std::shared_ptr<smartcomp::SmartComponent>& piece : component->getComponents())
        appendWithPieces(piece.get(), all);
}

} // namespace

std::vector<task::Task*> task::GetAllTasks()
{
    std::vector<Task*> all;
    for (const std::shared_ptr<Task>& task : layout::Layout::inst().tasks)
        all.push_back(task.get());
    return all;
}

std::vector<smartcomp::SmartComponent*> smartcomp::GetAllSmartComponents()
{
    std::vector<SmartComponent*> all;
    for (const std::shared_ptr<SmartComponent>& component : layout::Layout::inst().components)
        appendWithPieces(component.get(), all);
    return all;
}

} // namespace vrk
