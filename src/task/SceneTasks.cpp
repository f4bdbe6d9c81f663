#include "scene/Scene.h"

#include "platform/common/Checks.h"
#include "platform/sdf/SdfManager.h"
#include "platform/task/DataItem.h"
#include "platform/task/Instruction.h"
#include "platform/task/Path.h"
#include "platform/task/Task.h"
#include "scene/core/SceneCore.h"
#include "station/ParentVisual.h"
#include "station/WObjVisual.h"
#include "task/MoveInstructionVisual.h"
#include "task/PathMoves.h"
#include "task/PathVisual.h"
#include "visual/VisualCast.h"

#include <memory>
#include <optional>

namespace vrk::visual {
namespace {

template <typename Kind>
std::shared_ptr<Kind> shared(unsigned id)
{
    return std::dynamic_pointer_cast<Kind>(sdf::Share(id));
}

/// Null where no visual of that kind has the id.
template <typename Kind>
Kind* visualAs(unsigned id, VisualType type)
{
    return Scene::HasVisual(id) ? visualCast<Kind>(Scene::GetVisual(id), type) : nullptr;
}

MoveInstructionVisual* moveVisual(unsigned id)
{
    return visualAs<MoveInstructionVisual>(id, VisualType::MoveInstruction);
}

std::vector<unsigned> idsOfType(const SceneCore& core, VisualType type)
{
    std::vector<unsigned> ids;
    for (const auto& [id, visual] : core.visuals.all())
        if (visual->getType() == type)
            ids.push_back(id);
    return ids;
}

/// The owner of the task that a move stands in; 0, the world, where it stands in none.
unsigned taskOwnerOf(const task::MoveInst& move)
{
    const task::Task* task = move.getTask();
    return task ? task->getOwnerId() : 0;
}

/// What a move hangs on: its work object; a posture that has none on who owns the program.
Visual* parentOf(const task::MoveInst& move)
{
    if (move.getWObjItemId() == 0 && move.isJointTargetInst())
        return resolveParent(taskOwnerOf(move));
    return workObjectVisualOf(move);
}

/// The visual of a parent's id; 0 is the world.
Visual* parentVisual(unsigned id)
{
    return id == 0 ? Scene::GetWorldVisual() : Scene::GetVisual(id);
}

void buildPath(task::Path& path)
{
    PathVisual::Build(&path);
    task::MoveInst* previous = nullptr;
    Visual* parent = nullptr;
    for (task::MoveInst* move : path.getMoveInstructions()) {
        const bool isElsewhere =
            !previous || previous->getWObjItemId() != move->getWObjItemId() || move->getWObjItemId() == 0;
        if (isElsewhere)
            parent = parentOf(*move);
        MoveInstructionVisual::Build(parent, previous, move);
        previous = move;
    }
}

void rebuildLines(task::Path& path)
{
    if (auto* visual = visualAs<PathVisual>(path.getId(), VisualType::Path)) {
        visual->setPath(&path);
        visual->buildLines();
    }
}

void doUpdatePath(unsigned id)
{
    const std::shared_ptr<task::Path> path = shared<task::Path>(id);
    if (!path || path->moveInstructionCount() == 0)
        return;
    for (task::MoveInst* move : path->getMoveInstructions())
        if (MoveInstructionVisual* visual = moveVisual(move->getId()))
            visual->updateFrom(move);
    rebuildLines(*path);
}

/// Whatever two moves follow each other, an arrow goes from one to the other here, where it is asked for with all others;
/// where it is made with its move, or updated, it is not if one is a posture or they lie in two work objects.
void doDrawArrows(const SceneCore& core)
{
    for (const unsigned id : idsOfType(core, VisualType::Path)) {
        const std::shared_ptr<task::Path> path = shared<task::Path>(id);
        if (!path)
            continue;
        const task::MoveInst* previous = nullptr;
        for (task::MoveInst* move : path->getMoveInstructions()) {
            MoveInstructionVisual* visual = moveVisual(move->getId());
            if (!visual)
                continue;
            visual->buildArrow(previous);
            previous = move;
        }
    }
}

} // namespace

void Scene::addTask(unsigned id)
{
    addRenderTask([this, id] { buildTask(id); }, 0);
}

void Scene::buildTask(unsigned id)
{
    const std::shared_ptr<task::Task> task = shared<task::Task>(id);
    if (!task)
        return;
    // A tool data item may hang on a work object, which must have its visual by then wherever it stands in the list.
    for (const auto& item : task->getDataItems())
        if (item->asType(sdf::ModelType::WObjData))
            WObjVisual::Build(resolveParent(*item), item.get());
    for (const auto& item : task->getDataItems())
        if (item->asType(sdf::ModelType::ToolData))
            doAddToolData(item->getId());
    for (const unsigned pathId : task->getPaths())
        if (const std::shared_ptr<task::Path> path = shared<task::Path>(pathId))
            buildPath(*path);
}

void Scene::addPath(task::Path* path)
{
    struct Post {
        task::MoveInst* previous;
        task::MoveInst* move;
        Visual* parent;
    };
    std::vector<Post> posts;
    task::MoveInst* previous = nullptr;
    for (task::MoveInst* move : path->getMoveInstructions()) {
        posts.push_back({previous, move, parentOf(*move)});
        previous = move;
    }
    addRenderTask([path] { PathVisual::Build(path); }, 0);
    for (const Post& post : posts)
        addVisualTask(post.parent, [post] { MoveInstructionVisual::Build(post.parent, post.previous, post.move); });
}

void Scene::removePathVisual(unsigned id)
{
    const std::shared_ptr<task::Path> path = shared<task::Path>(id);
    if (!path)
        return;
    for (const task::MoveInst* move : path->getMoveInstructions())
        removeVisual(move->getId());
    removeVisual(id);
}

void Scene::updatePath(unsigned id)
{
    addRenderTask([id] { doUpdatePath(id); }, 0);
}

void Scene::updatePaths(std::vector<unsigned> ids)
{
    addRenderTask(
        [ids = std::move(ids)] {
            for (const unsigned id : ids)
                doUpdatePath(id);
        },
        0);
}

void Scene::updateInstruction(unsigned id)
{
    addRenderTask([this, id] { doUpdateInstruction(id); }, 0);
}

void Scene::doUpdateInstruction(unsigned id)
{
    MoveInstructionVisual* visual = moveVisual(id);
    if (!visual)
        throw common::BadOptionalAccess();
    const std::shared_ptr<task::MoveInst> move = shared<task::MoveInst>(id);
    if (!move)
        return;
    visual->updateFrom(move.get());
    if (move->getPath())
        rebuildLines(*move->getPath());
}

void Scene::upadateInstructionParent(unsigned id, unsigned parentId)
{
    addRenderTask([id, parentId] { parentVisual(parentId)->attachVisual(GetVisual(id)); }, 0);
}

void Scene::buildMoveInstruction(task::MoveInst* move)
{
    const unsigned parentId = move->isRobTargetInst() ? move->getWObjItemId() : taskOwnerOf(*move);
    addRenderTask([move, parentId] { MoveInstructionVisual::Build(parentVisual(parentId), nullptr, move); }, 0);
}

void Scene::buildMoveInstructions(std::vector<std::tuple<task::MoveInst*, task::MoveInst*, unsigned>>&& moves)
{
    if (moves.empty())
        return;
    addRenderTask(
        [moves = std::move(moves)] {
            for (const auto& [previous, move, parentId] : moves)
                MoveInstructionVisual::Build(parentVisual(parentId), previous, move);
            if (task::Path* path = std::get<1>(moves.back())->getPath())
                rebuildLines(*path);
        },
        0);
}

void Scene::setDrawPathArrow(bool draw)
{
    core->settings.drawPathArrow = draw;
    addRenderTask([this] { doDrawArrows(*core); }, 0);
    if (draw)
        instanceDirty();
}

void Scene::setDrawSegVisual(bool draw)
{
    core->settings.drawSegVisual = draw;
    for (const unsigned id : idsOfType(*core, VisualType::Path))
        updatePath(id);
}

void Scene::setDrawTargetVisual(bool draw)
{
    core->settings.drawTargetVisual = draw;
    addRenderTask(
        [this] {
            for (const unsigned id : idsOfType(*core, VisualType::MoveInstruction))
                if (MoveInstructionVisual* visual = moveVisual(id))
                    visual->buildTargets();
        },
        0);
}

} // namespace vrk::visual
