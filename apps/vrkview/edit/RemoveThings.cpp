#include "edit/RemoveThings.h"

#include "edit/Attaching.h"
#include "edit/ModelPlaces.h"
#include "files/StationScene.h"

#include "platform/layout/Group.h"
#include "platform/sdf/SdfManager.h"
#include "platform/task/DataItem.h"
#include "platform/task/EdgeMfgShape.h"
#include "platform/task/Task.h"
#include "scene/Scene.h"

#include <QObject>

#include <algorithm>
#include <mutex>
#include <shared_mutex>

namespace vrkview {
namespace {

using vrk::layout::Attachment;
using vrk::layout::Layout;
using vrk::visual::Scene;
using Ids = std::unordered_set<unsigned>;

// Under the model's lock.
void collectPieces(const sdf::SdfObject& object, Ids& ids)
{
    ids.insert(object.getId());
    for (const std::shared_ptr<sdf::SdfObject>& piece : object.getPieces())
        collectPieces(*piece, ids);
}

/// The thing and what it is made of. Under the model's lock.
Ids piecesOf(unsigned thing)
{
    Ids ids;
    if (const sdf::SdfObject* object = sdf::SdfManager::inst().find(thing))
        collectPieces(*object, ids);
    return ids;
}

std::vector<unsigned> carriedBy(unsigned thing)
{
    const std::shared_lock lock(sdf::SdfManager::inst().mutex());
    const Ids pieces = piecesOf(thing);
    std::vector<unsigned> carried;
    for (const Attachment& attachment : Layout::inst().attachments)
        if (pieces.contains(attachment.parent))
            carried.push_back(attachment.child);
    return carried;
}

template <typename Gathering>
void restoreMembers(Gathering& gathering, const std::vector<unsigned>& members)
{
    for (const unsigned member : std::vector<unsigned>(gathering.getMemberIds()))
        gathering.removeMember(member);
    for (const unsigned member : members)
        gathering.addMember(member);
}

} // namespace

RemoveThings::RemoveThings(const std::vector<unsigned>& ids)
    : Changes(QObject::tr("Delete %1").arg(nameOfThings(ids)), Touched::Things), things(ids)
{
    std::erase_if(things, [](unsigned id) { return !isThingOfItsOwn(id); });
}

void RemoveThings::apply()
{
    if (isMade)
        return Changes::apply();
    Ids left(things.begin(), things.end());
    try {
        for (const unsigned thing : things)
            remove(thing, left);
    } catch (...) {
        Changes::revert();
        throw;
    }
    isMade = true;
}

void RemoveThings::remove(unsigned thing, Ids& left)
{
    if (left.erase(thing) == 0)
        return;
    for (const unsigned carried : carriedBy(thing))
        if (left.contains(carried))
            remove(carried, left);
        else
            applyAndAdd(std::make_unique<DetachThing>(carried));
    applyAndAdd(std::make_unique<RemoveThing>(thing));
}

RemoveThing::RemoveThing(unsigned thing)
    : Change(QObject::tr("Delete %1").arg(nameOfThing(thing)), Touched::Things), thing(thing)
{
}

void RemoveThing::apply()
{
    memory = read();
    takeFromScene(); // ahead of the model: the visual of a cloud points to its points
    Layout::inst().remove(thing);
}

void RemoveThing::revert()
{
    restoreModel();
    bringToScene();
    memory.reset();
}

RemoveThing::Memory RemoveThing::read() const
{
    const std::shared_lock lock(sdf::SdfManager::inst().mutex());
    const Layout& layout = Layout::inst();
    const Ids gone = piecesOf(thing);
    const auto isGone = [&gone](unsigned id) { return gone.contains(id); };
    Memory read;
    read.content = layout;
    for (const std::shared_ptr<sdf::SdfObject>& object : layout.objects())
        if (isGone(object->getParentId()) && !isGone(object->getId()))
            read.owners.emplace_back(object, object->getParentId());
    for (const auto& task : layout.tasks)
        read.tasks.push_back({task, task->getManipulatorId(), task->getDataItems(), task->getMfgShapes()});
    for (const auto& group : layout.groups)
        if (std::ranges::any_of(group->getMemberIds(), isGone))
            read.groups.emplace_back(group, group->getMemberIds());
    for (const auto& operation : layout.operations)
        if (std::ranges::any_of(operation->getMemberIds(), isGone))
            read.operations.emplace_back(operation, operation->getMemberIds());
    return read;
}

void RemoveThing::restoreModel() const
{
    vrk::layout::StationContent content = memory->content;
    {
        const std::unique_lock lock(sdf::SdfManager::inst().mutex());
        content.lastViewPointPose = Layout::inst().lastViewPointPose; // the camera is no matter of this
        for (const auto& [object, owner] : memory->owners)
            object->setParentId(owner);
        for (const Memory::OfTask& before : memory->tasks) {
            before.task->setManipulatorId(before.manipulator);
            if (before.task->getMfgShapes() != before.bands) {
                for (const auto& band : std::vector(before.task->getMfgShapes()))
                    before.task->removeMfgShape(band->getId());
                for (const auto& band : before.bands)
                    before.task->addMfgShape(band);
            }
            if (before.task->getDataItems() == before.items)
                continue;
            for (const auto& item : std::vector(before.task->getDataItems()))
                before.task->removeDataItem(item->getId());
            for (const auto& item : before.items)
                before.task->addDataItem(item);
        }
        for (const auto& [group, members] : memory->groups)
            restoreMembers(*group, members);
        for (const auto& [operation, members] : memory->operations)
            restoreMembers(*operation, members);
    }
    Layout::inst().replace(std::move(content));
}

void RemoveThing::takeFromScene() const
{
    Scene* scene = Scene::Get();
    if (!scene)
        return;
    // What only lies on it must not die with it.
    for (const auto& [object, owner] : memory->owners)
        if (object->getModelType() != sdf::ModelType::ToolData && Scene::HasVisual(object->getId()))
            scene->reparentVisual(object->getId(), 0);
    removeFromScene(thing);
    scene->processMsgs();
}

void RemoveThing::bringToScene() const
{
    Scene* scene = Scene::Get();
    if (!scene)
        return;
    addToScene(thing);
    scene->processMsgs();
    for (const auto& [object, owner] : memory->owners) {
        const unsigned id = object->getId();
        if (!Scene::HasVisual(owner))
            continue;
        if (object->getModelType() == sdf::ModelType::ToolData)
            scene->addToolData(id);
        else if (Scene::HasVisual(id))
            scene->reparentVisual(id, owner);
    }
    for (const Attachment& attachment : memory->content.attachments)
        if (attachment.child == thing)
            scene->addAttachment(thing, attachment.parent, attachment.pose);
    scene->processMsgs();
}

} // namespace vrkview
