#include "docks/ProgramModel.h"

#include "docks/ProgramText.h"

#include "platform/layout/Layout.h"
#include "platform/sdf/SdfManager.h"
#include "platform/task/Instruction.h"
#include "platform/task/Path.h"
#include "platform/task/Task.h"

#include <QGuiApplication>
#include <QPalette>

#include <algorithm>
#include <iterator>
#include <shared_mutex>

namespace vrkview {

using vrk::task::Instruction;
using vrk::task::Path;
using vrk::task::Task;

ProgramModel::ProgramModel(QObject* parent) : QAbstractItemModel(parent)
{
    follow();
}

ProgramModel::~ProgramModel() = default;

// The model

ProgramModel::Tasks ProgramModel::read() const
{
    const std::shared_lock lock(sdf::SdfManager::inst().mutex());
    Tasks all;
    for (const std::shared_ptr<Task>& task : vrk::layout::Layout::inst().tasks)
        if (auto node = readTask(task))
            all.push_back(std::move(node));
    return all;
}

/// Null where the filter leaves nothing of it.
std::unique_ptr<ProgramModel::TaskNode> ProgramModel::readTask(const std::shared_ptr<Task>& task) const
{
    auto node = std::make_unique<TaskNode>();
    node->task = task;
    const bool isWhole = matches(*task);
    for (const std::shared_ptr<Path>& path : task->getOwnPaths()) {
        auto below = std::make_unique<PathNode>();
        below->path = path;
        const bool isWholePath = isWhole || matches(*path);
        if (isWholePath)
            below->steps = path->getInstructions();
        else
            std::ranges::copy_if(path->getInstructions(), std::back_inserter(below->steps),
                                 [this](const auto& step) { return matches(*step); });
        if (isWholePath || !below->steps.empty())
            node->paths.push_back(std::move(below));
    }
    return isWhole || !node->paths.empty() ? std::move(node) : nullptr;
}

bool ProgramModel::matches(const sdf::SdfObject& object) const
{
    return filter.isEmpty() || programWords(object).contains(filter, Qt::CaseInsensitive);
}

/// Takes the rows out of `have` that `wanted` lacks, and brings in what it has besides: one range each, between what both
/// begin and end with.
/// @param settle  called while the rows go and come, with the first place behind which something is another.
template <typename List, typename Same, typename Settle>
void ProgramModel::followList(const QModelIndex& parent, List& have, List& wanted, const Same& isSame,
                              const Settle& settle)
{
    const std::size_t most = std::min(have.size(), wanted.size());
    std::size_t head = 0, tail = 0;
    while (head < most && isSame(have[head], wanted[head]))
        ++head;
    while (head + tail < most && isSame(have[have.size() - 1 - tail], wanted[wanted.size() - 1 - tail]))
        ++tail;
    const auto at = [](List& list, std::size_t place) { return list.begin() + static_cast<std::ptrdiff_t>(place); };
    if (have.size() > head + tail) {
        beginRemoveRows(parent, static_cast<int>(head), static_cast<int>(have.size() - tail) - 1);
        have.erase(at(have, head), at(have, have.size() - tail));
        settle(head);
        endRemoveRows();
    }
    if (wanted.size() > head + tail) {
        beginInsertRows(parent, static_cast<int>(head), static_cast<int>(wanted.size() - tail) - 1);
        have.insert(at(have, head), std::make_move_iterator(at(wanted, head)),
                    std::make_move_iterator(at(wanted, wanted.size() - tail)));
        settle(head);
        endInsertRows();
    }
}

void ProgramModel::follow()
{
    Tasks wanted = read();
    const auto number = [this](std::size_t from) {
        for (std::size_t i = from; i < tasks.size(); ++i) {
            tasks[i]->position = static_cast<int>(i);
            for (std::size_t j = 0; j < tasks[i]->paths.size(); ++j) {
                tasks[i]->paths[j]->parent = tasks[i].get();
                tasks[i]->paths[j]->position = static_cast<int>(j);
            }
        }
    };
    followList(
        {}, tasks, wanted, [](const auto& a, const auto& b) { return a->task == b->task; }, number);
    for (std::size_t i = 0; i < tasks.size(); ++i)
        if (wanted[i]) // else it came in just now
            followPaths(*tasks[i], *wanted[i]);
    if (!tasks.empty())
        emit dataChanged(index(0, Step), index(static_cast<int>(tasks.size()) - 1, Zone));
}

void ProgramModel::followPaths(TaskNode& have, TaskNode& wanted)
{
    const QModelIndex parent = indexOf(have);
    const auto number = [&have](std::size_t from) {
        for (std::size_t i = from; i < have.paths.size(); ++i) {
            have.paths[i]->parent = &have;
            have.paths[i]->position = static_cast<int>(i);
        }
    };
    followList(
        parent, have.paths, wanted.paths, [](const auto& a, const auto& b) { return a->path == b->path; }, number);
    for (std::size_t i = 0; i < have.paths.size(); ++i)
        if (wanted.paths[i])
            followSteps(*have.paths[i], *wanted.paths[i]);
    if (!have.paths.empty())
        emit dataChanged(index(0, Step, parent), index(static_cast<int>(have.paths.size()) - 1, Zone, parent));
}

void ProgramModel::followSteps(PathNode& have, PathNode& wanted)
{
    const QModelIndex parent = indexOf(have);
    followList(parent, have.steps, wanted.steps, std::equal_to<>(), [&have](std::size_t) { have.row.clear(); });
    if (!have.steps.empty()) // their texts may be others
        emit dataChanged(index(0, Step, parent), index(static_cast<int>(have.steps.size()) - 1, Zone, parent));
}

void ProgramModel::setFilter(const QString& text)
{
    if (text == filter)
        return;
    filter = text;
    follow();
}

// Rows: the pointer in an index is the node that the row lies in; null for a task.

const ProgramModel::Node* ProgramModel::nodeOf(const QModelIndex& index) const
{
    const auto row = static_cast<std::size_t>(index.row());
    if (!index.isValid())
        return nullptr;
    if (isTask(index))
        return tasks[row].get();
    return isPath(index) ? static_cast<const TaskNode*>(aboveOf(index))->paths[row].get() : nullptr;
}

const ProgramModel::Node* ProgramModel::aboveOf(const QModelIndex& index)
{
    return static_cast<const Node*>(index.internalPointer());
}

bool ProgramModel::isPath(const QModelIndex& index) const
{
    return !isTask(index) && !aboveOf(index)->parent;
}

const sdf::SdfObject& ProgramModel::objectOf(const QModelIndex& index) const
{
    const auto row = static_cast<std::size_t>(index.row());
    if (isTask(index))
        return *tasks[row]->task;
    if (isPath(index))
        return *static_cast<const TaskNode*>(aboveOf(index))->paths[row]->path;
    return *static_cast<const PathNode*>(aboveOf(index))->steps[row];
}

QModelIndex ProgramModel::indexOf(const Node& node) const
{
    return createIndex(node.position, Step, node.parent);
}

QModelIndex ProgramModel::indexOf(unsigned id) const
{
    const Path* path = nullptr;
    const Task* task = nullptr;
    {
        const std::shared_lock lock(sdf::SdfManager::inst().mutex());
        const sdf::SdfObject* object = sdf::SdfManager::inst().find(id);
        task = dynamic_cast<const Task*>(object);
        path = dynamic_cast<const Path*>(object);
        if (const auto* step = dynamic_cast<const Instruction*>(object))
            path = step->getPath();
        if (path)
            task = path->getTask();
    }
    const auto above = std::ranges::find(tasks, task, [](const auto& node) { return node->task.get(); });
    if (!task || above == tasks.end())
        return {};
    if (!path)
        return indexOf(**above);
    const auto& paths = (*above)->paths;
    const auto node = std::ranges::find(paths, path, [](const auto& each) { return each->path.get(); });
    if (node == paths.end())
        return {};
    if (path->getId() == id)
        return indexOf(**node);
    PathNode& in = **node;
    if (in.row.empty())
        for (std::size_t i = 0; i < in.steps.size(); ++i)
            in.row[in.steps[i]->getId()] = static_cast<int>(i);
    const auto row = in.row.find(id);
    return row == in.row.end() ? QModelIndex() : createIndex(row->second, Step, static_cast<Node*>(&in));
}

std::size_t ProgramModel::count() const
{
    std::size_t sum = tasks.size();
    for (const auto& task : tasks) {
        sum += task->paths.size();
        for (const auto& path : task->paths)
            sum += path->steps.size();
    }
    return sum;
}

QModelIndex ProgramModel::index(int row, int column, const QModelIndex& parent) const
{
    return hasIndex(row, column, parent) ? createIndex(row, column, nodeOf(parent)) : QModelIndex();
}

QModelIndex ProgramModel::parent(const QModelIndex& child) const
{
    return child.isValid() && !isTask(child) ? indexOf(*aboveOf(child)) : QModelIndex();
}

int ProgramModel::rowCount(const QModelIndex& parent) const
{
    if (!parent.isValid())
        return static_cast<int>(tasks.size());
    if (parent.column() > Step)
        return 0;
    const Node* node = nodeOf(parent);
    if (!node)
        return 0;
    return static_cast<int>(node->parent ? static_cast<const PathNode*>(node)->steps.size()
                                         : static_cast<const TaskNode*>(node)->paths.size());
}

int ProgramModel::columnCount(const QModelIndex&) const
{
    return ColumnCount;
}

QVariant ProgramModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid())
        return {};
    const sdf::SdfObject& object = objectOf(index);
    switch (role) {
    case IdRole:
        return object.getId();
    case Qt::DisplayRole:
        switch (index.column()) {
        case Step:
            return programStep(object);
        case Target:
            return programTarget(object);
        case Speed:
            return programSpeed(object);
        default:
            return programZone(object);
        }
    case Qt::DecorationRole:
        return index.column() == Step ? programIcon(object) : QVariant();
    case Qt::ToolTipRole:
        return programToolTip(object);
    case Qt::ForegroundRole:
        if (!isDrawn(object))
            return QGuiApplication::palette().brush(QPalette::PlaceholderText);
        return {};
    default:
        return {};
    }
}

QVariant ProgramModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    switch (section) {
    case Step:
        return tr("Step");
    case Target:
        return tr("Target");
    case Speed:
        return tr("Speed");
    default:
        return tr("Zone");
    }
}

} // namespace vrkview
