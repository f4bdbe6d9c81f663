#include "scene/Scene.h"

#include "platform/common/Checks.h"
#include "visual/Visual.h"

namespace vrk::visual {
namespace {

constexpr const char* copyMaterial = "TransBody";

} // namespace

void Scene::showCopiedVisual(unsigned id, const rob::PoseTemplate<float>& worldPose)
{
    addRenderTask([this, id, worldPose] { doShowCopiedVisual(id, worldPose); }, 0);
}

void Scene::doShowCopiedVisual(unsigned id, const rob::PoseTemplate<float>& worldPose)
{
    if (copiedVisual && copiedVisual->getId() != id)
        doDeleteCopiedVisual();
    if (!copiedVisual) {
        const std::optional<Visual*> made = GetVisual(id)->copy(nullptr);
        if (!made)
            throw common::BadOptionalAccess();
        copiedVisual = *made;
        copiedVisual->setMaterial(copyMaterial, {}, {});
    }
    copiedVisual->setVisible(true, true);
    copiedVisual->setWorldPose(worldPose);
}

void Scene::hideCopiedVisual()
{
    addRenderTask(
        [this] {
            if (copiedVisual)
                copiedVisual->setVisible(false, true);
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
    if (!copiedVisual)
        return;
    copiedVisual->clearCopiedChildren();
    delete std::exchange(copiedVisual, nullptr);
}

bool Scene::isCopiedVisualVisible() const
{
    return copiedVisual && copiedVisual->isVisible();
}

} // namespace vrk::visual
