#include "task/PathVisual.h"

#include "platform/sdf/SdfManager.h"
#include "platform/task/Instruction.h"
#include "platform/task/Path.h"
#include "scene/core/SceneCore.h"
#include "task/PathLineVisual.h"
#include "task/PathMoves.h"
#include "visual/VisualStateManager.h"

#include <algorithm>
#include <memory>
#include <shared_mutex>
#include <utility>

namespace vrk::visual {
namespace {

/// The ids of the path's children that pass a test.
template <typename Test>
std::vector<unsigned> childrenOf(const task::Path& path, const Test& test)
{
    std::vector<unsigned> ids;
    const std::shared_lock lock(sdf::SdfManager::inst().mutex());
    for (const sdf::SdfObject* child : path.getChildren())
        if (test(*child))
            ids.push_back(child->getId());
    return ids;
}

} // namespace

PathVisual::PathVisual(task::Path* path)
    : Visual(path->getId(), "Path_" + std::to_string(path->getId()), SceneCore::Get()->worldVisual), path(path)
{
    type = VisualType::Path;
}

PathVisual::~PathVisual()
{
    deleteLines();
}

PathVisual* PathVisual::Build(task::Path* path)
{
    auto* visual = new PathVisual(path);
    SceneCore::Get()->visuals.enter(visual);
    try {
        visual->buildLines();
    } catch (...) {
        Delete(visual);
        throw;
    }
    return visual;
}

void PathVisual::deleteLines()
{
    for (PathLineVisual* line : std::exchange(lines, {})) {
        line->leaveKeeper();
        Delete(line);
    }
}

void PathVisual::forgetPart(const Visual* line)
{
    std::erase(lines, line);
}

void PathVisual::buildLines()
{
    deleteLines();
    const std::vector<task::MoveInst*>& moves = path->getMoveInstructions();
    hashOfWays = visual::hashOfWays(moves);
    if (!SceneCore::Get()->settings.drawSegVisual)
        return;
    PathLineVisual* run = nullptr; // open: the next segment may go on with it
    for (std::size_t i = 1; i < moves.size(); ++i) {
        const task::MoveInst& previous = *moves[i - 1];
        const task::MoveInst& move = *moves[i];
        if (!isDrawnBetween(previous, move)) {
            run = nullptr;
            continue;
        }
        if (!run || run->isDashed() != move.isDashed())
            run = lines.emplace_back(new PathLineVisual(workObjectVisualOf(move), move.isDashed() ? 1 : 0, this));
        run->addSegment(segmentBetween(previous, move));
    }
    for (PathLineVisual* line : lines) {
        line->finish();
        showLook(*line, look);
        if (!visible)
            line->setVisible(false, false);
    }
}

/// What a move or a target under it has for a look of its own is shown again: that of the path has gone over it.
template <typename Call>
void PathVisual::forParts(const Call& call)
{
    // The path may have been hung below one of its own moves, whose look reaches down to it again.
    if (isAtParts)
        return;
    isAtParts = true;
    const std::unique_ptr<bool, void (*)(bool*)> end(&isAtParts, [](bool* flag) { *flag = false; });
    SceneCore& core = *SceneCore::Get();
    const auto isMove = [](const sdf::SdfObject& child) { return child.asType(sdf::ModelType::MoveInst); };
    for (const unsigned id : childrenOf(*path, isMove)) {
        Visual* move = core.visuals.get(id);
        call(*move);
        if (core.states->hasEntry(move))
            core.states->refresh(move);
        core.states->refreshBelow(move);
    }
    for (PathLineVisual* line : lines)
        call(*line);
}

void PathVisual::setVisible(bool nowVisible, bool)
{
    Visual::setVisible(nowVisible, false);
    const auto isSeen = [](const sdf::SdfObject& child) { return !child.asType(sdf::ModelType::PlainInst); };
    for (const unsigned id : childrenOf(*path, isSeen))
        SceneCore::Get()->visuals.get(id)->setVisible(nowVisible, false);
    for (PathLineVisual* line : lines)
        line->setVisible(nowVisible, false);
}

void PathVisual::resetAppearance()
{
    look = PartLook::Normal;
    forParts([](Visual& part) { part.resetAppearance(); });
}

void PathVisual::setSelected()
{
    look = PartLook::Selected;
    forParts([](Visual& part) { part.setSelected(); });
}

void PathVisual::setHighlighted()
{
    look = PartLook::Highlighted;
    forParts([](Visual& part) { part.setHighlighted(); });
}

void PathVisual::clearHighlightOrSelect()
{
    look = PartLook::Normal;
    forParts([](Visual& part) { part.clearHighlightOrSelect(); });
}

} // namespace vrk::visual
