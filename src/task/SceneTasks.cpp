#include "scene/Scene.h"

#include "platform/common/Checks.h"
#include "platform/sdf/SdfManager.h"
#include "platform/task/DataItem.h"
#include "platform/task/Instruction.h"
#include "platform/task/Path.h"
#include "platform/task/Task.h"
#include "scene/core/Refused.h"
#include "scene/core/SceneCore.h"
#include "station/ParentVisual.h"
#include "station/SamePlace.h"
#include "station/TcpVisual.h"
#include "station/WObjVisual.h"
#include "task/InstanceFrameVisual.h"
#include "task/MoveInstructionVisual.h"
#include "task/PathMoves.h"
#include "task/PathVisual.h"
#include "task/RobtargetVisual.h"
#include "visual/VisualCast.h"

#include <fmt/format.h>

#include <algorithm>
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

/// The visual of a parent's id; 0 is the world, and so is the station.
Visual* parentVisual(unsigned id)
{
    return isWorldId(id) ? Scene::GetWorldVisual() : Scene::GetVisual(id);
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
    refuseNull(path, "addPath", "a path");
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
    refuseNull(move, "buildMoveInstruction", "a move");
    const unsigned parentId = move->isRobTargetInst() ? move->getWObjItemId() : taskOwnerOf(*move);
    addRenderTask([move, parentId] { MoveInstructionVisual::Build(parentVisual(parentId), nullptr, move); }, 0);
}

void Scene::buildMoveInstructions(std::vector<std::tuple<task::MoveInst*, task::MoveInst*, unsigned>>&& moves)
{
    for (const auto& each : moves)
        refuseNull(std::get<1>(each), "buildMoveInstructions", "a move");
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

namespace {

/// Where the scene draws no targets, none is missing.
bool showsTargets(const MoveInstructionVisual& visual, const task::MoveInst& move, bool areDrawn)
{
    if (!areDrawn)
        return true;
    const InstanceFrameVisual* target = visual.getTarget();
    const RobtargetVisual* via = visual.getCircle();
    const bool hasVia = !move.isJointTargetInst() && move.getCircleItem();
    return target && target->getId() == move.getTargetItemId() && hasVia == (via != nullptr) &&
           (!via || via->getId() == move.getCircleItemId());
}

/// Whether what stands for the path are visuals of these very moves, on what they hang on in the model.
bool isDrawn(task::Path& path, bool areTargetsDrawn)
{
    const auto* visual = visualAs<PathVisual>(path.getId(), VisualType::Path);
    if (!visual || visual->getPath() != &path)
        return false;
    return std::ranges::all_of(path.getMoveInstructions(), [&](const task::MoveInst* move) {
        const MoveInstructionVisual* shown = moveVisual(move->getId());
        return shown && shown->getMove() == move && shown->getParent() == parentOf(*move) &&
               showsTargets(*shown, *move, areTargetsDrawn);
    });
}

bool isAt(const Visual* visual, const rob::PoseTemplate<double>& pose)
{
    return !visual || isSamePlace(visual->getPose(), rob::PoseTemplate<float>(pose));
}

/// Whether the moves go elsewhere than is shown.
bool isMoved(task::Path& path)
{
    const auto* visual = visualAs<PathVisual>(path.getId(), VisualType::Path);
    if (visual->getHashOfWays() != hashOfWays(path.getMoveInstructions()))
        return true;
    return std::ranges::any_of(path.getMoveInstructions(), [](const task::MoveInst* move) {
        const MoveInstructionVisual* shown = moveVisual(move->getId());
        const auto& via = move->getCircleItem();
        return !isAt(shown->getTarget(), move->getTargetItem()->getPose()) ||
               (via && !isAt(shown->getCircle(), via->getPose()));
    });
}

void syncPath(task::Path& path, bool areTargetsDrawn, const std::function<void(unsigned)>& remove)
{
    if (isDrawn(path, areTargetsDrawn)) {
        if (isMoved(path))
            doUpdatePath(path.getId());
        return;
    }
    for (const task::MoveInst* move : path.getMoveInstructions())
        remove(move->getId());
    remove(path.getId());
    buildPath(path);
}

void syncWorkObject(task::WObjDataItem& item, const std::function<void(unsigned)>& remove)
{
    auto* visual = visualAs<WObjVisual>(item.getId(), VisualType::WObj);
    if (!visual || visual->getItem() != &item || !visual->getObjectFrame()) {
        remove(item.getId());
        WObjVisual::Build(resolveParent(item), &item);
        return;
    }
    const bool isMoved = visual->getParent() != resolveParent(item) || !isAt(visual, item.getPose()) ||
                         !isAt(visual->getObjectFrame(), item.getObjectFrame()->getPose());
    if (isMoved)
        visual->update();
}

} // namespace

void Scene::doSyncTask(const task::Task& task, const SyncSteps& steps)
{
    const auto attempt = [&](const sdf::SdfObject& object, const std::function<void()>& work) {
        steps.attempt(fmt::format("'{}' ({}) of '{}'", object.getName(), object.getId(), task.getName()), work);
    };
    for (const auto& item : task.getDataItems())
        if (item->asType(sdf::ModelType::WObjData))
            attempt(*item, [&] { syncWorkObject(dynamic_cast<task::WObjDataItem&>(*item), steps.remove); });
    for (const auto& item : task.getDataItems())
        if (item->asType(sdf::ModelType::ToolData))
            attempt(*item, [&] {
                const Visual* shown = HasVisual(item->getId()) ? GetVisual(item->getId()) : nullptr;
                if (shown && shown->getParent()->getId() == item->getParentId() && isAt(shown, item->getPose()))
                    return;
                steps.remove(item->getId());
                TcpVisual::Build(GetVisual(item->getParentId()), *item);
            });
    const bool areTargetsDrawn = SceneCore::Get()->settings.drawTargetVisual;
    for (const unsigned id : task.getPaths())
        if (const std::shared_ptr<task::Path> path = shared<task::Path>(id))
            attempt(*path, [&] { syncPath(*path, areTargetsDrawn, steps.remove); });
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
