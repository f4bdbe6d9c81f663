#include "scene/Scene.h"

#include "scene/core/Refused.h"

#include "visual/Visual.h"

#include <vector>

namespace vrk::visual {

void Scene::setVisualPose(unsigned id, const rob::PoseTemplate<float>& pose)
{
    refuseUnbounded(pose, "setVisualPose");
    addRenderTask(
        [id, pose] {
            if (HasVisual(id)) // it may have been removed since the post
                GetVisual(id)->setPose(pose);
        },
        0);
}

void Scene::setVisualWorldPose(unsigned id, const rob::PoseTemplate<float>& pose)
{
    refuseUnbounded(pose, "setVisualWorldPose");
    addRenderTask(
        [id, pose] {
            if (HasVisual(id))
                GetVisual(id)->setWorldPose(pose);
        },
        0);
}

void Scene::setVisualWorldPose(Visual* visual, const rob::PoseTemplate<float>& pose)
{
    refuseNull(visual, "setVisualWorldPose", "a visual");
    refuseUnbounded(pose, "setVisualWorldPose");
    addVisualTask(visual, [visual, pose] { visual->setWorldPose(pose); });
}

void Scene::setVisualsOrientations(std::vector<unsigned> ids, std::vector<rob::OrientTemplate<double>> orientations)
{
    if (ids.size() != orientations.size())
        throw std::invalid_argument("setVisualsOrientations needs as many orientations as ids");
    for (const rob::OrientTemplate<double>& orientation : orientations)
        refuseUnbounded(rob::PoseTemplate<double>({}, orientation), "setVisualsOrientations");
    addRenderTask(
        [ids = std::move(ids), orientations = std::move(orientations)] {
            for (std::size_t i = 0; i < ids.size(); ++i)
                GetVisual(ids[i])->setOrientation(orientations[i]);
        },
        0);
}

void Scene::setLocalOrigin(unsigned id, const rob::PoseTemplate<float>& oldOriginWorld,
                           const rob::PoseTemplate<float>& delta)
{
    refuseUnbounded(oldOriginWorld, "setLocalOrigin");
    refuseUnbounded(delta, "setLocalOrigin");
    addRenderTask([this, id, oldOriginWorld, delta] { doSetLocalOrigin(id, oldOriginWorld, delta); }, 0);
}

void Scene::doSetLocalOrigin(unsigned id, const rob::PoseTemplate<float>& oldOriginWorld,
                             const rob::PoseTemplate<float>& delta)
{
    Visual* visual = GetVisual(id);
    for (Visual* child : visual->getChildren())
        // Gizmos and frames belong to the origin and stay with it.
        if (child->getType() != VisualType::Gui && child->getType() != VisualType::Frame)
            child->setPose(delta * child->getPose());
    visual->setWorldPose(oldOriginWorld);
}

} // namespace vrk::visual
