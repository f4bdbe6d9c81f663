#include "scene/Scene.h"

#include "platform/common/Checks.h"
#include "scene/core/Refused.h"
#include "scene/core/SceneCore.h"
#include "visual/WatchedVisual.h"

namespace vrk::visual {
namespace {

constexpr const char* copyMaterial = "TransBody";

struct CopiedVisual : WatchedVisual<Visual> {
    using WatchedVisual::WatchedVisual;
};

} // namespace

void Scene::showCopiedVisual(unsigned id, const rob::PoseTemplate<float>& worldPose)
{
    refuseUnbounded(worldPose, "showCopiedVisual");
    addRenderTask([this, id, worldPose] { doShowCopiedVisual(id, worldPose); }, 0);
}

void Scene::doShowCopiedVisual(unsigned id, const rob::PoseTemplate<float>& worldPose)
{
    auto& copied = core->record<CopiedVisual>();
    if (copied && copied->getId() != id)
        doDeleteCopiedVisual();
    if (!copied) {
        const std::optional<Visual*> made = GetVisual(id)->copy(nullptr);
        if (!made)
            throw common::BadOptionalAccess();
        copied.set(*made);
        copied->setMaterial(copyMaterial, {}, {});
    }
    copied->setVisible(true, true);
    copied->setWorldPose(worldPose);
}

void Scene::hideCopiedVisual()
{
    addRenderTask(
        [this] {
            if (const auto& copied = core->record<CopiedVisual>())
                copied->setVisible(false, true);
        },
        0);
}

void Scene::deleteCopiedVisual()
{
    addRenderTask([this] { doDeleteCopiedVisual(); }, 0);
}

/// A copy bears its source's id and stands in no registry: it must not go the way of other visuals.
void Scene::doDeleteCopiedVisual()
{
    auto& copied = core->record<CopiedVisual>();
    if (!copied)
        return;
    copied->clearCopiedChildren();
    delete copied.take();
}

bool Scene::isCopiedVisualVisible() const
{
    const auto& copied = core->record<CopiedVisual>();
    return copied && copied->isVisible();
}

} // namespace vrk::visual
