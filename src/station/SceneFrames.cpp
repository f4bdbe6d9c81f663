#include "scene/Scene.h"

#include "scene/core/Refused.h"
#include "scene/core/SceneCore.h"
#include "station/WObjVisual.h"
#include "task/InstanceFrameVisual.h"
#include "task/TargetVisuals.h"
#include "visual/FrameVisual.h"

namespace vrk::visual {
namespace {

template <typename Call>
void forType(const SceneCore& core, VisualType type, const Call& call)
{
    for (const auto& [id, visual] : core.visuals.all())
        if (visual->getType() == type)
            call(*visual);
}

void postVisible(VisualType type, bool visible, bool recursive)
{
    const auto show = [type, visible, recursive] {
        forType(*SceneCore::Get(), type, [&](Visual& visual) { visual.setVisible(visible, recursive); });
    };
    SceneCore::Get()->queue.post(show, 0);
}

} // namespace

void Scene::setFrameSize(unsigned size, VisualType type)
{
    addRenderTask([this, size, type] { doSetFramesSize(size, type); }, 0);
}

void Scene::doSetFramesSize(unsigned size, VisualType type)
{
    // The size is kept only where there is a frame to give it to. That of tool frames is kept for plain ones: tool frames
    // that are built later have their own size still, and that of joint targets for robot targets likewise.
    switch (type) {
    case VisualType::Frame:
    case VisualType::Tcp:
        forType(*core, type, [&](Visual& visual) {
            core->settings.worldFrameSize = static_cast<std::int32_t>(size);
            dynamic_cast<FrameVisual&>(visual).setFrameSize(size);
        });
        break;
    case VisualType::Robtarget:
    case VisualType::JointTarget:
        forTargets(*core, type, [&](Visual& visual) {
            core->settings.targetFrameSize = static_cast<std::int32_t>(size);
            dynamic_cast<InstanceFrameVisual&>(visual).setFrameSize(size);
        });
        break;
    case VisualType::WObj:
        forType(*core, type, [&](Visual& visual) {
            core->settings.wobjFrameSize = static_cast<std::int32_t>(size);
            const auto& workObject = dynamic_cast<WObjVisual&>(visual);
            workObject.getUserFrame()->setFrameSize(size);
            if (FrameVisual* objectFrame = workObject.getObjectFrame())
                objectFrame->setFrameSize(size);
        });
        break;
    default:
        break;
    }
}

void Scene::setTargetSize(unsigned size)
{
    const auto resize = [this, size] {
        core->settings.targetFrameSize = core->settings.jointTargetFrameSize = static_cast<std::int32_t>(size);
        for (const VisualType type : {VisualType::Robtarget, VisualType::JointTarget})
            forTargets(*core, type,
                       [size](Visual& visual) { dynamic_cast<InstanceFrameVisual&>(visual).setFrameSize(size); });
    };
    addRenderTask(resize, 0);
}

void Scene::setFrameVisualVisible(bool visible)
{
    postVisible(VisualType::Frame, visible, false);
}

void Scene::setTcpVisualVisible(bool visible)
{
    postVisible(VisualType::Tcp, visible, false);
}

void Scene::setTargetVisualVisible(bool visible)
{
    const auto show = [this, visible] {
        forTargets(*core, VisualType::Robtarget, [&](Visual& visual) { visual.setVisible(visible, false); });
    };
    core->queue.post(show, 0);
}

void Scene::setWObjVisualVisible(bool visible)
{
    postVisible(VisualType::WObj, visible, true);
}

void Scene::addTaskFrame(unsigned id, const rob::PoseTemplate<double>& pose)
{
    refuseUnbounded(pose, "addTaskFrame");
    addRenderTask([this, id, pose] { FrameVisual::Build(core->worldVisual, id, rob::PoseTemplate<float>(pose)); }, 0);
}

} // namespace vrk::visual
