#include "platform/layout/Layout.h"

#include "platform/layout/Assembly.h"
#include "platform/layout/Frame.h"
#include "platform/layout/Group.h"
#include "platform/layout/Mechanism.h"
#include "platform/layout/Part.h"
#include "platform/layout/PointCloud.h"
#include "platform/sdf/SdfManager.h"
#include "platform/smart/SmartComponent.h"
#include "platform/task/DataItem.h"
#include "platform/task/EdgeMfgShape.h"
#include "platform/task/Task.h"

#include <algorithm>
#include <mutex>
#include <stdexcept>

namespace vrk::layout {
namespace {

using Objects = std::vector<std::shared_ptr<sdf::SdfObject>>;

void appendWithPieces(const std::shared_ptr<sdf::SdfObject>& object, Objects& all)
{
    all.push_back(object);
    for (const std::shared_ptr<sdf::SdfObject>& piece : object->getPieces())
        appendWithPieces(piece, all);
}

/// Calls `visit` with each list of objects of their own, in the order in which later ones build on earlier ones.
template <typename Content, typename Visit>
void forEachList(Content& content, Visit visit)
{
    visit(content.manipulators);
    visit(content.assemblies);
    visit(content.parts);
    visit(content.pointclouds);
    visit(content.tools);
    visit(content.devices);
    visit(content.frames);
    visit(content.groups);
    visit(content.components);
    visit(content.tasks);
    visit(content.operations);
}

/// Tool data is nothing without the tool that it lies on.
void removeToolDataOn(const std::unordered_set<unsigned>& gone, task::Task& task, Objects& removed)
{
    const std::vector<std::shared_ptr<task::DataItem>> items = task.getDataItems();
    for (const std::shared_ptr<task::DataItem>& item : items) {
        if (!item->asType(sdf::ModelType::ToolData) || !gone.contains(item->getOwnerId()))
            continue;
        task.removeDataItem(item->getId());
        removed.push_back(item);
    }
}

/// Nor is a run along edges without the bodies whose edges they are.
void removeMfgShapesOn(const std::unordered_set<unsigned>& gone, task::Task& task, Objects& removed)
{
    const std::vector<std::shared_ptr<task::EdgeMfgShape>> shapes = task.getMfgShapes();
    for (const std::shared_ptr<task::EdgeMfgShape>& shape : shapes) {
        if (std::ranges::none_of(shape->getMfgVectors(), [&gone](const auto& of) { return gone.contains(of.body); }))
            continue;
        task.removeMfgShape(shape->getId());
        removed.push_back(shape);
    }
}

/// Whether it was in one. What a link is made of stays.
bool takeFromAssembly(const sdf::SdfObject& member)
{
    auto* assembly = dynamic_cast<Assembly*>(sdf::SdfManager::inst().find(member.getParentId()));
    if (assembly)
        assembly->removeMember(member.getId());
    return assembly != nullptr;
}

template <typename List>
void add(StationContent& content, List& list, typename List::value_type object)
{
    Objects all;
    appendWithPieces(object, all);
    sdf::SdfManager& manager = sdf::SdfManager::inst();
    const std::unique_lock lock(manager.mutex());
    for (const std::shared_ptr<sdf::SdfObject>& piece : all)
        manager.add(piece);
    list.push_back(object);
    content.listMembers(*object);
}

} // namespace

std::vector<std::shared_ptr<sdf::SdfObject>> StationContent::objects() const
{
    Objects all;
    forEachList(*this, [&all](const auto& list) {
        for (const auto& object : list) {
            if (object->isStandalone())
                appendWithPieces(object, all);
        }
    });
    return all;
}

void StationContent::listMembers(const sdf::SdfObject& object)
{
    for (const std::shared_ptr<sdf::SdfObject>& piece : object.getPieces()) {
        if (piece->getModelType() == sdf::ModelType::Part)
            parts.push_back(std::static_pointer_cast<Part>(piece));
        if (piece->getModelType() == sdf::ModelType::Assembly)
            assemblies.push_back(std::static_pointer_cast<Assembly>(piece));
        listMembers(*piece);
    }
}

Layout& Layout::inst()
{
    static Layout* const layout = new Layout; // never freed, like the object table
    return *layout;
}

void Layout::addManipulator(std::shared_ptr<Manipulator> manipulator)
{
    add(*this, manipulators, std::move(manipulator));
}

void Layout::addAssembly(std::shared_ptr<Assembly> assembly)
{
    add(*this, assemblies, std::move(assembly));
}

void Layout::addPart(std::shared_ptr<Part> part)
{
    add(*this, parts, std::move(part));
}

void Layout::addPointCloud(std::shared_ptr<PointCloud> cloud)
{
    add(*this, pointclouds, std::move(cloud));
}

void Layout::addTool(std::shared_ptr<Tool> tool)
{
    add(*this, tools, std::move(tool));
}

void Layout::addDevice(std::shared_ptr<Device> device)
{
    add(*this, devices, std::move(device));
}

void Layout::addMechanism(std::shared_ptr<Mechanism> mechanism)
{
    if (auto manipulator = std::dynamic_pointer_cast<Manipulator>(mechanism))
        addManipulator(std::move(manipulator));
    else if (auto tool = std::dynamic_pointer_cast<Tool>(mechanism))
        addTool(std::move(tool));
    else if (auto device = std::dynamic_pointer_cast<Device>(mechanism))
        addDevice(std::move(device));
}

void Layout::addFrame(std::shared_ptr<Frame> frame)
{
    add(*this, frames, std::move(frame));
}

void Layout::addGroup(std::shared_ptr<Group> group)
{
    add(*this, groups, std::move(group));
}

void Layout::addSmartComponent(std::shared_ptr<smartcomp::SmartComponent> component)
{
    add(*this, components, std::move(component));
}

void Layout::addTask(std::shared_ptr<task::Task> task)
{
    add(*this, tasks, std::move(task));
}

void Layout::addOperation(std::shared_ptr<task::Operation> operation)
{
    add(*this, operations, std::move(operation));
}

void Layout::remove(unsigned id)
{
    Objects removed; // freed after the lock: shapes and clouds may be large
    sdf::SdfManager& manager = sdf::SdfManager::inst();
    const std::unique_lock lock(manager.mutex());
    forEachList(*this, [&](const auto& list) {
        const auto found = std::ranges::find(list, id, [](const auto& object) { return object->getId(); });
        if (found != list.end() && ((*found)->isStandalone() || takeFromAssembly(**found)))
            appendWithPieces(*found, removed);
    });
    if (removed.empty())
        return;

    std::unordered_set<unsigned> gone;
    for (const std::shared_ptr<sdf::SdfObject>& object : removed)
        gone.insert(object->getId());
    for (const std::shared_ptr<task::Task>& task : tasks)
        removeToolDataOn(gone, *task, removed);
    for (const std::shared_ptr<task::Task>& task : tasks)
        removeMfgShapesOn(gone, *task, removed);
    for (const std::shared_ptr<sdf::SdfObject>& object : removed) {
        gone.insert(object->getId());
        manager.remove(object->getId());
    }
    forEachList(*this, [&gone](auto& list) {
        std::erase_if(list, [&gone](const auto& object) { return gone.contains(object->getId()); });
    });
    forget(gone);
}

void Layout::forget(const std::unordered_set<unsigned>& gone)
{
    for (const std::shared_ptr<sdf::SdfObject>& object : objects()) {
        if (gone.contains(object->getParentId()))
            object->setParentId(0);
    }
    for (const std::shared_ptr<task::Task>& task : tasks) {
        if (gone.contains(task->getManipulatorId()))
            task->setManipulatorId(0);
    }
    for (unsigned id : gone) {
        for (const std::shared_ptr<Group>& group : groups)
            group->removeMember(id);
        for (const std::shared_ptr<task::Operation>& operation : operations)
            operation->removeMember(id);
    }
    std::erase_if(attachments, [&gone](const Attachment& attachment) {
        return gone.contains(attachment.child) || gone.contains(attachment.parent);
    });
    std::erase_if(visibilities, [&gone](unsigned hidden) { return gone.contains(hidden); });
    std::erase_if(reaches, [&gone](unsigned arm) { return gone.contains(arm); });
    std::erase_if(dimensions, [&gone](const auto& dimension) {
        return std::ranges::any_of(dimension->ends, [&gone](const auto& end) { return gone.contains(end.object); });
    });
}

void Layout::clear()
{
    replace({});
}

void Layout::replace(StationContent content)
{
    const Objects added = content.objects();
    Objects removed; // freed after the lock, as above
    sdf::SdfManager& manager = sdf::SdfManager::inst();
    const std::unique_lock lock(manager.mutex());
    removed = objects();
    for (const std::shared_ptr<sdf::SdfObject>& object : removed)
        manager.remove(object->getId());
    for (const std::shared_ptr<sdf::SdfObject>& object : added)
        manager.add(object);
    std::swap(static_cast<StationContent&>(*this), content);
}

void Layout::addAttachment(unsigned child, unsigned parent, const rob::Posed& pose)
{
    const std::unique_lock lock(sdf::SdfManager::inst().mutex());
    std::erase_if(attachments, [child](const Attachment& attachment) { return attachment.child == child; });
    attachments.push_back({child, parent, pose});
}

void Layout::removeAttachment(unsigned child)
{
    const std::unique_lock lock(sdf::SdfManager::inst().mutex());
    std::erase_if(attachments, [child](const Attachment& attachment) { return attachment.child == child; });
}

void Layout::setHidden(unsigned id, bool hidden)
{
    const std::unique_lock lock(sdf::SdfManager::inst().mutex());
    std::erase(visibilities, id);
    if (hidden)
        visibilities.push_back(id);
}

void Layout::addDimension(std::shared_ptr<const Dimension> dimension)
{
    if (!dimension || dimension->ends.size() != Dimension::EndsOf(dimension->type))
        throw std::invalid_argument("a dimension has as many ends as its type says");
    const std::unique_lock lock(sdf::SdfManager::inst().mutex());
    dimensions.push_back(std::move(dimension));
}

void Layout::removeDimension(const std::shared_ptr<const Dimension>& dimension)
{
    const std::unique_lock lock(sdf::SdfManager::inst().mutex());
    std::erase(dimensions, dimension);
}

} // namespace vrk::layout
