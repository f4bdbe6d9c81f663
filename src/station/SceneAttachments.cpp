#include "scene/Scene.h"

#include "scene/core/SceneCore.h"
#include "visual/Picking.h"
#include "visual/Visual.h"

namespace vrk::visual {
namespace {

/// 0 is the world; any other id must have a visual.
Visual* parentOf(unsigned id)
{
    return id == 0 ? Scene::GetWorldVisual() : Scene::GetVisual(id);
}

} // namespace

void Scene::addAttachment(unsigned child, unsigned parent, const rob::PoseTemplate<double>& pose)
{
    addRenderTask([this, child, parent, pose] { doAddAttachment(child, parent, pose); }, 0);
}

void Scene::doAddAttachment(unsigned child, unsigned parent, const rob::PoseTemplate<double>& pose)
{
    Visual* carried = GetVisual(child);
    GetVisual(parent)->attachVisual(carried);
    carried->setPose(rob::PoseTemplate<float>(pose));
    carried->setAttachState(true);
}

void Scene::deleteAttachment(unsigned child, unsigned oldParent, unsigned newParent,
                             const rob::PoseTemplate<double>& pose)
{
    addRenderTask([this, child, oldParent, newParent, pose] { doDeleteAttachment(child, oldParent, newParent, pose); },
                  0);
}

// The old parent is named for the caller's sake: the tree knows where the child hangs.
void Scene::doDeleteAttachment(unsigned child, unsigned, unsigned newParent, const rob::PoseTemplate<double>& pose)
{
    Visual* carried = GetVisual(child);
    parentOf(newParent)->attachVisual(carried);
    carried->setPose(rob::PoseTemplate<float>(pose));
    carried->setAttachState(false);
}

void Scene::attachVisual(unsigned parent, Visual* child)
{
    addVisualTask(child, [parent, child] { GetVisual(parent)->attachVisual(child); });
}

void Scene::detachVisual(Visual* visual)
{
    // Nothing leaves the tree: what is detached hangs on the world.
    addVisualTask(visual, [visual] { GetWorldVisual()->attachVisual(visual); });
}

void Scene::reparentVisual(unsigned child, unsigned parent)
{
    addRenderTask([child, parent] { parentOf(parent)->attachVisual(GetVisual(child)); }, 0);
}

void Scene::moveVisualToParent(unsigned child, unsigned parent, const rob::PoseTemplate<float>& worldPose)
{
    addRenderTask([this, child, parent, worldPose] { doMoveVisualToParent(child, parent, worldPose); }, 0);
}

void Scene::doMoveVisualToParent(unsigned child, unsigned parent, const rob::PoseTemplate<float>& worldPose)
{
    Visual* visual = GetVisual(child);
    parentOf(parent)->attachVisual(visual);
    visual->setWorldPose(worldPose);
    picking::markDirty(visual);
}

} // namespace vrk::visual
