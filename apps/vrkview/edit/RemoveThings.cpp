#include "edit/RemoveThings.h"

#include "edit/Attaching.h"
#include "edit/ModelPlaces.h"
#include "files/StationScene.h"

#include "platform/layout/Assembly.h"
#include "platform/layout/Group.h"
#include "platform/sdf/SdfManager.h"
#include "platform/task/DataItem.h"
#include "platform/task/EdgeMfgShape.h"
#include "platform/task/Instruction.h"
#include "platform/task/Path.h"
#include "platform/task/Task.h"
#include "scene/Scene.h"
#include "visual/Visual.h"

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

std::vector<std::pair<vrk::task::MoveInst*, std::shared_ptr<vrk::task::ToolDataItem>>>
toolsOfMoves(const vrk::task::Task& task)
{
    std::vector<std::pair<vrk::task::MoveInst*, std::shared_ptr<vrk::task::ToolDataItem>>> tools;
    for (const auto& path : task.getOwnPaths())
        for (vrk::task::MoveInst* move : path->getMoveInstructions())
            tools.emplace_back(move, move->getToolItem());
    return tools;
}

/// The things of the station whose visuals hang on work objects or tools of these programs, each with that one's id.
std::vector<std::pair<unsigned, unsigned>> thingsOn(const std::vector<unsigned>& programs)
{
    std::vector<unsigned> carriers;
    for (const unsigned program : programs)
        if (const auto task = std::dynamic_pointer_cast<vrk::task::Task>(sdf::Share(program)))
            for (const auto& item : task->getDataItems())
                if (Scene::HasVisual(item->getId()))
                    carriers.push_back(item->getId());
    std::vector<std::pair<unsigned, unsigned>> found;
    for (const unsigned carrier : carriers)
        for (const vrk::visual::Visual* child : Scene::GetVisual(carrier)->getChildren())
            if (isThingOfItsOwn(child->getId()))
                found.emplace_back(child->getId(), carrier);
    return found;
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
    std::erase_if(things, [](unsigned id) { return !isPlaced(id); });
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
    if (left.erase(thing) == 0 || !isPlaced(thing)) // the assembly that it was in may be gone
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
    hidePrograms();
    takeFromScene(); // ahead of the model: the visual of a cloud points to its points
    Layout::inst().remove(thing);
    showPrograms();
}

void RemoveThing::revert()
{
    hidePrograms();
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
    for (const auto& owner : layout.assemblies) {
        const auto& members = owner->getParts();
        const auto member = std::ranges::find(members, thing, [](const auto& one) { return one->getId(); });
        if (member != members.end())
            read.assembly = {owner, *member, static_cast<std::size_t>(member - members.begin())};
    }
    for (const std::shared_ptr<sdf::SdfObject>& object : layout.objects())
        if (isGone(object->getParentId()) && !isGone(object->getId()))
            read.owners.emplace_back(object, object->getParentId());
    for (const auto& task : layout.tasks) {
        read.tasks.push_back(
            {task, task->getManipulatorId(), task->getDataItems(), toolsOfMoves(*task), task->getMfgShapes()});
        const auto liesOnIt = [&](const auto& item) { return isGone(item->getOwnerId()); };
        if (!isGone(task->getId()) && (liesOnIt(task) || std::ranges::any_of(task->getDataItems(), liesOnIt)))
            read.programs.push_back(task->getId());
    }
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
        if (memory->assembly.owner)
            memory->assembly.owner->insertMember(memory->assembly.index, memory->assembly.member);
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
            for (const auto& item : before.items)
                if (std::ranges::find(before.task->getDataItems(), item) == before.task->getDataItems().end())
                    before.task->addDataItem(item);
            before.task->orderDataItems(before.items);
            for (const auto& [move, tool] : before.tools)
                move->setToolItem(tool);
        }
        for (const auto& [group, members] : memory->groups)
            restoreMembers(*group, members);
        for (const auto& [operation, members] : memory->operations)
            restoreMembers(*operation, members);
    }
    Layout::inst().replace(std::move(content));
}

/// Of programs that lie on the thing: their work objects, postures and tools hang on its visual, and would go with it.
/// What hangs on these waits on the world.
void RemoveThing::hidePrograms()
{
    if (!Scene::Get())
        return;
    parked = thingsOn(memory->programs);
    for (const auto& [child, carrier] : parked)
        Scene::Get()->reparentVisual(child, 0);
    for (const unsigned program : memory->programs)
        removeFromScene(program);
    Scene::Get()->processMsgs();
}

void RemoveThing::showPrograms()
{
    if (!Scene::Get())
        return;
    for (const unsigned program : memory->programs)
        addToScene(program);
    Scene::Get()->processMsgs();
    for (const auto& [child, carrier] : parked)
        if (Scene::HasVisual(child) && Scene::HasVisual(carrier))
            Scene::Get()->reparentVisual(child, carrier); // whose pose on it never changed
    Scene::Get()->processMsgs();
}

void RemoveThing::takeFromScene() const
{
    Scene* scene = Scene::Get();
    if (!scene)
        return;
    // What only lies on it must not die with it.
    for (const auto& [object, owner] : memory->owners)
        if (Scene::HasVisual(object->getId()))
            scene->reparentVisual(object->getId(), 0);
    removeFromScene(thing);
    scene->processMsgs();
}

void RemoveThing::bringToScene()
{
    Scene* scene = Scene::Get();
    if (!scene)
        return;
    addToScene(thing);
    scene->processMsgs();
    for (const auto& [object, owner] : memory->owners)
        if (Scene::HasVisual(owner) && Scene::HasVisual(object->getId()))
            scene->reparentVisual(object->getId(), owner);
    showPrograms();
    for (const Attachment& attachment : memory->content.attachments)
        if (attachment.child == thing)
            scene->addAttachment(thing, attachment.parent, attachment.pose);
    scene->processMsgs();
}

} // namespace vrkview
