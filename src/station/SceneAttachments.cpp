#include "scene/Scene.h"

#include "platform/common/Logger.h"
#include "scene/core/Refused.h"
#include "scene/core/SceneCore.h"
#include "visual/Picking.h"
#include "visual/Visual.h"

#include <fmt/format.h>

namespace vrk::visual {
namespace {

/// 0 is the world; any other id must have a visual.
Visual* parentOf(unsigned id)
{
    return id == 0 ? Scene::GetWorldVisual() : Scene::GetVisual(id);
}

/// Whether `child` may hang on `parent`. A ring is refused with a warning: nothing would hold it up.
bool canHang(const Visual& child, const Visual& parent)
{
    const Visual* above = &parent;
    while (above && above != &child)
        above = above->getParent();
    if (!above)
        return true;
    AppLogger::inst()->warn(fmt::format("'{}' cannot be attached to '{}', which hangs on it: it stays where it is",
                                        child.getName(), parent.getName()));
    return false;
}

} // namespace

void Scene::addAttachment(unsigned child, unsigned parent, const rob::PoseTemplate<double>& pose)
{
    refuseUnbounded(pose, "addAttachment");
    addRenderTask([this, child, parent, pose] { doAddAttachment(child, parent, pose); }, 0);
}

void Scene::doAddAttachment(unsigned child, unsigned parent, const rob::PoseTemplate<double>& pose)
{
    Visual* carried = GetVisual(child);
    Visual* carrier = GetVisual(parent);
    if (!canHang(*carried, *carrier))
        return;
    carrier->attachVisual(carried);
    carried->setPose(rob::PoseTemplate<float>(pose));
    carried->setAttachState(true);
}

void Scene::deleteAttachment(unsigned child, unsigned oldParent, unsigned newParent,
                             const rob::PoseTemplate<double>& pose)
{
    refuseUnbounded(pose, "deleteAttachment");
    addRenderTask([this, child, oldParent, newParent, pose] { doDeleteAttachment(child, oldParent, newParent, pose); },
                  0);
}

// The old parent is named for the caller's sake: the tree knows where the child hangs.
void Scene::doDeleteAttachment(unsigned child, unsigned, unsigned newParent, const rob::PoseTemplate<double>& pose)
{
    Visual* carried = GetVisual(child);
    Visual* carrier = parentOf(newParent);
    if (!canHang(*carried, *carrier))
        return;
    carrier->attachVisual(carried);
    carried->setPose(rob::PoseTemplate<float>(pose));
    carried->setAttachState(false);
}

void Scene::attachVisual(unsigned parent, Visual* child)
{
    refuseNull(child, "attachVisual", "a visual");
    addVisualTask(child, [parent, child] { GetVisual(parent)->attachVisual(child); });
}

void Scene::detachVisual(Visual* visual)
{
    refuseNull(visual, "detachVisual", "a visual");
    // Nothing leaves the tree: what is detached hangs on the world.
    addVisualTask(visual, [visual] { GetWorldVisual()->attachVisual(visual); });
}

void Scene::reparentVisual(unsigned child, unsigned parent)
{
    addRenderTask(
        [child, parent] {
            Visual* visual = GetVisual(child);
            Visual* carrier = parentOf(parent);
            if (canHang(*visual, *carrier))
                carrier->attachVisual(visual);
        },
        0);
}

void Scene::moveVisualToParent(unsigned child, unsigned parent, const rob::PoseTemplate<float>& worldPose)
{
    refuseUnbounded(worldPose, "moveVisualToParent");
    addRenderTask([this, child, parent, worldPose] { doMoveVisualToParent(child, parent, worldPose); }, 0);
}

void Scene::doMoveVisualToParent(unsigned child, unsigned parent, const rob::PoseTemplate<float>& worldPose)
{
    Visual* visual = GetVisual(child);
    Visual* carrier = parentOf(parent);
    if (!canHang(*visual, *carrier))
        return;
    carrier->attachVisual(visual);
    visual->setWorldPose(worldPose);
    picking::markDirty(visual);
}

} // namespace vrk::visual
