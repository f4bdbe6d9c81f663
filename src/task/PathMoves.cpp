#include "task/PathMoves.h"

#include "platform/task/Instruction.h"
#include "scene/core/SceneCore.h"
#include "visual/Visual.h"

namespace vrk::visual {
namespace {

rob::PosTemplate<float> placeOf(const task::DataItem& item)
{
    return rob::PosTemplate<float>(item.getPose().position);
}

} // namespace

Visual* workObjectVisualOf(const task::MoveInst& move)
{
    const SceneCore& core = *SceneCore::Get();
    const unsigned id = move.getWObjItemId();
    return id == 0 ? core.worldVisual : core.visuals.get(id);
}

bool isDrawnBetween(const task::MoveInst& previous, const task::MoveInst& move)
{
    return !previous.isJointTargetInst() && !move.isJointTargetInst() &&
           previous.getWObjItemId() == move.getWObjItemId();
}

PathSegment segmentBetween(const task::MoveInst& previous, const task::MoveInst& move)
{
    PathSegment segment{placeOf(*previous.getTargetItem()), placeOf(*move.getTargetItem())};
    if (const auto& circle = move.getCircleItem())
        segment.via = placeOf(*circle);
    return segment;
}

void showLook(Visual& part, PartLook look)
{
    switch (look) {
    case PartLook::Normal:
        break; // what was just made looks so
    case PartLook::Selected:
        part.setSelected();
        break;
    case PartLook::Highlighted:
        part.setHighlighted();
        break;
    }
}

} // namespace vrk::visual
