#include "platform/task/Task.h"

#include "platform/sdf/SdfManager.h"
#include "platform/task/EdgeMfgShape.h"
#include "platform/task/Instruction.h"
#include "platform/task/Path.h"

#include <algorithm>
#include <stdexcept>
#include <unordered_map>

namespace vrk::task {

Task::Task(unsigned id, std::string name) : SdfContainer(sdf::ModelType::Task, id, std::move(name)) {}

Task::~Task()
{
    for (const std::shared_ptr<Path>& path : paths)
        path->task = nullptr; // somebody may keep it
}

void Task::addDataItem(std::shared_ptr<DataItem> item)
{
    addForeignChild(*item);
    items.push_back(std::move(item));
}

void Task::orderDataItems(const std::vector<std::shared_ptr<DataItem>>& order)
{
    std::unordered_map<const DataItem*, std::size_t> places;
    for (const std::shared_ptr<DataItem>& item : order)
        places.emplace(item.get(), places.size());
    const auto placeOf = [&](const std::shared_ptr<DataItem>& item) {
        const auto found = places.find(item.get());
        return found == places.end() ? places.size() : found->second;
    };
    std::ranges::stable_sort(items, {}, placeOf);
}

void Task::removeDataItem(unsigned id)
{
    for (const std::shared_ptr<Path>& path : paths)
        if (std::ranges::any_of(path->getMoveInstructions(),
                                [id](const MoveInst* move) { return move->getTargetItemId() == id; }))
            throw std::invalid_argument("a move needs this target");
    for (const std::shared_ptr<Path>& path : paths) {
        for (MoveInst* move : path->getMoveInstructions()) {
            if (move->getCircleItemId() == id)
                move->setCircleItem(nullptr);
            if (move->getWObjItemId() == id)
                move->setWObjItem(nullptr);
            if (move->getToolItemId() == id)
                move->setToolItem(nullptr);
        }
    }
    for (const std::shared_ptr<DataItem>& item : items)
        if (item->asType(sdf::ModelType::RobTargetData) && item->getOwnerId() == id)
            item->setOwnerId(0);
    removeChild(id);
    std::erase_if(items, [id](const std::shared_ptr<DataItem>& item) { return item->getId() == id; });
}

void Task::addPath(std::shared_ptr<Path> path)
{
    addChild(*path);
    path->task = this;
    pathIds.push_back(path->getId());
    paths.push_back(std::move(path));
}

void Task::removePath(unsigned id)
{
    removeChild(id);
    std::erase(pathIds, id);
    for (const std::shared_ptr<Path>& path : paths)
        if (path->getId() == id)
            path->task = nullptr;
    std::erase_if(paths, [id](const std::shared_ptr<Path>& path) { return path->getId() == id; });
}

void Task::addMfgShape(std::shared_ptr<EdgeMfgShape> shape)
{
    addChild(*shape);
    shapes.push_back(std::move(shape));
}

void Task::removeMfgShape(unsigned id)
{
    removeChild(id);
    std::erase_if(shapes, [id](const std::shared_ptr<EdgeMfgShape>& shape) { return shape->getId() == id; });
}

void Task::moveObjectFrame(WObjDataItem& wobj, const rob::Posed& pose)
{
    const rob::Posed change = pose * wobj.getObjectFrame()->getPose().inverse();
    wobj.getObjectFrame()->setPose(pose);
    for (const std::shared_ptr<DataItem>& item : items)
        if (item->asType(sdf::ModelType::RobTargetData) && item->getOwnerId() == wobj.getId())
            item->setPose(change * item->getPose());
}

std::vector<std::shared_ptr<sdf::SdfObject>> Task::getPieces() const
{
    std::vector<std::shared_ptr<sdf::SdfObject>> pieces(items.begin(), items.end());
    pieces.insert(pieces.end(), paths.begin(), paths.end());
    pieces.insert(pieces.end(), shapes.begin(), shapes.end());
    return pieces;
}

Operation::Operation(unsigned id, std::string name) : SdfObject(sdf::ModelType::Operation, id, std::move(name)) {}

Operation::~Operation() = default;

void Operation::getMembers(std::vector<sdf::SdfObject*>& members) const
{
    sdf::SdfManager::inst().appendKnown(memberIds, members);
}

} // namespace vrk::task
