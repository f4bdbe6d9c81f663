#include "scene/Scene.h"

#include "scene/core/SceneCore.h"
#include "task/InstanceFrameVisual.h"

namespace vrk::visual {

void Scene::setDrawTargetZAxisOnly(bool zAxisOnly)
{
    core->settings.drawTargetZAxisOnly = zAxisOnly;
    if (!core->settings.drawTargetVisual)
        return; // there are no targets
    addRenderTask(
        [this, zAxisOnly] {
            for (const auto& [id, visual] : core->visuals.all())
                if (visual->getType() == VisualType::Robtarget || visual->getType() == VisualType::JointTarget)
                    dynamic_cast<InstanceFrameVisual&>(*visual).updateEntity(zAxisOnly);
        },
        0);
}

} // namespace vrk::visual
