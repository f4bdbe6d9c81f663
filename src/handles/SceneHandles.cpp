#include "handles/AttachedGuis.h"
#include "handles/DragHandle.h"
#include "handles/UVIndicatorVisual.h"
#include "platform/common/Logger.h"
#include "scene/Scene.h"
#include "scene/core/Refused.h"
#include "scene/core/SceneCore.h"
#include "visual/WatchedVisual.h"

#include <BRep_Tool.hxx>
#include <Geom_Surface.hxx>
#include <TopoDS_Face.hxx>

namespace vrk::visual {
namespace {

/// The mark of U and V, made when it is first shown.
struct UVIndicator : WatchedVisual<UVIndicatorVisual> {
    using WatchedVisual::WatchedVisual;
};

void showUVIndicator(SceneCore& core, const TopoDS_Face& face)
{
    auto& indicator = core.record<UVIndicator>();
    if (!indicator) {
        indicator.set(new UVIndicatorVisual("uvdirection", core.worldVisual));
        indicator->setVisible(false, true);
    }
    if (face.IsNull() || BRep_Tool::Surface(face).IsNull())
        AppLogger::inst()->warn("the directions of U and V are not shown: the face has no surface");
    else
        indicator->show(face);
}

} // namespace

UVIndicatorVisual* UVIndicatorVisual::Get()
{
    SceneCore* core = SceneCore::Get();
    return core ? core->record<UVIndicator>().get() : nullptr;
}

void Scene::attachGuiTo(GuiVisual* gui, unsigned id, const rob::Posef& pose)
{
    refuseNull(gui, "attachGuiTo", "a handle");
    refuseUnbounded(pose, "attachGuiTo");
    addRenderTask([this, gui, id, pose] { core->record<AttachedGuis>().attach(gui, GetVisual(id), pose); }, 0);
}

void Scene::attachGuiTo(GuiVisual* gui, Visual* target, const rob::Posef& pose)
{
    refuseNull(gui, "attachGuiTo", "a handle");
    refuseNull(target, "attachGuiTo", "a visual");
    refuseUnbounded(pose, "attachGuiTo");
    addVisualTask(target, [this, gui, target, pose] { core->record<AttachedGuis>().attach(gui, target, pose); });
}

void Scene::detachGui(GuiVisual* gui)
{
    refuseNull(gui, "detachGui", "a handle");
    addRenderTask([this, gui] { core->record<AttachedGuis>().detach(gui); }, 0);
}

void Scene::setHandleScale(float scale)
{
    core->settings.handleScale = scale;
    addRenderTask([] {}, 0); // the next picture shows it
}

void Scene::showDragHandle()
{
    addRenderTask([] { DragHandle::Get()->show(); }, 0);
}

void Scene::hideDragHandle()
{
    addRenderTask([] { DragHandle::Get()->hide(); }, 0);
}

void Scene::resetDragHandle()
{
    addRenderTask([] { DragHandle::Get()->resetMode(); }, 0);
}

void Scene::showUVIndicatorVisual(const TopoDS_Face& face)
{
    addRenderTask([this, face] { showUVIndicator(*core, face); }, 0);
}

void Scene::hideUVIndicatorVisual()
{
    addRenderTask(
        [this] {
            if (auto& indicator = core->record<UVIndicator>())
                indicator->setVisible(false, true);
        },
        0);
}

void Scene::deleteUVIndicatorVisual()
{
    addRenderTask(
        [this] {
            if (UVIndicatorVisual* indicator = core->record<UVIndicator>().take())
                deleteVisual(indicator);
        },
        0);
}

} // namespace vrk::visual
