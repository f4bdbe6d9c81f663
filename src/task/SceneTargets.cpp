#include "scene/Scene.h"

#include "scene/core/SceneCore.h"
#include "task/InstanceFrameVisual.h"
#include "task/TargetVisuals.h"

namespace vrk::visual {

void Scene::setDrawTargetZAxisOnly(bool zAxisOnly)
{
    core->settings.drawTargetZAxisOnly = zAxisOnly;
    if (!core->settings.drawTargetVisual)
        return; // there are no targets
    addRenderTask(
        [this, zAxisOnly] {
            for (const VisualType type : {VisualType::Robtarget, VisualType::JointTarget})
                forTargets(*core, type, [zAxisOnly](Visual& visual) {
                    dynamic_cast<InstanceFrameVisual&>(visual).updateEntity(zAxisOnly);
                });
        },
        0);
}

} // namespace vrk::visual
