#include "station/ParentVisual.h"

#include "platform/sdf/SdfObject.h"
#include "platform/smart/StationLogic.h"
#include "scene/core/SceneCore.h"

namespace vrk::visual {

Visual* resolveParent(const sdf::SdfObject& object)
{
    return resolveParent(object.getParentId());
}

bool isWorldId(unsigned parentId)
{
    return parentId == 0 || parentId == smartcomp::StationLogic::inst()->getId();
}

Visual* resolveParent(unsigned parentId)
{
    const SceneCore& core = *SceneCore::Get();
    return !isWorldId(parentId) && core.visuals.has(parentId) ? core.visuals.get(parentId) : core.worldVisual;
}

} // namespace vrk::visual
