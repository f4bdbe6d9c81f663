#include "scene/Scene.h"

#include "scene/core/OgreCompat.h"
#include "scene/core/Refused.h"
#include "scene/core/SceneCore.h"
#include "view/Camera.h"
#include "view/FocusBox.h"
#include "view/OrbitPivotVisual.h"
#include "visual/WatchedVisual.h"

#include <Ogre.h>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace vrk::visual {
namespace {

constexpr float minRadius = 10.0f;         // model units: what is smaller is not brought nearer
constexpr float emptySceneExtent = 100.0f; // half size of the box that stands for an empty scene
constexpr float sameDirection = 0.999999f;
constexpr float minDistance = 1e-6f;
// How much of the view an object fills: a small thing is left at twice the distance, to keep its surroundings in sight.
constexpr float fill = 1.0f;
constexpr float smallThingFill = 0.5f;

/// The mark of the pivot, made when it is first shown.
struct PivotMark : WatchedVisual<OrbitPivotVisual> {
    using WatchedVisual::WatchedVisual;
};

/// Node boxes are those of the last frame; this makes them those of now.
void updateBoxes()
{
    SceneCore::Get()->sceneManager->getRootSceneNode()->_update(true, false);
}

/// The box of a node and all that hangs below, without what OGRE is told to draw always: its box has no end.
Ogre::AxisAlignedBox finiteBoxOf(const Ogre::SceneNode& node)
{
    if (!node._getWorldAABB().isInfinite())
        return node._getWorldAABB();
    Ogre::AxisAlignedBox box;
    for (const Ogre::MovableObject* object : node.getAttachedObjects())
        if (!object->getBoundingBox().isInfinite())
            box.merge(object->getWorldBoundingBox());
    for (const Ogre::Node* child : node.getChildren())
        box.merge(finiteBoxOf(static_cast<const Ogre::SceneNode&>(*child)));
    return box;
}

Ogre::AxisAlignedBox sceneBox()
{
    updateBoxes();
    Ogre::AxisAlignedBox box;
    // The box of a node takes in all that hangs below, the hidden as well: only the visual itself is asked.
    for (const auto& [id, visual] : SceneCore::Get()->visuals.all())
        if (visual->isVisible() && (visual->getType() == VisualType::Solid || visual->getType() == VisualType::Mesh))
            box.merge(finiteBoxOf(*visual->getSceneNode()));
    if (box.isFinite())
        return box;
    return {Ogre::Vector3(-emptySceneExtent), Ogre::Vector3(emptySceneExtent)};
}

void mergeBodies(const Visual& visual, Ogre::AxisAlignedBox& box)
{
    switch (visual.getType()) {
    case VisualType::Solid:
    case VisualType::Curve:
    case VisualType::Mesh:
    case VisualType::Point:
        box.merge(finiteBoxOf(*visual.getSceneNode()));
        break;
    default:
        break;
    }
    for (const Visual* child : visual.getChildren())
        mergeBodies(*child, box);
}

rob::PosTemplate<float> fitPosition(const Ogre::AxisAlignedBox& box, const rob::DirTemplate<float>& dir, float k)
{
    const Camera& camera = *Camera::Get();
    float radius = std::max(minRadius, box.getHalfSize().length());
    if (camera.getAspectRatio() <= 1.0f)
        radius /= camera.getAspectRatio();
    const float distance = radius / std::sin(camera.getVFOV() * 0.5f * k);
    return toPos(box.getCenter()) - dir * distance;
}

/// `present` turned the short way until it looks along `dir`.
rob::RotationTemplate<float> turnedTo(const rob::RotationTemplate<float>& present, const rob::DirTemplate<float>& dir)
{
    const rob::DirTemplate<float> forward = present * rob::DirTemplate<float>(0, 0, -1);
    const float cosine = forward.dot(dir);
    if (cosine > sameDirection)
        return present;
    if (cosine < -sameDirection) {
        // Every axis across the view leads there equally fast; the camera's own keeps the horizon level.
        const rob::DirTemplate<float> axis = present * rob::DirTemplate<float>(1, 0, 0);
        return rob::RotationTemplate<float>(std::numbers::pi_v<float>, axis) * present;
    }
    const rob::DirTemplate<float> axis = rob::normalized(forward.cross(dir));
    return rob::RotationTemplate<float>(std::acos(std::clamp(cosine, -1.0f, 1.0f)), axis) * present;
}

rob::DirTemplate<float> viewDirection()
{
    return rob::normalized(toDir(Camera::Get()->ogreCamera()->getDerivedDirection()));
}

} // namespace

void Scene::setCameraPose(const rob::PoseTemplate<float>& pose)
{
    refuseUnbounded(pose, "setCameraPose");
    addRenderTask(
        [pose] {
            Camera::Get()->setWorldPosition(pose.position);
            Camera::Get()->setWorldRotation(pose.rotation());
        },
        0);
}

rob::PoseTemplate<float> Scene::getViewAllPose()
{
    return getViewPoseForDir(viewDirection());
}

rob::PoseTemplate<float> Scene::getViewPoseForDir(const rob::DirTemplate<float>& dir)
{
    return {fitPosition(sceneBox(), dir, fill), turnedTo(Camera::Get()->getWorldRotation(), dir)};
}

rob::PoseTemplate<float> Scene::getViewPoseForDir(const rob::DirTemplate<float>& dir, const rob::DirTemplate<float>& up)
{
    // The camera looks along its negative z axis.
    const rob::DirTemplate<float> x = rob::normalized(dir.cross(up));
    const rob::DirTemplate<float> y = rob::normalized(x.cross(dir));
    const rob::DirTemplate<float> z = rob::normalized(-dir);
    return {fitPosition(sceneBox(), dir, fill), rob::RotationTemplate<float>::FromAxes(x, y, z)};
}

rob::PoseTemplate<float> Scene::getViewCenterPose()
{
    const Camera& camera = *Camera::Get();
    const rob::PosTemplate<float> position = camera.getWorldPosition();
    const float distance = position.length();
    const rob::DirTemplate<float> toOrigin =
        distance > minDistance
            ? rob::DirTemplate<float>(-position.x / distance, -position.y / distance, -position.z / distance)
            : rob::DirTemplate<float>(0, 0, -1);
    return {position, turnedTo(camera.getWorldRotation(), toOrigin)};
}

rob::PoseTemplate<float> Scene::getVisualFocusPose(unsigned id)
{
    const Visual& visual = *GetVisual(id);
    updateBoxes();
    Ogre::AxisAlignedBox box;
    float k = fill;
    switch (visual.getType()) {
    case VisualType::PointCloud:
    case VisualType::Point:
    case VisualType::Frame:
    case VisualType::Tcp:
    case VisualType::WObj:
        box = finiteBoxOf(*visual.getSceneNode());
        k = smallThingFill;
        break;
    case VisualType::MoveInstruction:
        if (const auto target = targetOfMove(visual); target && fitsBox(*target)) {
            const auto size = static_cast<float>(SceneCore::Get()->settings.targetFrameSize);
            box = {toOgre(*target), toOgre(*target) + Ogre::Vector3(size)};
            k = smallThingFill;
        }
        break;
    default:
        mergeBodies(visual, box);
        break;
    }
    const Camera& camera = *Camera::Get();
    if (!box.isFinite())
        return camera.getWorldPose();
    return {fitPosition(box, viewDirection(), k), camera.getWorldRotation()};
}

void Scene::setOrbitPivotVisible(bool visible, const rob::PoseTemplate<float>& pose)
{
    refuseUnbounded(pose, "setOrbitPivotVisible");
    addRenderTask(
        [this, visible, pose] {
            auto& mark = core->record<PivotMark>();
            if (visible && !mark) {
                mark.set(new OrbitPivotVisual(core->worldVisual));
                mark->setVisible(false, true);
            }
            if (!mark)
                return;
            mark->setWorldPose(pose);
            mark->setVisible(visible, true);
        },
        0);
}

} // namespace vrk::visual
