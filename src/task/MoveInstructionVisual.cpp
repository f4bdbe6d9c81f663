#include "task/MoveInstructionVisual.h"

#include "platform/sdf/SdfManager.h"
#include "platform/task/Instruction.h"
#include "platform/task/Path.h"
#include "scene/core/SceneCore.h"
#include "task/JointTargetVisual.h"
#include "task/PathArrowVisual.h"
#include "task/PathMoves.h"
#include "task/PathVisual.h"
#include "task/RobtargetVisual.h"
#include "visual/Picking.h"

#include <utility>

namespace vrk::visual {
namespace {

void takePose(InstanceFrameVisual* target, unsigned id)
{
    if (target)
        target->setPose(rob::PoseTemplate<float>(sdf::GetPose(id)));
}

/// 0 for a move of none.
unsigned pathIdOf(const task::MoveInst& move)
{
    return move.getPath() ? move.getPath()->getId() : 0;
}

} // namespace

MoveInstructionVisual::MoveInstructionVisual(Visual* parent, task::MoveInst* move)
    : Visual(move->getId(), "INSTRUCTION_" + std::to_string(move->getId()), parent), moveInst(move),
      pathId(pathIdOf(*move))
{
    type = VisualType::MoveInstruction;
    try {
        buildTargets();
    } catch (...) {
        clearChildren(); // nobody else would take away the first target where the second fails
        throw;
    }
}

MoveInstructionVisual::~MoveInstructionVisual()
{
    if (isAlive)
        *isAlive = false;
    letGoOfParts();
}

MoveInstructionVisual* MoveInstructionVisual::Build(Visual* parent, const task::MoveInst* previous,
                                                    task::MoveInst* move)
{
    auto* visual = new MoveInstructionVisual(parent, move);
    SceneCore::Get()->visuals.enter(visual);
    if (previous && isDrawnBetween(*previous, *move))
        visual->buildArrow(previous);
    return visual;
}

template <typename Call>
void MoveInstructionVisual::forTargets(const Call& call)
{
    if (targetVisual)
        call(*targetVisual);
    if (circleVisual)
        call(*static_cast<InstanceFrameVisual*>(circleVisual));
}

void MoveInstructionVisual::letGoOfParts()
{
    forTargets([](InstanceFrameVisual& target) { target.setKeeper(nullptr); });
    if (arrow)
        arrow->leaveKeeper();
}

void MoveInstructionVisual::forgetPart(const Visual* part)
{
    if (part == targetVisual)
        targetVisual = nullptr;
    if (part == circleVisual)
        circleVisual = nullptr;
    if (part == arrow)
        arrow = nullptr;
}

void MoveInstructionVisual::removeTargets()
{
    // The move may have been hung on a target of its own, and goes with it then.
    const auto stillThere = std::make_shared<bool>(true);
    isAlive = stillThere;
    if (targetVisual)
        Delete(targetVisual);
    if (*stillThere && circleVisual)
        Delete(circleVisual);
    if (*stillThere)
        isAlive.reset();
}

void MoveInstructionVisual::adopt(InstanceFrameVisual& target)
{
    target.setKeeper(this);
    showLook(target, look);
    if (visible)
        return;
    target.setVisible(false, false);
    picking::setObjectEnabled(&target, false);
}

void MoveInstructionVisual::buildTargets()
{
    SceneCore& core = *SceneCore::Get();
    if (!core.settings.drawTargetVisual) {
        removeTargets();
        return;
    }
    forTargets([](InstanceFrameVisual& target) { target.setKeeper(nullptr); }); // they stay, and are nobody's now
    circleVisual = nullptr;
    targetVisual = nullptr;
    if (moveInst->isJointTargetInst()) {
        targetVisual =
            JointTargetVisual::Build(this, static_cast<task::JointTargetDataItem*>(moveInst->getTargetItem().get()));
    } else {
        targetVisual = RobtargetVisual::Build(this, moveInst->getTargetItemId());
        if (moveInst->getCircleItem())
            circleVisual = RobtargetVisual::Build(this, moveInst->getCircleItemId());
    }
    forTargets([this](InstanceFrameVisual& target) { adopt(target); });
    core.queue.setInstanceDirty();
}

void MoveInstructionVisual::removeArrow()
{
    if (arrow)
        Delete(arrow);
}

void MoveInstructionVisual::buildArrow(const task::MoveInst* previous)
{
    if (!previous)
        return;
    if (!SceneCore::Get()->settings.drawPathArrow) {
        removeArrow();
        return;
    }
    const std::optional<PathArrow> place = arrowOf(segmentBetween(*previous, *moveInst));
    if (!place)
        return;
    // One that is there stays beside the new one: whoever wants it gone removes it first.
    if (arrow)
        arrow->leaveKeeper();
    arrow = new PathArrowVisual(this, this, *place);
    if (!visible)
        arrow->setVisible(false, false);
}

void MoveInstructionVisual::updateFrom(task::MoveInst* move)
{
    moveInst = move;
    pathId = pathIdOf(*move);
    takePose(targetVisual, move->getTargetItemId());
    takePose(circleVisual, move->getCircleItemId());
    removeArrow();
    const std::optional<task::MoveInst*> previous = move->getPrevMoveInstruction();
    if (previous && isDrawnBetween(**previous, *move))
        buildArrow(*previous);
}

rob::PosTemplate<float> MoveInstructionVisual::getTargetInWorld() const
{
    if (targetVisual)
        return targetVisual->getWorldPosition();
    return getWorldPose() * rob::PosTemplate<float>(moveInst->getTargetItem()->getPose().position);
}

void MoveInstructionVisual::setVisible(bool nowVisible, bool)
{
    Visual::setVisible(nowVisible, false);
    forTargets([nowVisible](InstanceFrameVisual& target) {
        target.setVisible(nowVisible, false);
        picking::setObjectEnabled(&target, nowVisible);
    });
    if (arrow)
        arrow->setVisible(nowVisible, false);
}

void MoveInstructionVisual::resetAppearance()
{
    look = PartLook::Normal;
    forTargets([](Visual& target) { target.resetAppearance(); });
    if (arrow)
        arrow->resetAppearance();
}

void MoveInstructionVisual::setSelected()
{
    look = PartLook::Selected;
    forTargets([](Visual& target) { target.setSelected(); });
    if (arrow)
        arrow->setSelected();
}

void MoveInstructionVisual::setHighlighted()
{
    look = PartLook::Highlighted;
    forTargets([](Visual& target) { target.setHighlighted(); });
}

void MoveInstructionVisual::clearHighlightOrSelect()
{
    look = PartLook::Normal;
    forTargets([](Visual& target) { target.clearHighlightOrSelect(); });
}

void MoveInstructionVisual::showLookOfWhole()
{
    const VisualRegistry& visuals = SceneCore::Get()->visuals;
    const auto* whole = visuals.has(pathId) ? dynamic_cast<const PathVisual*>(visuals.get(pathId)) : nullptr;
    if (whole)
        showLook(*this, whole->getLook());
}

} // namespace vrk::visual
