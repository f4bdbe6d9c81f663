#include "task/PathMoves.h"

#include "platform/common/Hash.h"
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

std::uint64_t hashOfWays(const std::vector<task::MoveInst*>& moves)
{
    common::Hash hash;
    const auto add = [&hash](const rob::PosTemplate<float>& place) {
        for (const float number : {place.x, place.y, place.z})
            hash.addNumber(number);
    };
    for (std::size_t i = 1; i < moves.size(); ++i) {
        hash.addNumber(moves[i]->getId());
        hash.addNumber(moves[i]->getWObjItemId());
        hash.addNumber(moves[i]->isDashed());
        if (!isDrawnBetween(*moves[i - 1], *moves[i]))
            continue;
        const PathSegment way = segmentBetween(*moves[i - 1], *moves[i]);
        add(way.from);
        add(way.to);
        hash.addNumber(way.via.has_value());
        if (way.via)
            add(*way.via);
    }
    return hash.value();
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
